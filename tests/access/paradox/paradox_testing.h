// tests/access/paradox/paradox_testing.h - tables in memory, made and read through the driver.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "access/formats/paradox/paradox_driver.h"
#include "access/value_text.h"
#include "platform/memory_file_system.h"

namespace velnor::paradox_testing {

using Bytes = std::vector<std::uint8_t>;
using Rows = std::vector<std::string>;

inline std::unique_ptr<Store> openStore(FileSystem& files, std::string_view word = "Paradox 5.x;",
                                        bool readOnly = false, std::string password = {})
{
    static const paradox::ParadoxDriver driver;
    OpenRequest request;
    request.name = "C:\\";
    request.connectWord = word;
    request.readOnly = readOnly;
    request.password = std::move(password);
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

inline IndexDef indexDef(std::string name, std::vector<std::string> fields, bool unique = false)
{
    IndexDef def;
    def.name = std::move(name);
    def.unique = unique;
    for (std::string& field : fields)
        def.fields.push_back({std::move(field), false});
    return def;
}

inline IndexDef primaryDef(std::vector<std::string> fields)
{
    IndexDef def = indexDef("T#PX", std::move(fields), true);
    def.primary = true;
    return def;
}

inline TableLayout layoutOf(std::vector<FieldDef> fields, std::vector<IndexDef> indexes = {})
{
    TableLayout layout;
    layout.name = "T";
    layout.fields = std::move(fields);
    layout.indexes = std::move(indexes);
    return layout;
}

inline ValueView text(std::string_view t)
{
    return ValueView::text(t);
}

inline ValueView whole(std::int64_t i)
{
    return ValueView::integer(i);
}

/// Null as "-", texts in quotes, bytes as hex, all else as people see it.
inline std::string shown(ValueView v)
{
    if (v.isNull())
        return "-";
    std::string out;
    if (v.kind() == ValueKind::Text)
        return out.append("'").append(v.asText()).append("'");
    if (v.kind() == ValueKind::Date)
        appendIsoDate(out, v.asDate());
    else
        appendText(out, v);
    return out;
}

inline std::string rowOf(RowCursor& cursor, int fields)
{
    std::string row;
    for (int i = 0; i < fields; ++i)
        row.append(i ? " " : "").append(shown(cursor.field(i)));
    return row;
}

/// Every record in the order of an index, or in its own.
inline Rows rowsOf(Store& store, std::optional<std::string_view> index = std::nullopt,
                   std::string_view table = "T")
{
    const int fields = static_cast<int>(store.layout(table).fields.size());
    const auto cursor = store.cursor(table, index);
    Rows rows;
    for (bool there = cursor->first(); there; there = cursor->next())
        rows.push_back(rowOf(*cursor, fields));
    return rows;
}

/// What is wrong beyond harmless notes.
inline Rows faultsOf(Store& store, std::string_view table = "T")
{
    Rows faults;
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

inline Bytes contentOf(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// The folder of real tables; empty when it is not here.
inline std::filesystem::path corpusFolder()
{
    const char* corpus = std::getenv("VELNOR_CORPUS");
    if (!corpus || !std::filesystem::is_directory(std::filesystem::path(corpus) / "paradox"))
        return {};
    return std::filesystem::path(corpus) / "paradox";
}

/// Puts a real table and all files beside it that share its name on a drive, as table T.
inline void putFamily(MemoryFileSystem& files, const std::filesystem::path& table)
{
    const auto fold = [](std::string name) {
        for (char& c : name)
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
        return name;
    };
    const std::string stem = fold(table.stem().string());
    for (const auto& entry : std::filesystem::directory_iterator(table.parent_path()))
        if (fold(entry.path().stem().string()) == stem)
            files.put("C:\\T" + fold(entry.path().extension().string()), contentOf(entry.path()));
}

}  // namespace velnor::paradox_testing
