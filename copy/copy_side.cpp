#include "copy/copy_side.h"

#include "core/text.h"

namespace velnor {

void CopySide::readFields(Workspace& workspace)
{
    velnor::Database database =
        workspace.OpenDatabase(Database.toStdString(), false, true, Connect.toStdString());
    Recordset records = database.OpenRecordset(Record.toStdString(), RecordsetType::Table);
    for (const Field& field : records.Fields())
        Fields.add(QString::fromStdString(field.Name()), text::narrow16(field.Type()),
                   field.Size());
    database.Close();
}

}  // namespace velnor
