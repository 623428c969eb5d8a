// Every index of every real file, walked and compared with a scan of its table, or named here with
// the reason why it is not.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "platform/paths.h"
#include "tests/access/xbase/index_testing.h"

namespace {

using namespace velnor;
using namespace velnor::xbase_testing;
namespace fs = std::filesystem;

/// What a check may find: file and index, then what is wrong with it.
const std::map<std::string, std::string> kKnown = {
    {"EXAMPLE.CDX, index ID", "stale: record 4 was written without it"},
    {"EXAMPLE.CDX, index NOTDELETED", "stale: record 4 was written without it"},
    {"invoice.MDX, index INVOICE ID", "stale: record 63 was written without it"},
    {"invoice.MDX, index CUSTOMER ID", "stale: record 63 was written without it"},
    {"invoice.MDX, index ORDER DATE", "stale: record 63 was written without it"},
    {"invoice.MDX, index PAY TYPE", "stale: record 63 was written without it"},
};

fs::path corpus()
{
    const char* folder = std::getenv("VELNOR_CORPUS");
    return folder ? fs::path(folder) / "xbase" : fs::path();
}

bool isIndexFile(const fs::path& path)
{
    const std::string extension = paths::foldName(path.extension().string());
    return extension == ".CDX" || extension == ".MDX" || extension == ".NDX" || extension == ".IDX";
}

void put(MemoryFileSystem& files, const fs::path& from)
{
    std::ifstream in(from, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    files.put("C:\\" + from.filename().string(),
              {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

/// The tables and memos of a base name, and with `all` also its indexes, in memory.
bool putTable(MemoryFileSystem& files, const fs::path& folder, const std::string& base)
{
    bool table = false;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (!paths::sameName(entry.path().stem().string(), base))
            continue;
        put(files, entry.path());
        table |= paths::sameName(entry.path().extension().string(), ".DBF");
    }
    return table;
}

class Corpus {
public:
    void look(MemoryFileSystem& files, const std::string& base)
    {
        for (const char* word : {"dBASE 5.0;", "FoxPro 3.0;"}) {
            const auto store = openStore(files, word, true);
            try {
                for (const IndexDef& def : store->layout(base).indexes)
                    walk(*store, base, def);
            } catch (const EngineError& error) {
                EXPECT_EQ(error.number(), 3274) << base << ": " << error.what();
                continue;
            }
            store->check(base, [&](const Problem& problem) {
                if (problem.where.find("index ") != std::string::npos)
                    found[problem.where].insert(problem.text);
            });
        }
    }

    int walked = 0, sought = 0;
    std::map<std::string, std::set<std::string>> found;

private:
    /// Both ways the same records; none that is deleted.
    void walk(Store& store, const std::string& base, const IndexDef& def)
    {
        std::vector<RowId> there, back;
        const auto cursor = store.cursor(base, def.name);
        for (bool on = cursor->first(); on; on = cursor->next())
            there.push_back(cursor->row());
        for (bool on = cursor->last(); on; on = cursor->previous())
            back.push_back(cursor->row());
        std::reverse(back.begin(), back.end());
        EXPECT_EQ(there, back) << base << " " << def.name;
        seekEach(store, base, def);
        if (def.condition.empty() && !def.unique && !kKnown.contains(where(base, def)))
            EXPECT_EQ(static_cast<std::int64_t>(there.size()), store.recordCount(base))
                << base << " " << def.name;
        ++walked;
    }

    /// An index over one plain field finds every key that it has.
    void seekEach(Store& store, const std::string& base, const IndexDef& def)
    {
        if (def.fields.size() != 1 || !paths::sameName(def.expression, def.fields[0].name) ||
            !def.cannotKeep.empty() || kKnown.contains(where(base, def)) ||
            kKnown.contains(base + ".CDX, index " + def.name))
            return;
        const auto fields = store.layout(base).fields;
        const auto field = static_cast<int>(
            std::find_if(fields.begin(), fields.end(),
                         [&](const FieldDef& f) { return f.name == def.fields[0].name; }) -
            fields.begin());
        const auto walk = store.cursor(base, def.name), search = store.cursor(base, def.name);
        for (bool on = walk->first(); on; on = walk->next()) {
            const Value key(walk->field(field));
            const ValueView wanted = key.view();
            if (wanted.kind() == ValueKind::Text && wanted.asText().empty())
                continue;  // blanks, or zero bytes: both read as empty
            ASSERT_TRUE(search->seek(Comparison::Equal, {&wanted, 1}))
                << base << " " << def.name << " " << shown(wanted);
            ASSERT_EQ(shown(search->field(field)), shown(wanted)) << base << " " << def.name;
            ++sought;
        }
    }

    static std::string where(const std::string& base, const IndexDef& def)
    {
        return base + ".MDX, index " + def.name;
    }
};

TEST(IndexCorpus, everyIndexAgreesWithItsTable)
{
    if (!fs::exists(corpus()))
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    Corpus all;
    for (const auto& entry : fs::recursive_directory_iterator(corpus())) {
        const std::string extension = paths::foldName(entry.path().extension().string());
        if (extension != ".CDX" && extension != ".MDX")
            continue;
        MemoryFileSystem files(256u << 20);
        if (putTable(files, entry.path().parent_path(), entry.path().stem().string()))
            all.look(files, entry.path().stem().string());
    }
    EXPECT_GT(all.walked, 60);
    EXPECT_GT(all.sought, 1000);
    for (const auto& [where, texts] : all.found)
        EXPECT_TRUE(kKnown.contains(where)) << where << ": " << *texts.begin();
    for (const auto& [where, why] : kKnown)
        EXPECT_TRUE(all.found.contains(where)) << where;
}

TEST(IndexCorpus, indexFilesOfDbaseThree_agreeWithTheirTables_whenAnInfListsThem)
{
    if (!fs::exists(corpus()))
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    Corpus all;
    int listed = 0;
    for (const auto& entry : fs::recursive_directory_iterator(corpus())) {
        if (!isIndexFile(entry.path()) ||
            !paths::sameName(entry.path().extension().string(), ".NDX"))
            continue;
        const fs::path folder = entry.path().parent_path();
        const std::string base =
            folder.filename() == "generated_own_ndx" ? "GENN" : entry.path().stem().string();
        MemoryFileSystem files(64u << 20);
        if (!putTable(files, folder, base))
            continue;
        put(files, entry.path());
        const std::string inf = "[dbase]\r\nNDX=" + entry.path().filename().string() + "\r\n";
        files.put("C:\\" + base + ".INF",
                  {reinterpret_cast<const std::uint8_t*>(inf.data()), inf.size()});
        all.look(files, base);
        ++listed;
    }
    EXPECT_GE(listed, 6);
    EXPECT_EQ(all.walked, listed);
    for (const auto& [where, texts] : all.found)
        ADD_FAILURE() << where << ": " << *texts.begin();
}

}  // namespace
