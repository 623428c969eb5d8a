#include "fuzz/excel_exercise.h"

#include <vector>

#include "access/formats/excel/excel_driver.h"
#include "fuzz/exercise.h"
#include "platform/memory_file_system.h"

namespace velnor::fuzzing {
namespace {

void exercise(Store& store, const std::string& table)
{
    const TableLayout layout = store.layout(table);
    const int fields = static_cast<int>(layout.fields.size());
    const auto cursor = store.cursor(table, std::nullopt);
    std::vector<ValueView> row(layout.fields.size());
    int rows = 0;
    for (bool on = cursor->first(); on && rows < 200; on = cursor->next(), ++rows) {
        cursor->fields(row);
        for (int i = 0; i < fields; ++i)
            seen = seen + touch(cursor->field(i)) + touch(row[static_cast<std::size_t>(i)]);
    }
    attempt([&] {
        const auto writer = store.writer(table);
        const std::vector<ValueView> nulls(layout.fields.size());
        const RowId added = writer->insert(nulls);
        for (int i = 0; i < fields && i < 20; ++i)
            if (valueKindOf(layout.fields[static_cast<std::size_t>(i)].type) == ValueKind::Text) {
                const FieldChange change{i, ValueView::text("changed")};
                writer->update(added, std::span(&change, 1));
            }
        if (cursor->first() && fields > 0) {
            const FieldChange change{0, ValueView::null()};
            writer->update(cursor->row(), std::span(&change, 1));
        }
    });
}

}  // namespace

void exerciseWorkbook(std::span<const std::uint8_t> bytes)
{
    MemoryFileSystem files(64u << 20);
    files.put("C:\\T.XLS", bytes);
    attempt([&] {
        OpenRequest request;
        request.name = "C:\\T.XLS";
        request.connectWord = "Excel 8.0;";
        request.readOnly = false;
        const auto store = excel::ExcelDriver().open(files, request);
        int tables = 0;
        for (const TableEntry& table : store->catalogue())
            if (++tables < 8)
                attempt([&] { exercise(*store, table.name); });
        attempt([&] { store->check({}, [](const Problem&) {}); });
        attempt([&] { store->commit(); });
        TableLayout made;
        made.name = "Made";
        made.fields.resize(1);
        made.fields[0].name = "A";
        attempt([&] { store->createTable(made); });
        attempt([&] {
            if (const auto there = store->catalogue(); !there.empty())
                store->dropTable(there.front().name);
        });
        for (const TableEntry& table : store->catalogue())
            if (++tables < 12)
                attempt([&] { exercise(*store, table.name); });
    });
}

}  // namespace velnor::fuzzing
