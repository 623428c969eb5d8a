// tests/access/support/store_testing.h - tables of any format, described and shown through the
// driver.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/value_text.h"
#include "platform/memory_file_system.h"

namespace velnor::store_testing {

using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

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

inline IndexDef indexDef(std::string name, std::vector<std::string> fields, bool unique = false)
{
    IndexDef def;
    def.name = std::move(name);
    def.unique = unique;
    for (std::string& field : fields)
        def.fields.push_back({std::move(field), false});
    return def;
}

inline TableLayout layoutOf(std::string name, std::vector<FieldDef> fields,
                            std::vector<IndexDef> indexes = {})
{
    TableLayout layout;
    layout.name = std::move(name);
    layout.fields = std::move(fields);
    layout.indexes = std::move(indexes);
    return layout;
}

/// Null as "-", texts in quotes, dates as in ISO, bytes as hex, all else as people see it.
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

/// Every record in the order of an index, or in the table's own.
inline Lines rowsOf(Store& store, std::string_view table,
                    std::optional<std::string_view> index = std::nullopt)
{
    const int fields = static_cast<int>(store.layout(table).fields.size());
    const auto cursor = store.cursor(table, index);
    Lines rows;
    for (bool there = cursor->first(); there; there = cursor->next())
        rows.push_back(rowOf(*cursor, fields));
    return rows;
}

/// "NAME Text", "AMOUNT Double", ...
inline Lines fieldsOf(Store& store, std::string_view table)
{
    static constexpr std::pair<FieldType, const char*> kNames[] = {
        {FieldType::Text, "Text"},         {FieldType::Memo, "Memo"},
        {FieldType::Double, "Double"},     {FieldType::Single, "Single"},
        {FieldType::Long, "Long"},         {FieldType::Date, "Date"},
        {FieldType::Currency, "Currency"}, {FieldType::Boolean, "Boolean"}};
    Lines fields;
    for (const FieldDef& def : store.layout(table).fields) {
        std::string type = std::to_string(static_cast<int>(def.type));
        for (const auto& [known, name] : kNames)
            if (def.type == known)
                type = name;
        fields.push_back(def.name + " " + type);
    }
    return fields;
}

inline Lines tablesOf(Store& store)
{
    Lines names;
    for (const TableEntry& entry : store.catalogue())
        names.push_back(entry.name);
    return names;
}

/// All that a check of a table (of the whole file: no name) finds.
inline Lines findingsOf(Store& store, std::string_view table = {}, bool harmlessToo = true)
{
    Lines findings;
    store.check(table, [&](const Problem& problem) {
        if (harmlessToo || !problem.harmless)
            findings.push_back(problem.where + ": " + problem.text);
    });
    return findings;
}

/// What is wrong beyond harmless notes.
inline Lines faultsOf(Store& store, std::string_view table = {})
{
    return findingsOf(store, table, false);
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

}  // namespace velnor::store_testing
