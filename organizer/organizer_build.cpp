// The building half of the organizer's pane: the store's rows turned into nodes.
#include "core/globals.h"
#include "core/keyed_tree.h"
#include "core/wait_pointer.h"
#include "organizer/organizer_pane.h"
#include "organizer/organizer_store.h"
#include "organizer/store_link.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

/// Lists are filled with their painting off.
class QuietTree {
public:
    explicit QuietTree(QWidget& tree) : tree_(tree) { tree_.setUpdatesEnabled(false); }
    ~QuietTree() { tree_.setUpdatesEnabled(true); }
    QuietTree(const QuietTree&) = delete;
    QuietTree& operator=(const QuietTree&) = delete;

private:
    QWidget& tree_;
};

}  // namespace

void OrganizerPane::GetDatabases()
{
    const WaitPointer wait;
    const QuietTree quiet(*SSTree1);
    SSTree1->clearNodes();
    {
        StoreLink databases("Databases");
        const bool byGroup = ORG_VIEW == u"G";
        databases.rows().Index(byGroup ? "DatabaseGroup" : "DatabaseName");
        if (databases.rows().RecordCount() > 0) {
            for (databases.rows().MoveFirst(); !databases.rows().Eof();
                 databases.rows().MoveNext()) {
                const QString group = databases.text("Group");
                if (byGroup)
                    CreateNewTreeDatabase(group, GroupDescription(group), group);
                else
                    CreateNewTreeDatabase(databases.text("DatabaseName"),
                                          databases.text("Description"), group);
            }
            return;
        }
    }
    seed();
}

void OrganizerPane::seed()
{
    if (SSTree1->nodeCount() > 0)
        return;
    CreateNewTreeDatabase(u"Database 1"_s, u"Organize Files in Database 1"_s,
                          globals().ORG_GROUPS[0]);
    seedDatabase();
    SSTree1->setToolTip(u"Drag and Drop Files to the Databases in the Database Organizer"_s);
}

void OrganizerPane::BuildDatabaseTree()
{
    const WaitPointer wait;
    const QuietTree quiet(*SSTree1);
    StoreLink files("DatabaseTable");
    if (files.rows().RecordCount() == 0)
        return;
    const bool byGroup = ORG_VIEW == u"G";
    files.rows().Index(byGroup ? "DatabaseGroup" : "DatabaseName");
    RowRefresher refresher;
    QString parent, last;
    for (files.rows().MoveFirst(); !files.rows().Eof(); files.rows().MoveNext()) {
        parent = files.text(byGroup ? "GroupName" : "DatabaseName");
        const QString name = files.text("FileName");
        if (name != last) {
            const QString path = files.text("FileLocation");
            QString relative = parent;
            if (const QString folder = FolderOfPath(path);
                globals().GROUP_BY_FOLDER && !folder.isEmpty()) {
                relative = parent + u"/"_s + folder;
                AddTreeNode(parent, folder, relative, {}, {}, KeyedTree::ClosedFolder, true);
            }
            AddTreeNode(relative, name, parent + u"/"_s + name,
                        u" - "_s + files.text("FileDescription") + u" - "_s +
                            files.text("DateDisp"),
                        path, KeyedTree::File, true);
            last = name;
        }
        refresher.refresh(files);
    }
    files.close();
}

void OrganizerPane::BuildDatabaseTree2()
{
    const WaitPointer wait;
    const QuietTree quiet(*SSTree1);
    StoreLink files("DatabaseTable");
    SSTree1->clearNodes();
    const bool bySize = ORG_VIEW == u"S";
    files.rows().Index(bySize ? "DatabaseSize" : "DatabaseDate");
    if (files.rows().RecordCount() == 0)
        return;
    for (files.rows().MoveFirst(); !files.rows().Eof(); files.rows().MoveNext()) {
        const QString key = files.text("DatabaseName") + u" - "_s + files.text("FileName");
        const QString last = bySize ? sizeText(files.number("filesize")) : files.text("DateDisp");
        const QString suffix = u" - "_s + files.text("FileDescription") + u" - "_s + last;
        if (AddTreeNode(key, key, key, suffix, {}, KeyedTree::File, false))
            KeyedTree::setTag(*SSTree1->node(key), files.text("FileLocation"));
    }
}

}  // namespace velnor
