// tests/access/paradox/paradox_testing.h - tables in memory, made and read through the driver.
#pragma once

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "access/formats/paradox/paradox_driver.h"
#include "tests/access/support/store_testing.h"

namespace velnor::paradox_testing {

using store_testing::Bytes;
using store_testing::errorOf;
using store_testing::fieldDef;
using store_testing::indexDef;
using store_testing::rowOf;
using store_testing::shown;
using Rows = store_testing::Lines;

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

inline IndexDef primaryDef(std::vector<std::string> fields)
{
    IndexDef def = indexDef("T#PX", std::move(fields), true);
    def.primary = true;
    return def;
}

inline TableLayout layoutOf(std::vector<FieldDef> fields, std::vector<IndexDef> indexes = {})
{
    return store_testing::layoutOf("T", std::move(fields), std::move(indexes));
}

inline ValueView text(std::string_view t)
{
    return ValueView::text(t);
}

inline ValueView whole(std::int64_t i)
{
    return ValueView::integer(i);
}

/// Every record of a table in the order of an index, or in its own.
inline Rows rowsOf(Store& store, std::optional<std::string_view> index = std::nullopt,
                   std::string_view table = "T")
{
    return store_testing::rowsOf(store, table, index);
}

inline Rows faultsOf(Store& store, std::string_view table = "T")
{
    return store_testing::faultsOf(store, table);
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
