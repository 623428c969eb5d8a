// An Access file of any content: opened for writing, read, walked, changed, checked.
#include <cstdint>
#include <vector>

#include "access/formats/jet/jet_driver.h"
#include "fuzz/exercise.h"
#include "platform/memory_file_system.h"

namespace velnor::fuzzing {
namespace {

void readAll(RowCursor& cursor, int fields)
{
    int rows = 0;
    for (bool on = cursor.first(); on && rows < 2000; on = cursor.next(), ++rows)
        for (int i = 0; i < fields; ++i)
            seen = seen + touch(cursor.field(i));
    for (bool on = cursor.last(); on && rows > 0; on = cursor.previous())
        --rows;
}

void exercise(Store& store, const std::string& table)
{
    const TableLayout layout = store.layout(table);
    const int fields = static_cast<int>(layout.fields.size());
    attempt([&] { readAll(*store.cursor(table, std::nullopt), fields); });
    for (const IndexDef& index : layout.indexes)
        attempt([&] { readAll(*store.cursor(table, index.name), fields); });
    attempt(
        [&] { store.cursor(table, std::nullopt)->moveToOrdinal(store.recordCount(table) / 2); });
    attempt([&] {
        const auto writer = store.writer(table);
        const std::vector<ValueView> row(layout.fields.size());
        const RowId added = writer->insert(row);
        for (int i = 0; i < fields; ++i)
            if (layout.fields[i].type == FieldType::Memo ||
                layout.fields[i].type == FieldType::Text) {
                const FieldChange change{i, ValueView::text("changed")};
                writer->update(added, std::span(&change, 1));
            }
        const auto cursor = store.cursor(table, std::nullopt);
        if (cursor->first())
            writer->remove(cursor->row());
    });
}

}  // namespace
}  // namespace velnor::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velnor;
    using namespace velnor::fuzzing;
    MemoryFileSystem files(64u << 20);
    files.put("C:\\T.MDB", {data, size});
    attempt([&] {
        OpenRequest request;
        request.name = "C:\\T.MDB";
        request.readOnly = false;
        const auto store = jet::JetDriver().open(files, request);
        int tables = 0;
        for (const TableEntry& table : store->catalogue())
            if (++tables < 20)
                attempt([&] { exercise(*store, table.name); });
        attempt([&] { store->check({}, [](const Problem&) {}); });
        attempt([&] { store->commit(); });
    });
    return 0;
}
