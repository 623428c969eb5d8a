#include "windows/table_source.h"

#include "access/routing.h"
#include "access/schema.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "platform/paths.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

const QString kFoxPro = u"FoxPro 3.0;"_s;

bool isNumber(const Outcome& outcome, EngineErrorNumber number)
{
    return outcome.number == static_cast<int>(number);
}

[[noreturn]] void rethrow(const Outcome& failed)
{
    throw EngineError(static_cast<EngineErrorNumber>(failed.number),
                      failed.description.toStdString());
}

void openRecords(DataControl& control)
{
    control.Type = RecordsetType::Table;
    const Outcome opened = attempt([&] { control.Refresh(); });
    if (opened)
        return;
    if (!isNumber(opened, EngineErrorNumber::NotSupported))
        rethrow(opened);
    control.Type = RecordsetType::Dynaset;
    control.Refresh();
    if (control.Recordset().Eof())
        return;
    control.Recordset().MoveLast();
    control.Recordset().MoveFirst();
}

}  // namespace

TableSource::TableSource(const QString& file, ConnectForm connectForm)
    : path(file), folder(fromUtf8(paths::folder(file.toStdString()))),
      fileName(fromUtf8(paths::fileName(file.toStdString()))), type(GetFileExtension(file)),
      connect(SetDatabaseType(file)), form(connectForm)
{
    if (inFolder())
        table = fileName;
}

bool TableSource::holdsTables() const
{
    return type == u"MDB" || type == u"XLS" || type == u"WK4";
}

bool TableSource::listTables(const QString& wanted)
{
    auto& G = globals();
    const QString first = ListTableNames(path, connect);
    if (G.LOGIN_ASKED_FLG && !G.LOGIN_OK_FLG)
        return false;
    tables.clear();
    for (int i = 0; i < G.TABLE_COUNT; ++i)
        tables << G.TABLE_NAMES[i];
    table = wanted.isEmpty() ? first : wanted;
    return true;
}

void TableSource::readStructure()
{
    auto& G = globals();
    LoadTableStructure(inFolder() ? folder : path, connect, table);
    if (inFolder() && G.FOXPRO_FLG)
        connect = kFoxPro;
    if (type == u"MDB")
        password = G.DATABASE_PASSWORD;
}

void TableSource::open(DataControl& control)
{
    nameTo(control);
    const Outcome opened = attempt([&] { openRecords(control); });
    if (opened)
        return;
    // A table of FoxPro without an index: only its refusal tells it from one of dBASE.
    if (!isNumber(opened, EngineErrorNumber::UnexpectedFormat) || connect != u"dBASE 5.0;")
        rethrow(opened);
    connect = kFoxPro;
    nameTo(control);
    const Outcome asFoxPro = attempt([&] { openRecords(control); });
    if (asFoxPro)
        return;
    connect = u"dBASE 5.0;"_s;  // it is neither
    rethrow(opened);
}

QString TableSource::connectText() const
{
    if (password.isEmpty())
        return connect;
    return form == ConnectForm::PasswordAlone ? accessConnect(password, connect)
                                              : connect + u";pwd="_s + password;
}

void TableSource::nameTo(DataControl& control) const
{
    control.Connect = connectText().toStdString();
    control.DatabaseName = (inFolder() ? folder : path).toStdString();
    control.RecordSource = table.toStdString();
}

}  // namespace velnor
