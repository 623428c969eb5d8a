// Every table of every real file, compared with its dump.
#include <algorithm>

#include <gtest/gtest.h>

#include "access/formats/jet/jet_driver.h"
#include "tests/access/jet/corpus_files.h"
#include "tests/access/jet/jet_testing.h"

namespace velnor::testing {
namespace {

std::unique_ptr<Store> openEntry(MemoryFileSystem& files, const Json& entry)
{
    // Only the file whose header lies about its code page needs telling.
    std::string codePage;
    for (const Json& note : entry["notes"].list)
        if (note.text.find("header says code page") != std::string::npos)
            codePage = std::to_string(static_cast<int>(entry["codepage"].number));
    return jet::JetDriver().open(files, reading(entry["password"].text, codePage));
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> found;
    std::string line;
    for (const char c : text) {
        if (c == '\n') {
            found.push_back(line);
            line.clear();
        } else {
            line += c;
        }
    }
    if (!line.empty())
        found.push_back(line);
    return found;
}

/// Bytes that code page 1252 leaves undefined are control characters to us, U+FFFD to the dumps.
std::string withoutUndefined(std::string text)
{
    for (const char* undefined : {"\xC2\x81", "\xC2\x8D", "\xC2\x8F", "\xC2\x90", "\xC2\x9D"})
        for (std::size_t at; (at = text.find(undefined)) != std::string::npos;)
            text.replace(at, 2, "\xEF\xBF\xBD");
    return text;
}

/// The first line that differs says more than two long texts.
void expectEqual(const std::string& got, const std::string& wanted, const std::string& where)
{
    if (got == wanted)
        return;
    const auto a = lines(got), b = lines(wanted);
    for (std::size_t i = 0; i < std::max(a.size(), b.size()); ++i) {
        const std::string mine = i < a.size() ? a[i] : "(end)";
        const std::string theirs = i < b.size() ? b[i] : "(end)";
        if (mine != theirs) {
            ADD_FAILURE() << where << " line " << i + 1 << "\n  got    " << mine.substr(0, 400)
                          << "\n  wanted " << theirs.substr(0, 400);
            return;
        }
    }
}

class Corpus : public ::testing::TestWithParam<int> {
protected:
    static const Json& manifest()
    {
        static const Json json = corpusManifest();
        return json;
    }
    const Json& entry() const { return manifest().list[GetParam()]; }
    bool damaged() const { return entry().has("damage"); }
};

TEST_P(Corpus, givesEveryRecordOfItsDump)
{
    if (damaged())
        GTEST_SKIP() << "damaged on purpose: see the tests of damage";
    const auto files = memoryWith(readBytes(corpusFolder() + entry()["file"].text));
    const auto store = openEntry(*files, entry());
    for (const Json& table : entry()["tables"].list) {
        const std::string where = entry()["file"].text + " " + table["name"].text;
        const auto bytes = readBytes(corpusFolder() + table["dump"].text);
        const std::string dump = dumpTable(*store, table["name"].text);
        expectEqual(entry()["kind"].text == "jet3" ? withoutUndefined(dump) : dump,
                    {reinterpret_cast<const char*>(bytes.data()), bytes.size()}, where);
        EXPECT_EQ(store->recordCount(table["name"].text),
                  static_cast<std::int64_t>(table["records"].number))
            << where;
    }
}

TEST_P(Corpus, anOpenFileStillKnowsItsPassword)
{
    if (!entry().has("password"))
        GTEST_SKIP() << "has no password";
    const auto files = memoryWith(readBytes(corpusFolder() + entry()["file"].text));
    const auto store = openEntry(*files, entry());
    EXPECT_TRUE(store->acceptsPassword(entry()["password"].text));
    EXPECT_FALSE(store->acceptsPassword("not it"));
    EXPECT_FALSE(store->acceptsPassword(""));
}

TEST_P(Corpus, listsItsTablesFieldsAndIndexes)
{
    if (damaged())
        GTEST_SKIP() << "damaged on purpose: see the tests of damage";
    const auto files = memoryWith(readBytes(corpusFolder() + entry()["file"].text));
    const auto store = openEntry(*files, entry());
    std::vector<std::string> shown, wanted;
    for (const TableEntry& table : store->catalogue())
        if ((table.attributes & (kSystemTableBits | kLinkedTableBit | kLinkedOdbcTableBit)) == 0)
            shown.push_back(table.name);
    for (const Json& table : entry()["tables"].list)
        wanted.push_back(table["name"].text);
    std::sort(shown.begin(), shown.end());
    std::sort(wanted.begin(), wanted.end());
    for (const std::string& name : wanted)
        EXPECT_TRUE(std::find(shown.begin(), shown.end(), name) != shown.end()) << name;

    for (const Json& table : entry()["tables"].list) {
        const TableLayout layout = store->layout(table["name"].text);
        const std::string where = entry()["file"].text + " " + layout.name;
        const auto& fields = table["fields"].list;
        ASSERT_EQ(layout.fields.size(), fields.size()) << where;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const FieldDef& field = layout.fields[i];
            const std::string at = where + "." + field.name;
            EXPECT_EQ(field.name, fields[i]["name"].text) << at;
            EXPECT_EQ(field.nativeType.substr(0, fields[i]["type"].text.size()),
                      fields[i]["type"].text)
                << at;
            if (field.type == FieldType::Text || field.type == FieldType::Binary) {
                EXPECT_EQ(field.size, static_cast<int>(fields[i]["size"].number)) << at;
            }
            EXPECT_EQ(field.autonumber, fields[i]["auto"].boolean) << at;
            const Json& properties = fields[i]["properties"];
            EXPECT_EQ(field.required, properties["Required"].boolean) << at;
            if (properties.has("AllowZeroLength")) {
                EXPECT_EQ(field.allowZeroLength, properties["AllowZeroLength"].boolean) << at;
            }
            EXPECT_EQ(field.defaultValue, properties["DefaultValue"].text) << at;
            EXPECT_EQ(field.description, properties["Description"].text) << at;
        }
        std::vector<std::string> mine, theirs;
        for (const IndexDef& index : layout.indexes) {
            std::string line =
                index.name + (index.primary ? " primary" : "") + (index.unique ? " unique" : "") +
                (index.required ? " required" : "") + (index.ignoreNulls ? " ignore" : "") +
                (index.foreign ? " foreign" : "");
            for (const IndexFieldDef& field : index.fields)
                line += std::string(",") + (field.descending ? "-" : "") + field.name;
            mine.push_back(line);
        }
        for (const Json& index : table["indexes"].list) {
            std::string line = index["name"].text + (index["primary"].boolean ? " primary" : "") +
                               (index["unique"].boolean ? " unique" : "") +
                               (index["required"].boolean ? " required" : "") +
                               (index["ignoreNulls"].boolean ? " ignore" : "") +
                               (index["foreign"].boolean ? " foreign" : "");
            for (const Json& field : index["fields"].list)
                line += "," + field.text;
            theirs.push_back(line);
        }
        std::sort(mine.begin(), mine.end());
        std::sort(theirs.begin(), theirs.end());
        EXPECT_EQ(mine, theirs) << where;
    }
}

TEST_P(Corpus, deliversTheSameRecordsThroughEachIndexAndBackwards)
{
    if (damaged())
        GTEST_SKIP() << "damaged on purpose: see the tests of damage";
    const auto files = memoryWith(readBytes(corpusFolder() + entry()["file"].text));
    const auto store = openEntry(*files, entry());
    for (const Json& table : entry()["tables"].list) {
        const TableLayout layout = store->layout(table["name"].text);
        std::vector<RowId> all, backwards;
        const auto cursor = store->cursor(layout.name, std::nullopt);
        for (bool on = cursor->first(); on; on = cursor->next())
            all.push_back(cursor->row());
        for (bool on = cursor->last(); on; on = cursor->previous())
            backwards.push_back(cursor->row());
        std::reverse(backwards.begin(), backwards.end());
        EXPECT_EQ(all, backwards) << layout.name;
        for (std::size_t i = 0; i < all.size(); i += 1 + all.size() / 50) {
            ASSERT_TRUE(cursor->moveToOrdinal(static_cast<std::int64_t>(i)));
            EXPECT_EQ(cursor->row(), all[i]);
            EXPECT_EQ(cursor->ordinal(), static_cast<std::int64_t>(i));
        }
        std::sort(all.begin(), all.end());
        for (const IndexDef& index : layout.indexes) {
            std::vector<RowId> indexed;
            const auto walker = store->cursor(layout.name, index.name);
            for (bool on = walker->first(); on; on = walker->next())
                indexed.push_back(walker->row());
            std::sort(indexed.begin(), indexed.end());
            if (index.ignoreNulls) {
                EXPECT_TRUE(std::includes(all.begin(), all.end(), indexed.begin(), indexed.end()))
                    << layout.name << "." << index.name;
            } else {
                EXPECT_EQ(all, indexed)
                    << entry()["file"].text << " " << layout.name << "." << index.name;
            }
        }
    }
}

std::vector<int> entries()
{
    std::vector<int> all;
    if (!corpusFolder().empty())
        for (int i = 0; i < static_cast<int>(corpusManifest().list.size()); ++i)
            all.push_back(i);
    return all;
}

std::string nameOf(const ::testing::TestParamInfo<int>& info)
{
    static const Json manifest = corpusManifest();
    std::string name = manifest.list[info.param]["file"].text;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Files, Corpus, ::testing::ValuesIn(entries()), nameOf);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Corpus);

/// A link has no records here: people are told where they are.
TEST(JetLinks, sayWhichTableOfWhichFileTheyAre)
{
    const auto bytes = jet::corpusFile("spannm-linked.mdb");
    if (bytes.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    MemoryFileSystem files;
    files.put(kTestFile, bytes);
    const auto store = jet::JetDriver().open(files, reading());
    std::string links;
    for (const auto& [name, text] : store->info({}))
        if (name == "Linked table")
            links += text + "\n";
    EXPECT_NE(links.find("Table1: Table1 of "), links.npos) << links;
    try {
        store->cursor("Table1", std::nullopt);
        FAIL();
    } catch (const EngineError& error) {
        EXPECT_EQ(error.number(), 3251);
        EXPECT_NE(std::string(error.what()).find(".mdb"), std::string::npos) << error.what();
    }
}

}  // namespace
}  // namespace velnor::testing
