// Damaged tables are put right as far as they can be read; the damaged files stay beside them.
#include "access/formats/xbase/xbase_store.h"
#include "tests/access/xbase/index_testing.h"

namespace {

using namespace velnor;
using namespace velnor::xbase_testing;

using Rows = std::vector<std::string>;

const xbase::XbaseDriver kDriver;

xbase::XbaseStore& own(Store& store)
{
    return dynamic_cast<xbase::XbaseStore&>(store);
}

class TableRepair : public ::testing::Test {
protected:
    void make(const char* word)
    {
        const auto store = openStore(files, word);
        store->createTable(peopleLayout());
        for (const IndexDef& def : severalIndexes())
            store->addIndex("T", def);
        for (int i = 0; i < 50; ++i)
            insertPerson(*store, "P" + std::to_string(i), i, i);
        const FieldChange note{4, text("a memo")};
        for (const RowId row : {3, 4})
            store->writer("T")->update(row, std::span(&note, 1));
        store->writer("T")->remove(9);
        store->commit();
    }

    /// What repairing reports; losses begin with "!".
    Rows repair()
    {
        OpenRequest request;
        request.name = "C:\\T.DBF";
        Rows said;
        kDriver.repair(files, request, [&](const Problem& problem) {
            said.push_back((problem.harmless ? "" : "! ") + problem.where + ": " + problem.text);
        });
        return said;
    }

    void overwrite(const char* path, std::uint64_t at, std::string_view bytes)
    {
        files.open(path, OpenMode::ReadWrite)
            ->writeAt(at, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    }

    void expectRebuilt(const char* word, const char* aside)
    {
        make(word);
        const Rows rows = rowsOf(*openStore(files, word, true), "T");
        patch(files, "C:\\T.DBF", "P17 ", "X17 ");  // no index hears of it
        EXPECT_EQ(repair(), Rows{"C:\\T.DBF: It is written anew; the damaged files are kept as "
                                 "C:\\T-damaged.DBF."});
        const auto store = openStore(files, word);
        EXPECT_EQ(faultsOf(*store, "T"), Rows{});
        EXPECT_EQ(namesBy(*store, "BYNAME").back(), "X17");
        EXPECT_EQ(rowsOf(*store, "T").size(), rows.size());
        EXPECT_EQ(store->layout("T").indexes.size(), 6u);
        EXPECT_FALSE(store->cursor("T", std::nullopt)->moveTo(9));  // still deleted, in its place
        EXPECT_TRUE(store->cursor("T", std::nullopt)->moveTo(50));
        insertPerson(*store, "after", 1, 1);
        store->commit();
        EXPECT_TRUE(files.fileExists(aside));
    }

    MemoryFileSystem files;
};

TEST_F(TableRepair, aSoundTableIsLeftAlone)
{
    make("FoxPro 2.6;");
    const auto before = files.content("C:\\T.DBF");
    EXPECT_EQ(repair(), Rows{"C:\\T.DBF: There is no damage; the files are as they were."});
    EXPECT_EQ(files.content("C:\\T.DBF"), before);
    EXPECT_EQ(files.list("C:\\").size(), 3u);
}

TEST_F(TableRepair, aStaleCdxIsBuiltAnew)
{
    expectRebuilt("FoxPro 2.6;", "C:\\T-damaged.CDX");
}

TEST_F(TableRepair, aStaleMdxIsBuiltAnew)
{
    expectRebuilt("dBASE 5.0;", "C:\\T-damaged.MDX");
}

TEST_F(TableRepair, whatIsLostIsSaid)
{
    make("FoxPro 2.6;");
    overwrite("C:\\T.CDX", 0, std::string(1024, '\xEE'));  // no index can be found in it
    const auto memo = files.content("C:\\T.FPT");
    files.open("C:\\T.FPT", OpenMode::ReadWrite)->resize(memo.size() - 64);
    const Rows said = repair();
    ASSERT_EQ(said.size(), 3u);
    EXPECT_EQ(said[0], "! T.DBF: 1 memos are not in the memo file; they are Null now.");
    EXPECT_TRUE(said[1].starts_with("! T.CDX: ")) << said[1];
    const auto store = openStore(files, "FoxPro 2.6;");
    EXPECT_EQ(faultsOf(*store, "T"), Rows{});
    EXPECT_EQ(store->layout("T").indexes.size(), 0u);
    EXPECT_FALSE(files.fileExists("C:\\T.CDX"));
    EXPECT_TRUE(files.fileExists("C:\\T-damaged.CDX"));
    {
        const auto cursor = store->cursor("T", std::nullopt);
        ASSERT_TRUE(cursor->moveTo(3));
        EXPECT_EQ(shown(cursor->field(4)), "'a memo'");
    }
    insertPerson(*store, "after", 1, 1);
}

TEST_F(TableRepair, aWrongCountAndAMissingMemoFileAreMended)
{
    make("dBASE 5.0;");
    overwrite("C:\\T.DBF", 4, std::string_view("\x64\0\0\0", 4));
    files.remove("C:\\T.DBT");
    const Rows said = repair();
    const auto store = openStore(files, "dBASE 5.0;");
    EXPECT_EQ(faultsOf(*store, "T"), Rows{});
    EXPECT_EQ(store->recordCount("T"), 49);
    EXPECT_EQ(said[0], "! T.DBF: 2 memos are not in the memo file; they are Null now.");
    const FieldChange note{4, text("a new memo")};
    store->writer("T")->update(3, std::span(&note, 1));
    store->commit();
}

TEST_F(TableRepair, equalKeysAreReported_andTheIndexStays)
{
    const auto word = "FoxPro 2.6;";
    make(word);
    IndexDef once = indexDef("ONCE", {"NAME"});
    once.expression = "NAME+CITY";
    once.unique = true;
    openStore(files, word)->addIndex("T", once);
    patch(files, "C:\\T.DBF", "P21 ", "P25 ");  // both in the same town
    const Rows said = repair();
    EXPECT_NE(
        std::find(said.begin(), said.end(),
                  "! T.CDX, index ONCE: 1 records have the key of another; they are not in it."),
        said.end());
    EXPECT_EQ(openStore(files, word)->layout("T").indexes.size(), 7u);
}

/// Damage at random: changing fields, packing and repairing end with an error or a table whose
/// check finds no more than the repair has said.
TEST_F(TableRepair, randomDamageIsMendedOrRefused)
{
    std::mt19937 random(7);
    int repaired = 0, refused = 0;
    for (const char* word : {"FoxPro 2.6;", "dBASE 5.0;"}) {
        make(word);
        std::map<std::string, std::vector<std::uint8_t>> sound;
        for (const FileInfo& info : files.list("C:\\"))
            sound["C:\\" + info.name] = files.content("C:\\" + info.name);
        for (int round = 0; round < 150; ++round) {
            for (const FileInfo& info : files.list("C:\\"))
                files.remove("C:\\" + info.name);
            for (const auto& [path, content] : sound) {
                std::vector<std::uint8_t> bytes = content;
                for (unsigned flips = random() % 6; flips-- > 0;)
                    bytes[random() % (random() % 2 ? 100 : bytes.size())] ^=
                        static_cast<std::uint8_t>(1u << random() % 8);
                if (random() % 10 == 0)
                    bytes.resize(random() % bytes.size());
                files.put(path, bytes);
            }
            errorOf([&] { openStore(files, word)->addField("T", fieldDef("X", FieldType::Date)); });
            errorOf([&] { own(*openStore(files, word)).pack("T"); });
            Rows said;
            const int error = errorOf([&] { said = repair(); });
            (error ? refused : repaired) += 1;
            if (error)
                continue;
            const auto store = openStore(files, "FoxPro 3.0;");
            const auto still = static_cast<std::size_t>(
                std::count_if(said.begin(), said.end(), [](const std::string& text) {
                    return text.find("It is still so") != text.npos;
                }));
            EXPECT_LE(faultsOf(*store, "T").size(), still) << word << " " << round;
        }
        for (const FileInfo& info : files.list("C:\\"))
            files.remove("C:\\" + info.name);
    }
    EXPECT_GT(repaired, 50);
    EXPECT_GT(refused, 5);
}

TEST_F(TableRepair, aSecondRepairTakesAnotherName)
{
    make("dBASE 5.0;");
    patch(files, "C:\\T.DBF", "P17 ", "X17 ");
    repair();
    patch(files, "C:\\T.DBF", "P18 ", "X18 ");
    EXPECT_EQ(repair().back(), "C:\\T.DBF: It is written anew; the damaged files are kept as "
                               "C:\\T-damaged-2.DBF.");
}

}  // namespace
