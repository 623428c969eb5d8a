// tests/access/xbase/xbase_testing.h - tables in memory, made and read through the driver.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "access/formats/xbase/xbase_driver.h"
#include "access/value_text.h"
#include "platform/memory_file_system.h"

namespace velnor::xbase_testing {

inline std::unique_ptr<Store> openStore(FileSystem& files, std::string_view word = "dBASE 5.0;",
                                        bool readOnly = false, std::string codePage = {})
{
    static const xbase::XbaseDriver driver;
    OpenRequest request;
    request.name = "C:\\";
    request.connectWord = word;
    request.readOnly = readOnly;
    request.codePage = std::move(codePage);
    return driver.open(files, request);
}

inline FieldDef fieldDef(std::string name, FieldType type, int size = 0)
{
    FieldDef def;
    def.name = std::move(name);
    def.type = type;
    def.size = size;
    return def;
}

inline FieldDef numberDef(std::string name, int precision, int scale)
{
    FieldDef def = fieldDef(std::move(name), FieldType::Decimal);
    def.precision = static_cast<std::uint8_t>(precision);
    def.scale = static_cast<std::uint8_t>(scale);
    return def;
}

inline TableLayout layoutOf(std::string name, std::vector<FieldDef> fields)
{
    TableLayout layout;
    layout.name = std::move(name);
    layout.fields = std::move(fields);
    return layout;
}

/// Null as "-", texts in quotes, bytes as hex, all else as people see it.
inline std::string shown(ValueView v)
{
    if (v.isNull())
        return "-";
    std::string text;
    if (v.kind() == ValueKind::Text)
        return text.append("'").append(v.asText()).append("'");
    if (v.kind() == ValueKind::Date)
        appendIsoDate(text, v.asDate());
    else
        appendText(text, v);
    return text;
}

inline std::string rowOf(RowCursor& cursor, int fields)
{
    std::string row;
    for (int i = 0; i < fields; ++i)
        row.append(i ? " " : "").append(shown(cursor.field(i)));
    return row;
}

/// Every record that shows, one text each.
inline std::vector<std::string> rowsOf(Store& store, std::string_view table)
{
    const int fields = static_cast<int>(store.layout(table).fields.size());
    const auto cursor = store.cursor(table, std::nullopt);
    std::vector<std::string> rows;
    for (bool there = cursor->first(); there; there = cursor->next())
        rows.push_back(rowOf(*cursor, fields));
    return rows;
}

/// What is wrong beyond harmless notes.
inline std::vector<std::string> faultsOf(Store& store, std::string_view table)
{
    std::vector<std::string> faults;
    store.check(table, [&](const Problem& problem) {
        if (!problem.harmless)
            faults.push_back(problem.where + ": " + problem.text);
    });
    return faults;
}

/// The number of the EngineError that `work` ends with; 0 when it ends without.
template <class Work> int errorOf(Work work)
{
    try {
        work();
        return 0;
    } catch (const EngineError& error) {
        return error.number();
    }
}

inline ValueView text(std::string_view t)
{
    return ValueView::text(t);
}

}  // namespace velnor::xbase_testing
