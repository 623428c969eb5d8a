// The deep check: sound files have no findings but harmless ones, damaged files have some.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "access/formats/jet/jet_check.h"
#include "access/formats/jet/jet_driver.h"
#include "tests/access/jet/open_corpus.h"

namespace velnor::jet {
namespace {

std::vector<Problem> findings(const std::vector<std::uint8_t>& bytes, const std::string& password,
                              std::string_view table = {})
{
    std::vector<Problem> found;
    try {
        OpenCorpusFile file(bytes, password);
        checkDatabase(
            file.file(), file.catalog(), table,
            [&](const CatalogEntry& entry) {
                return std::make_shared<JetTable>(file.file(), static_cast<PageNumber>(entry.id),
                                                  entry.name);
            },
            [&](const Problem& problem) { found.push_back(problem); });
    } catch (const EngineError& error) {
        found.push_back({"file", error.what(), false});
    }
    return found;
}

std::vector<Problem> findings(const std::string& name, std::string_view table = {})
{
    return findings(corpusFile(name), corpusPassword(name), table);
}

int serious(const std::vector<Problem>& found)
{
    return static_cast<int>(
        std::ranges::count_if(found, [](const Problem& p) { return !p.harmless; }));
}

TEST(Check, findsNothingSeriousInSoundFiles)
{
    const auto names = corpusNames();
    if (names.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    int harmless = 0;
    for (const std::string& name : names) {
        for (const Problem& problem : findings(name)) {
            harmless += problem.harmless;
            EXPECT_TRUE(problem.harmless) << name << ": " << problem.where << ": " << problem.text;
            if (std::getenv("VELNOR_SHOW_NOTES"))
                std::printf("%s: %s: %s\n", name.c_str(), problem.where.c_str(),
                            problem.text.c_str());
        }
    }
    EXPECT_GT(harmless, 0) << "real files have stale counts";
}

TEST(Check, findsTheDamageInEveryDamagedFile)
{
    const auto folder = corpusFolder() / "bad";
    if (corpusFolder().empty() || !std::filesystem::exists(folder))
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = "bad/" + entry.path().filename().string();
        const auto found = findings(name);
        for (const Problem& problem : found)
            if (std::getenv("VELNOR_SHOW_NOTES"))
                std::printf("%s: %s: %s\n", name.c_str(), problem.where.c_str(),
                            problem.text.c_str());
        if (name.find("count") != std::string::npos)
            EXPECT_FALSE(found.empty()) << name;  // a stale count loses nothing
        else
            EXPECT_GT(serious(found), 0) << name;
    }
}

TEST(Check, endsOnEveryDamage)
{
    if (corpusNames().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    std::mt19937 random(17);
    int hurt = 0;
    for (const char* name : {"jahlborn-delTestV2003.mdb", "jahlborn-indexTestV1997.mdb"}) {
        const auto sound = corpusFile(name);
        for (int round = 0; round < 60; ++round) {
            auto bytes = sound;
            const std::size_t page = (bytes[0x14] ? 4096 : 2048);
            for (int hit = 0; hit < 12; ++hit) {
                // Heads of pages are hit more often: that is where the structure is.
                const std::size_t start = random() % (bytes.size() / page) * page;
                const std::size_t at = start + random() % (hit % 2 ? page : 64);
                bytes[at] ^= static_cast<std::uint8_t>(1u << random() % 8);
            }
            hurt += serious(findings(bytes, "")) > 0;
        }
    }
    EXPECT_GT(hurt, 60);
}

/// A small file of our own, whose structures a test then hurts.
class OwnFile : public testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        const JetDriver driver;
        CreateRequest create;
        create.name = "C:\\own.mdb";
        create.options = GetParam();
        create.locale = ";LANGID=0x0409;CP=1252;COUNTRY=0";
        driver.create(files_, create);
        OpenRequest request;
        request.name = create.name;
        request.readOnly = false;
        request.exclusive = true;
        {
            const auto store = driver.open(files_, request);
            store->createTable(people());
            const auto writer = store->writer("People");
            for (int i = 0; i < 500; ++i) {
                const std::string name = "Person " + std::to_string(i % 100);
                const ValueView values[] = {ValueView::integer(i), ValueView::text(name)};
                writer->insert(values);
            }
            store->commit();
        }
        file_ = std::make_unique<JetFile>(files_, request);
        catalog_ = std::make_unique<Catalog>(*file_);
        const auto page = static_cast<PageNumber>(catalog_->find("People")->id);
        table_ = std::make_shared<JetTable>(*file_, page, "People");
    }
    static TableLayout people()
    {
        TableLayout layout;
        layout.name = "People";
        FieldDef id;
        id.name = "Id";
        id.type = FieldType::Long;
        id.size = 4;
        FieldDef text;
        text.name = "Name";
        text.size = 40;
        layout.fields = {id, text};
        IndexDef key;
        key.name = "PrimaryKey";
        key.primary = key.unique = key.required = true;
        key.fields = {{"Id", false}};
        IndexDef name;
        name.name = "Name";
        name.fields = {{"Name", false}};
        layout.indexes = {key, name};
        return layout;
    }
    std::vector<Problem> check()
    {
        std::vector<Problem> found;
        checkDatabase(
            *file_, *catalog_, {},
            [&](const CatalogEntry& entry) {
                return entry.name == "People"
                           ? table_
                           : std::make_shared<JetTable>(*file_, static_cast<PageNumber>(entry.id),
                                                        entry.name);
            },
            [&](const Problem& problem) { found.push_back(problem); });
        return found;
    }
    IndexTree& tree(const char* name) { return *table_->index(table_->realIndexOf(name)).tree; }
    IndexEntry firstOf(const char* name)
    {
        IndexWalker walker(tree(name));
        walker.first();
        key_.assign(walker.key().begin(), walker.key().end());
        return {key_, walker.row()};
    }

    MemoryFileSystem files_;
    std::unique_ptr<JetFile> file_;
    std::unique_ptr<Catalog> catalog_;
    std::shared_ptr<JetTable> table_;
    std::vector<std::uint8_t> key_;
};
INSTANTIATE_TEST_SUITE_P(Versions, OwnFile, testing::Values(0, 32));

TEST_P(OwnFile, hasNoFindingsAtAll)
{
    for (const Problem& problem : check())
        ADD_FAILURE() << problem.where << ": " << problem.text;
}

TEST_P(OwnFile, missingEntryIsFound)
{
    const IndexEntry entry = firstOf("Name");
    ASSERT_TRUE(tree("Name").erase(entry.key, entry.row));
    EXPECT_EQ(serious(check()), 1);
}

TEST_P(OwnFile, entryUnderAForeignKeyIsFound)
{
    const IndexEntry entry = firstOf("Name");
    ASSERT_TRUE(tree("Name").erase(entry.key, entry.row));
    key_[1] ^= 1;
    ASSERT_TRUE(tree("Name").insert(key_, entry.row));
    EXPECT_EQ(serious(check()), 1);
}

TEST_P(OwnFile, entryWithoutRecordIsFound)
{
    const IndexEntry entry = firstOf("PrimaryKey");
    ASSERT_TRUE(tree("PrimaryKey").erase(entry.key, entry.row));
    ASSERT_TRUE(tree("PrimaryKey").insert(entry.key, {entry.row.page, 254}));
    EXPECT_EQ(serious(check()), 1);
}

TEST_P(OwnFile, pageInUseThatIsCalledFreeIsFound)
{
    file_->freePages().add(tree("Name").root());
    EXPECT_EQ(serious(check()), 1);
}

TEST_P(OwnFile, pageThatNothingUsesIsANote)
{
    file_->allocate();
    const auto found = check();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(found[0].harmless);
    EXPECT_EQ(found[0].where, "lost pages");
}

TEST_P(OwnFile, dataPageOutsideTheMapIsFound)
{
    const PageNumber last = table_->pages().back();
    table_->owned().remove(last);
    table_->space().remove(last);
    table_->reload();
    EXPECT_GT(serious(check()), 0) << "index entries name records of no page";
}

TEST(Check, ofOneTableLooksAtThatTable)
{
    if (corpusNames().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    EXPECT_EQ(serious(findings("own-jet4-alltypes.mdb", "MSysObjects")), 0);
    EXPECT_EQ(findings("own-jet4-alltypes.mdb", "No such table").at(0).where, "file");
}

}  // namespace
}  // namespace velnor::jet
