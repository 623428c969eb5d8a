// Every real table gains a field, loses it again and is packed; its records stay what they were.
// Those that cannot be written anew are named here with the reason.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "access/formats/xbase/xbase_store.h"
#include "platform/paths.h"
#include "tests/access/xbase/index_testing.h"

namespace {

using namespace velnor;
using namespace velnor::xbase_testing;
namespace fs = std::filesystem;

using Rows = std::vector<std::string>;

/// What a table refuses, by the engine's number and the words.
const std::map<std::string, std::string> kRefused = {
    {"dbf/dbase_02.dbf", "a dBASE II table is only read"},
    {"dbf/dbase_83_missing_memo.dbf", "its memo file is missing"},
    {"dbf/dbase_8c.dbf", "its memo file is missing"},
    {"dbf/polygon.dbf", "it has no fields"},
    {"test_files/vfp3.dbf", "its memo file is missing"},
};

fs::path corpus()
{
    const char* folder = std::getenv("VELNOR_CORPUS");
    return folder ? fs::path(folder) / "xbase" : fs::path();
}

/// The table and all that has its base name.
void putTable(MemoryFileSystem& files, const fs::path& table)
{
    for (const auto& entry : fs::directory_iterator(table.parent_path())) {
        const fs::path& from = entry.path();
        if (!paths::sameName(from.stem().string(), table.stem().string()))
            continue;
        std::ifstream in(from, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in), {}};
        files.put("C:\\" + from.filename().string(),
                  {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    }
}

Rows fieldsOf(Store& store, const std::string& table)
{
    Rows fields;
    for (const FieldDef& field : store.layout(table).fields)
        fields.push_back(field.name + " " + field.nativeType);
    return fields;
}

class Rewriting {
public:
    explicit Rewriting(const fs::path& table) : base_(table.stem().string())
    {
        putTable(files_, table);
    }

    /// What the table refuses; empty when all went well.
    std::string run()
    {
        std::unique_ptr<Store> store;
        try {
            store = openStore(files_, "FoxPro 3.0;");
            store->layout(base_);
        } catch (const EngineError& error) {
            return "not opened";
        }
        const Rows rows = rowsOf(*store, base_), fields = fieldsOf(*store, base_);
        if (fields.empty())
            return "it has no fields";
        try {
            store->addField(base_, fieldDef("ZZNEW", FieldType::Text, 7));
        } catch (const EngineError& error) {
            EXPECT_EQ(rowsOf(*store, base_), rows) << base_;
            return std::to_string(error.number()) + " " + error.what();
        }
        EXPECT_EQ(rowsOf(*store, base_), withEmpty(rows)) << base_;
        store->dropField(base_, "ZZNEW");
        EXPECT_EQ(fieldsOf(*store, base_), fields) << base_;
        EXPECT_EQ(rowsOf(*store, base_), rows) << base_;
        dynamic_cast<xbase::XbaseStore&>(*store).pack(base_);
        store = openStore(files_, "FoxPro 3.0;");
        EXPECT_EQ(fieldsOf(*store, base_), fields) << base_;
        EXPECT_EQ(rowsOf(*store, base_), rows) << base_;
        EXPECT_EQ(faultsOfStructure(*store), Rows{}) << base_;
        return {};
    }

private:
    /// Values that nobody can read are kept as they are; all else is right afterwards.
    Rows faultsOfStructure(Store& store)
    {
        Rows faults = faultsOf(store, base_);
        std::erase_if(faults, [](const std::string& fault) {
            return fault.find(", field ") != fault.npos && fault.find("memo") == fault.npos;
        });
        return faults;
    }
    static Rows withEmpty(Rows rows)
    {
        for (std::string& row : rows)
            row += " ''";
        return rows;
    }

    MemoryFileSystem files_{512u << 20};
    std::string base_;
};

TEST(RewriteCorpus, everyTableKeepsItsRecords_orSaysWhyItIsNotWritten)
{
    if (!fs::exists(corpus()))
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    int rewritten = 0, unopened = 0;
    std::map<std::string, std::string> refused;
    for (const auto& entry : fs::recursive_directory_iterator(corpus())) {
        if (!paths::sameName(entry.path().extension().string(), ".DBF"))
            continue;
        const std::string said = Rewriting(entry.path()).run();
        if (said == "not opened")
            ++unopened;
        else if (said.empty())
            ++rewritten;
        else
            refused[fs::relative(entry.path(), corpus()).string()] = said;
    }
    EXPECT_GE(rewritten, 82);
    for (const auto& [table, why] : refused)
        EXPECT_TRUE(kRefused.contains(table)) << table << ": " << why;
    for (const auto& [table, why] : kRefused)
        EXPECT_TRUE(refused.contains(table)) << table << " is written now";
    RecordProperty("rewritten", rewritten);
    RecordProperty("unopened", unopened);
}

}  // namespace
