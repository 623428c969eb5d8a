// A worksheet of any content: opened for writing, read, changed, checked, a sheet added and
// dropped.
#include "access/formats/lotus/lotus_driver.h"
#include "fuzz/store_exercise.h"
#include "platform/memory_file_system.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velnor;
    using namespace velnor::fuzzing;
    MemoryFileSystem files(64u << 20);
    files.put("C:\\T.WK4", {data, size});
    OpenRequest request;
    request.name = "C:\\T.WK4";
    request.readOnly = false;
    attempt([&] {
        const auto store = lotus::LotusDriver().open(files, request);
        int tables = 0;
        for (const TableEntry& table : store->catalogue())
            if (++tables < 12)
                attempt([&] { exerciseTable(*store, table.name); });
        attempt([&] {
            TableLayout layout;
            layout.name = "new one";
            layout.fields.resize(2);
            layout.fields[0].name = "A";
            layout.fields[1].name = "B";
            layout.fields[1].type = FieldType::Date;
            store->createTable(layout);
            exerciseTable(*store, layout.name);
            store->dropTable(layout.name);
        });
        attempt([&] { store->dropTable(store->catalogue().front().name); });
    });
    request.options = "cells=yes";
    request.readOnly = true;
    attempt([&] {
        const auto store = lotus::LotusDriver().open(files, request);
        for (const TableEntry& table : store->catalogue())
            attempt([&] {
                readAll(*store->cursor(table.name, std::nullopt),
                        store->layout(table.name).fields.size());
            });
    });
    return 0;
}
