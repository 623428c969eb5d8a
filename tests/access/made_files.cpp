#include "tests/access/made_files.h"

#include "access/value_text.h"
#include "platform/host.h"

namespace velnor::testing {
namespace {

Database openFile(Workspace& workspace, const QString& database, const QString& connect,
                  bool readOnly)
{
    return workspace.OpenDatabase(database.toStdString(), false, readOnly, connect.toStdString());
}

QString shown(ValueView value)
{
    if (value.isNull())
        return "(Null)";
    std::string text;
    appendText(text, value);
    return QString::fromStdString(text);
}

void setField(Recordset& records, int field, const QVariant& value)
{
    if (!value.isValid())
        return records.setValue(field, ValueView::null());
    switch (value.typeId()) {
    case QMetaType::Bool:
        return records.setValue(field, ValueView::boolean(value.toBool()));
    case QMetaType::Int:
    case QMetaType::LongLong:
        return records.setValue(field, ValueView::integer(value.toLongLong()));
    case QMetaType::Double:
        return records.setValue(field, ValueView::real(value.toDouble()));
    default:
        break;
    }
    const std::string text = value.toString().toStdString();
    records.setValue(field, ValueView::text(text));
}

}  // namespace

void makeAccessFile(const QString& path, const QString& password)
{
    Workspace workspace(*host().files);
    std::string locale = kGeneralLocale;
    if (!password.isEmpty())
        locale += ";pwd=" + password.toStdString();
    workspace.CreateDatabase(path.toStdString(), locale).Close();
}

void makeTable(const QString& database, const QString& connect, const QString& table,
               const QList<MadeField>& fields, const QString& uniqueIndexOn)
{
    Workspace workspace(*host().files);
    Database opened = openFile(workspace, database, connect, false);
    TableDef made = opened.CreateTableDef(table.toStdString());
    for (const MadeField& field : fields) {
        Field draft = made.CreateField(field.name.toStdString(), int(field.type), field.size);
        draft.Required(field.required);
        made.Fields().Append(draft);
    }
    if (!uniqueIndexOn.isEmpty()) {
        Index index = made.CreateIndex(uniqueIndexOn.toStdString());
        index.Unique(true);
        index.Fields().Append(index.CreateField(uniqueIndexOn.toStdString()));
        made.Indexes().Append(index);
    }
    opened.TableDefs().Append(made);
    opened.Close();
}

void appendRows(const QString& database, const QString& connect, const QString& table,
                const QList<QVariantList>& rows)
{
    Workspace workspace(*host().files);
    Database opened = openFile(workspace, database, connect, false);
    Recordset records = opened.OpenRecordset(table.toStdString());
    for (const QVariantList& row : rows) {
        records.AddNew();
        for (int field = 0; field < row.size(); ++field)
            setField(records, field, row[field]);
        records.Update();
    }
    records.Close();
    opened.Close();
}

QList<QStringList> readRows(const QString& database, const QString& connect, const QString& table)
{
    Workspace workspace(*host().files);
    Database opened = openFile(workspace, database, connect, true);
    Recordset records = opened.OpenRecordset(table.toStdString());
    QList<QStringList> rows;
    for (; !records.Eof(); records.MoveNext()) {
        QStringList row;
        for (int field = 0; field < records.fieldCount(); ++field)
            row << shown(records.value(field));
        rows << row;
    }
    return rows;
}

}  // namespace velnor::testing
