// Changes a workbook for the tests in Python: excel_work append FILE TABLE COUNT adds the first
// COUNT records of a table to it again; excel_work edit FILE TABLE writes into each of the first
// records what the next one holds. Prints how many records were written.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "access/engine.h"
#include "platform/host.h"

using namespace velnor;

namespace {

std::vector<std::vector<Value>> firstRecords(Recordset& rows, int count)
{
    std::vector<std::vector<Value>> records;
    for (; !rows.Eof() && count-- > 0; rows.MoveNext()) {
        records.emplace_back();
        for (int i = 0; i < rows.fieldCount(); ++i)
            records.back().emplace_back(rows.value(i));
    }
    return records;
}

int append(Recordset& rows, int count)
{
    int written = 0;
    for (const auto& record : firstRecords(rows, count)) {
        rows.AddNew();
        for (int i = 0; i < rows.fieldCount(); ++i)
            rows.setValue(i, record[static_cast<std::size_t>(i)].view());
        rows.Update();
        ++written;
    }
    return written;
}

/// Fields that hold a formula are left as they are.
int edit(Recordset& rows)
{
    int written = 0;
    const auto records = firstRecords(rows, 20);
    rows.MoveFirst();
    for (std::size_t n = 0; n + 1 < records.size(); ++n, rows.MoveNext())
        for (int i = 0; i < rows.fieldCount(); ++i) {
            rows.Edit();
            try {
                rows.setValue(i, records[n + 1][static_cast<std::size_t>(i)].view());
                rows.Update();
                ++written;
            } catch (const EngineError& error) {
                rows.CancelUpdate();
                if (error.code() != EngineErrorNumber::NotSupported)
                    throw;
            }
        }
    return written;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 4)
        return 2;
    HostPaths paths;
    const auto files = makeLinuxFileSystem(paths);
    try {
        Workspace workspace(*files);
        Database db = workspace.OpenDatabase(paths.fromPerson(argv[2]), false, false, "Excel 8.0;");
        Recordset rows = db.OpenRecordset(argv[3], RecordsetType::Table);
        const bool adds = std::strcmp(argv[1], "append") == 0;
        std::printf("%d\n", adds ? append(rows, argc > 4 ? std::atoi(argv[4]) : 3) : edit(rows));
        rows.Close();
        db.Close();
        return 0;
    } catch (const EngineError& error) {
        std::printf("Error - %d - %s\n", error.number(), error.what());
    } catch (const RunError& error) {
        std::printf("Error - %d - %s\n", error.number(), error.what());
    }
    return 1;
}
