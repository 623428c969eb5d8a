// fuzz/store_exercise.h - everything that people do with the tables of a store without indexes.
#pragma once

#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "fuzz/exercise.h"

namespace velnor::fuzzing {

inline void readAll(RowCursor& cursor, std::size_t fields)
{
    std::vector<ValueView> values(fields);
    int rows = 0;
    for (bool on = cursor.first(); on && rows < 2000; on = cursor.next(), ++rows) {
        cursor.fields(values);
        for (const ValueView v : values)
            seen = seen + touch(v);
    }
    for (bool on = cursor.last(); on && rows > 0; on = cursor.previous(), --rows)
        if (fields > 0)
            seen = seen + touch(cursor.field(0));
}

inline void changeRecords(Store& store, const std::string& table, const TableLayout& layout)
{
    const auto writer = store.writer(table);
    const std::vector<ValueView> empty(layout.fields.size());
    writer->insert(empty);
    std::vector<ValueView> row;
    for (const FieldDef& field : layout.fields)
        row.push_back(valueKindOf(field.type) == ValueKind::Text   ? ValueView::text("a \"b\",\n")
                      : valueKindOf(field.type) == ValueKind::Date ? ValueView::date(40000.25)
                                                                   : ValueView::null());
    const RowId added = writer->insert(row);
    const auto cursor = store.cursor(table, std::nullopt);
    attempt([&] { cursor->moveTo(added); });
    for (int i = 0; i < static_cast<int>(row.size()); ++i) {
        const FieldChange change{i, i % 2 ? ValueView() : row[static_cast<std::size_t>(i)]};
        attempt([&] {
            if (cursor->first())
                writer->update(cursor->row(), std::span(&change, 1));
        });
    }
}

inline void exerciseTable(Store& store, const std::string& table)
{
    const TableLayout layout = store.layout(table);
    const auto cursor = store.cursor(table, std::nullopt);
    readAll(*cursor, layout.fields.size());
    const std::int64_t count = store.recordCount(table);
    if (cursor->moveToOrdinal(count / 2))
        seen = seen + static_cast<std::uint64_t>(cursor->ordinal());
    store.check(table, [](const Problem&) {});
    store.info(table);
    attempt([&] { changeRecords(store, table, layout); });
    attempt([&] { store.commit(); });
    readAll(*store.cursor(table, std::nullopt), layout.fields.size());
}

}  // namespace velnor::fuzzing
