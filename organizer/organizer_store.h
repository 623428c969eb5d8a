// organizer/organizer_store.h - what the catalogue knows: groups, catalogued files, and their
// dates.
#pragma once

#include <QString>

namespace velnor {

class StoreLink;

/// Puts the delivered store among the files that the application folder is seeded with. Once,
/// before prepareApplicationFolder.
void deliverStore();

/// Fills ORG_GROUPS with the names of the groups, in order. Error 9 when there are more than 202.
void LoadGroupList();
/// The description of a group; empty when there is no such group.
QString GroupDescription(const QString& group);

/// Files a path under ORG_DATABASE and ORG_GROUP, unless it stands there already. What fails is
/// told. True when the row was added.
bool AddtoDatabase(const QString& name, const QString& path);
/// Adds the row of the first description. The tree gets its node elsewhere.
void seedDatabase();

/// "12.35 Kb": thousands of bytes, at most two digits behind the point.
QString sizeText(qint64 bytes);
/// The text before the last "\" that stands past the first character; else empty.
QString FolderOfPath(const QString& path);

/// Brings rows up to date with their files, one after the other in one pass. A file that has
/// vanished takes the date of the last one that was there.
class RowRefresher {
public:
    /// Of the row that the link stands on.
    void refresh(StoreLink& files);

private:
    QString date_;
};

/// Takes the row of a tree's node away: sought by what the node carries, not found in most views,
/// and then left where it is.
void deleteRow(const char* table, const QString& nodeValue, const QString& tag);

}  // namespace velnor
