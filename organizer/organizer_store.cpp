#include "organizer/organizer_store.h"

#include "access/engine_error.h"
#include "core/attempt.h"
#include "core/date_text.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "organizer/store_link.h"

// Resources of a library are left out by the linker unless they are asked for; outside any
// namespace.
static void takeStore()
{
    Q_INIT_RESOURCE(store);
}

namespace velnor {

void deliverStore()
{
    takeStore();
}

void LoadGroupList()
{
    auto& G = globals();
    G.ORG_GROUPS.fill({});
    StoreLink groups("GroupTable");
    groups.rows().Index("GroupName");
    if (groups.rows().RecordCount() == 0)
        return;
    groups.rows().MoveFirst();
    for (int i = 0; !groups.rows().Eof(); groups.rows().MoveNext())
        G.ORG_GROUPS[i++] = groups.text("GroupName");
}

QString GroupDescription(const QString& group)
{
    StoreLink groups("GroupTable");
    groups.rows().Index("GroupName");
    return groups.seek(group) ? groups.text("GroupDesc") : QString();
}

namespace {

void setDates(StoreLink& files, const QString& path)
{
    const auto& G = globals();
    const QString date = FileDateText(path);
    files.set("DateTimeCreated", date.isEmpty() ? G.STAMP_KEY : DateKeyFromText(date));
    files.set("DateDisp", date.isEmpty() ? G.STAMP_DISPLAY : date);
}

bool addRow(const QString& name, const QString& path)
{
    const auto& G = globals();
    RefreshDateStamps();
    StoreLink files("DatabaseTable");
    files.rows().Index("DatabaseName");
    if (files.seek(text::trim(G.ORG_DATABASE), path))
        return false;
    files.rows().AddNew();
    files.set("DatabaseName", G.ORG_DATABASE);
    files.set("FileName", name);
    files.set("GroupName", G.ORG_GROUP);
    files.set("FileLocation", path);
    files.set("FileDescription", name + " Description");
    files.set("filesize", fileLength(path));
    setDates(files, path);
    files.rows().Update();
    files.close();
    return true;
}

}  // namespace

bool AddtoDatabase(const QString& name, const QString& path)
{
    bool added = false;
    const Outcome done = attempt([&] { added = addRow(name, path); });
    if (done.number == static_cast<int>(EngineErrorNumber::DuplicateKey))
        prompt().tell(nullptr, "File already exisits in the Database");
    else if (done.number == static_cast<int>(EngineErrorNumber::NoCurrentRecord))
        prompt().tell(nullptr, "No Current Record");
    else if (!done)
        tellUnexpected(done);
    return added;
}

void seedDatabase()
{
    auto& G = globals();
    RefreshDateStamps();
    StoreLink databases("Databases");
    databases.rows().AddNew();
    databases.set("DatabaseName", QStringLiteral("Database 1"));
    databases.set("DatabasePath", G.APP_PATH);
    databases.set("Description", QStringLiteral("Organize Files in Database 1"));
    databases.set("FileType", QStringLiteral("Access"));
    databases.set("Group", G.ORG_GROUPS[0]);
    databases.set("DateCreated", G.STAMP_KEY);
    databases.rows().Update();
    databases.close();
}

QString sizeText(qint64 bytes)
{
    const qint64 hundredths = (bytes + 5) / 10;
    const qint64 whole = hundredths / 100;
    QString fraction = QString::number(hundredths % 100).rightJustified(2, '0');
    while (fraction.endsWith('0'))
        fraction.chop(1);
    return (whole ? text::thousands(whole) : QString()) + '.' + fraction + " Kb";
}

QString FolderOfPath(const QString& path)
{
    const int at = text::instrRev(path, "\\");
    return at > 1 ? text::left(path, at - 1) : QString();
}

void RowRefresher::refresh(StoreLink& files)
{
    const QString path = files.text("FileLocation");
    files.rows().Edit();
    bool there = false;
    const Outcome looked = attempt([&] { there = !Dir(path).isEmpty(); });
    if (looked && there) {
        files.set("filesize", fileLength(path));
        date_ = FileDateText(path);
    }
    if (date_.isEmpty()) {
        files.rows().CancelUpdate();
        return;
    }
    files.set("DateDisp", date_);
    files.set("DateTimeCreated", DateKeyFromText(date_));
    files.rows().Update();
}

void deleteRow(const char* table, const QString& nodeValue, const QString& tag)
{
    StoreLink rows(table);
    rows.rows().Index("DatabaseName");
    if (rows.seek(text::trim(nodeValue), text::trim(tag)))
        rows.rows().Delete();
    rows.close();
}

}  // namespace velnor
