#include "access/schema.h"

#include <QApplication>

#include "access/login.h"
#include "access/workspace.h"
#include "core/attempt.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"

namespace velnor {
namespace {

const QString kAccess = "Access 2000;";
const QString kDBase = "dBASE 5.0;";
const QString kFoxPro = "FoxPro 3.0;";
const QString kParadox = "Paradox 5.x;";

constexpr int kInvalidPassword = static_cast<int>(EngineErrorNumber::InvalidPassword);
constexpr int kUnexpectedFormat = static_cast<int>(EngineErrorNumber::UnexpectedFormat);
constexpr int kFileInUse = static_cast<int>(EngineErrorNumber::FileInUse);

QString passwordConnect()
{
    return ";pwd=" + globals().DATABASE_PASSWORD;
}

Database openToInspect(const QString& databaseName, const QString& connect)
{
    return workspace().OpenDatabase(databaseName.toStdString(), false, true, connect.toStdString());
}

/// TABLE_COUNT is set last: after a failure it is as it was, while TABLE_NAMES has the names so
/// far.
QString readTableNames(const QString& databaseName, const QString& connect)
{
    auto& G = globals();
    Database database = openToInspect(databaseName, connect);
    short counter = 0;
    for (const TableDef& table : database.TableDefs()) {
        if ((table.Attributes() & kSystemTableBits) != 0)
            continue;
        G.TABLE_NAMES[counter] = QString::fromStdString(table.Name());
        ++counter;
    }
    database.Close();
    G.TABLE_COUNT = counter;
    return counter > 0 ? G.TABLE_NAMES[0] : QString();
}

/// Whether the user gave a password that opened the file.
bool askPassword(const QString& databaseName)
{
    auto& G = globals();
    G.WORK_FILE = databaseName;
    G.LOGIN_ASKED_FLG = true;
    Login login(workspace(), QApplication::activeWindow());
    prompt().run(login);
    return G.LOGIN_OK_FLG;
}

void clearStructure()
{
    auto& G = globals();
    G.FIELD_COUNT = 0;
    G.FOXPRO_FLG = false;
    for (int i = 0; i <= 250; ++i) {
        G.INDEX_NAMES[i].clear();
        G.INDEX_PRIMARY[i] = false;
        G.INDEX_UNIQUE[i] = false;
        G.FIELD_TYPES[i] = 0;
        G.FIELD_NAMES[i].clear();
    }
    G.INDEX_COUNT = 0;
    G.LOGIN_ASKED_FLG = false;
}

void readIndexes(TableDef& table)
{
    auto& G = globals();
    int i = 0;
    for (const Index& index : table.Indexes()) {
        G.INDEX_PRIMARY[i] = index.Primary();
        G.INDEX_UNIQUE[i] = index.Unique();
        G.INDEX_NAMES[i] = QString::fromStdString(index.Name());
        ++i;
    }
    G.INDEX_COUNT = text::narrow16(i);
}

void readFields(TableDef& table)
{
    auto& G = globals();
    int i = 0;
    for (const Field& field : table.Fields()) {
        G.FIELD_TYPES[i] = text::narrow16(field.Type());
        G.FIELD_SIZES[i] = text::narrow16(field.Size());
        G.FIELD_NAMES[i] = QString::fromStdString(field.Name());
        ++i;
    }
    G.FIELD_COUNT = text::narrow16(i);
}

void readStructure(const QString& databaseName, const QString& connect, const QString& lookupName)
{
    Database database = openToInspect(databaseName, connect);
    TableDef& table = database.TableDefs().Item(lookupName.toStdString());
    if (QString::fromStdString(table.Name()).toUpper() == lookupName.toUpper()) {
        readIndexes(table);
        if (table.Attributes() == 0)
            readFields(table);
    }
    database.Close();
}

/// The name by which the engine knows a table of a folder. Error 5 for a name without a dot: the
/// table is then not read, required.
QString bareName(const QString& tableName)
{
    return text::left(tableName, text::instrRev(tableName, ".") - 1);
}

/// Tables of FoxPro hide their indexes from dBASE: a table without any is looked at twice.
void readWithSecondLook(const QString& databaseName, QString& connect, const QString& lookupName)
{
    readStructure(databaseName, connect, lookupName);
    if (connect == kDBase && globals().INDEX_COUNT == 0) {
        connect = kFoxPro;
        readStructure(databaseName, connect, lookupName);
    }
}

}  // namespace

TableListing listTableNames(const QString& databaseName, const QString& connect)
{
    auto& G = globals();
    G.LOGIN_ASKED_FLG = false;
    QString working = connect;
    if (connect == kAccess)
        working = G.DATABASE_PASSWORD.isEmpty() ? QString() : passwordConnect();
    for (;;) {
        TableListing listing;
        const Outcome outcome =
            attempt([&] { listing.first = readTableNames(databaseName, working); });
        listing.listed = bool(outcome);
        if (outcome.number != kInvalidPassword || !askPassword(databaseName))
            return listing;
        working = passwordConnect();
    }
}

QString ListTableNames(const QString& databaseName, const QString& connect)
{
    return listTableNames(databaseName, connect).first;
}

bool LoadTableStructure(const QString& databaseName, const QString& connect,
                        const QString& tableName)
{
    auto& G = globals();
    clearStructure();
    QString working = connect;
    if (connect == kAccess && !G.DATABASE_PASSWORD.isEmpty())
        working = passwordConnect();

    QString lookupName = tableName;
    Outcome outcome = attempt([&] {
        if (connect == kDBase || connect == kParadox)
            lookupName = bareName(tableName);
    });
    for (bool again = bool(outcome); again;) {
        const QString tried = working;
        outcome = attempt([&] { readWithSecondLook(databaseName, working, lookupName); });
        again = false;
        if (outcome.number == kInvalidPassword && G.LOGIN_OK_FLG) {
            working = passwordConnect();
            again = working != tried;  // the same password would fail for ever
        } else if (outcome.number == kUnexpectedFormat && working == kDBase && G.INDEX_COUNT == 0) {
            working = kFoxPro;
            again = true;
        }
    }
    if (outcome.number == kFileInUse)
        prompt().tell(nullptr, "File already Open - Please close File to Edit Data");
    if (!outcome)
        return false;
    G.FOXPRO_FLG = working == kFoxPro && G.INDEX_COUNT > 0;
    return true;
}

}  // namespace velnor
