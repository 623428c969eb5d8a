// tests/access/text/text_testing.h - text files in memory, read and written through the driver.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "access/formats/text/text_driver.h"
#include "access/value_text.h"
#include "platform/memory_file_system.h"

namespace velnor::text_testing {

inline ByteSpan bytesOf(std::string_view content)
{
    return {reinterpret_cast<const std::uint8_t*>(content.data()), content.size()};
}

inline std::unique_ptr<Store> openStore(FileSystem& files, bool readOnly = false,
                                        std::string options = {}, std::string codePage = {})
{
    static const text::TextDriver driver;
    OpenRequest request;
    request.name = "C:\\";
    request.connectWord = "Text;";
    request.readOnly = readOnly;
    request.options = std::move(options);
    request.codePage = std::move(codePage);
    return driver.open(files, request);
}

inline std::string contentOf(const MemoryFileSystem& files, std::string_view path)
{
    const auto bytes = files.content(path);
    return {bytes.begin(), bytes.end()};
}

/// Null as "-", texts in quotes, all else as people see it.
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

inline std::string rowOf(RowCursor& cursor, std::size_t fields)
{
    std::string row;
    for (std::size_t i = 0; i < fields; ++i)
        row.append(i ? " " : "").append(shown(cursor.field(static_cast<int>(i))));
    return row;
}

inline std::vector<std::string> rowsOf(Store& store, std::string_view table)
{
    const std::size_t fields = store.layout(table).fields.size();
    const auto cursor = store.cursor(table, std::nullopt);
    std::vector<std::string> rows;
    for (bool there = cursor->first(); there; there = cursor->next())
        rows.push_back(rowOf(*cursor, fields));
    return rows;
}

/// "NAME Text", ...
inline std::vector<std::string> fieldsOf(Store& store, std::string_view table)
{
    std::vector<std::string> fields;
    for (const FieldDef& field : store.layout(table).fields)
        fields.push_back(field.name + " " + std::to_string(static_cast<int>(field.type)));
    return fields;
}

inline std::vector<std::string> faultsOf(Store& store, std::string_view table)
{
    std::vector<std::string> faults;
    store.check(table, [&](const Problem& problem) {
        if (!problem.harmless)
            faults.push_back(problem.where + ": " + problem.text);
    });
    return faults;
}

template <class Work> int errorOf(Work work)
{
    try {
        work();
        return 0;
    } catch (const EngineError& error) {
        return error.number();
    }
}

inline FieldDef fieldDef(std::string name, FieldType type, int size = 0)
{
    FieldDef def;
    def.name = std::move(name);
    def.type = type;
    def.size = size;
    return def;
}

inline ValueView words(std::string_view t)
{
    return ValueView::text(t);
}

}  // namespace velnor::text_testing
