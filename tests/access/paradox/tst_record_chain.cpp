// The chain of blocks: splits, freed blocks, damage.
#include "access/formats/paradox/db_table.h"
#include "access/storage/byte_reader.h"
#include "tests/access/paradox/paradox_testing.h"

using namespace velnor;
using namespace velnor::paradox;
using namespace velnor::paradox_testing;

namespace {

/// A keyed table whose blocks hold twenty records.
class RecordChainTest : public ::testing::Test {
protected:
    RecordChainTest()
    {
        store = openStore(files);
        store->createTable(
            layoutOf({fieldDef("ID", FieldType::Long), fieldDef("A", FieldType::Text, 96)},
                     {primaryDef({"ID"})}));
        writer = store->writer("T");
    }
    void add(int id) { rows[id] = writer->insert(std::array{whole(id), text("x")}); }
    void remove(int id)
    {
        writer->remove(rows.at(id));
        rows.erase(id);
    }
    /// Records of each block in the order of the chain, as the file has them.
    std::vector<int> counts()
    {
        store->commit();
        const Bytes file = files.content("C:\\T.DB");
        std::vector<int> found;
        for (std::uint32_t n = loadLE<std::uint16_t>(&file[0x0E]); n;) {
            const std::uint8_t* block = &file[2048 + (n - 1) * 2048];
            found.push_back(loadLE<std::int16_t>(block + 4) / 100 + 1);
            n = loadLE<std::uint16_t>(block);
        }
        EXPECT_EQ(faultsOf(*store), Rows{});
        return found;
    }
    std::uint16_t headerWord(std::size_t at)
    {
        return loadLE<std::uint16_t>(&files.content("C:\\T.DB")[at]);
    }

    MemoryFileSystem files;
    std::unique_ptr<Store> store;
    std::unique_ptr<RowWriter> writer;
    std::map<int, RowId> rows;
};

}  // namespace

TEST_F(RecordChainTest, recordsInOrderFillTheirBlocks)
{
    for (int id = 1; id <= 45; ++id)
        add(id);
    EXPECT_EQ(counts(), (std::vector<int>{20, 20, 5}));
}

TEST_F(RecordChainTest, aFullBlockInTheMiddleIsSplitInHalves)
{
    for (int id = 2; id <= 80; id += 2)
        add(id);
    add(5);
    EXPECT_EQ(counts(), (std::vector<int>{11, 10, 20}));
    add(41);  // behind the last record of a block with room
    EXPECT_EQ(counts(), (std::vector<int>{11, 11, 20}));
}

TEST_F(RecordChainTest, anEmptyBlockIsFreedAndUsedAgain)
{
    for (int id = 1; id <= 60; ++id)
        add(id);
    for (int id = 21; id <= 40; ++id)
        remove(id);
    EXPECT_EQ(counts(), (std::vector<int>{20, 20}));
    EXPECT_EQ(headerWord(0x4D), 2);  // the head of the free ones
    EXPECT_EQ(headerWord(0x0C), 3);
    EXPECT_EQ(headerWord(0x0A), 2);
    add(61);
    EXPECT_EQ(counts(), (std::vector<int>{20, 20, 1}));
    EXPECT_EQ(headerWord(0x4D), 0);
    EXPECT_EQ(headerWord(0x0C), 3);
}

TEST_F(RecordChainTest, theFirstBlockTakesOverTheNextWhenItEmpties)
{
    for (int id = 1; id <= 45; ++id)
        add(id);
    for (int id = 1; id <= 20; ++id)
        remove(id);
    EXPECT_EQ(counts(), (std::vector<int>{20, 5}));
    EXPECT_EQ(headerWord(0x0E), 1);
    EXPECT_EQ(headerWord(0x4D), 2);
}

TEST_F(RecordChainTest, aTableThatEmptiesKeepsItsFirstBlock)
{
    for (int id = 1; id <= 45; ++id)
        add(id);
    for (int id = 45; id >= 1; --id)
        remove(id);
    EXPECT_EQ(counts(), (std::vector<int>{0}));
    EXPECT_EQ(headerWord(0x0A), 1);
    EXPECT_EQ(headerWord(0x0E), 1);
    EXPECT_EQ(headerWord(0x10), 1);
    const Bytes tree = files.content("C:\\T.PX");
    EXPECT_EQ(tree[0x20], 0);                          // no levels
    EXPECT_EQ(loadLE<std::uint16_t>(&tree[0x1E]), 1);  // the root stays block 1
    EXPECT_EQ(loadLE<std::uint32_t>(&tree[0x06]), 0u);
    add(7);
    EXPECT_EQ(counts(), (std::vector<int>{1}));
}

TEST_F(RecordChainTest, aHeaderThatLiesIsNotBelievedAndMended)
{
    for (int id = 1; id <= 45; ++id)
        add(id);
    writer.reset();
    store->commit();
    store.reset();
    Bytes file = files.content("C:\\T.DB");
    storeLE<std::uint32_t>(&file[0x06], 7);  // as a program leaves it that died
    storeLE<std::uint16_t>(&file[0x0A], 1);
    storeLE<std::uint16_t>(&file[0x0C], 1);
    storeLE<std::uint16_t>(&file[0x10], 1);
    files.put("C:\\T.DB", file);
    store = openStore(files);
    EXPECT_EQ(store->recordCount("T"), 45);
    EXPECT_EQ(rowsOf(*store).size(), 45u);
    writer = store->writer("T");
    add(46);
    EXPECT_EQ(counts(), (std::vector<int>{20, 20, 6}));
}

TEST_F(RecordChainTest, aBrokenChainIsReadUpToThereAndNotWritten)
{
    for (int id = 1; id <= 60; ++id)
        add(id);
    writer.reset();
    store->commit();
    store.reset();
    const Bytes whole = files.content("C:\\T.DB");
    for (const std::uint16_t next : {1, 2, 999}) {
        Bytes file = whole;
        storeLE(&file[2048 + 2048], next);  // block 2 leads back, to itself, or out of the file
        files.put("C:\\T.DB", file);
        const auto broken = openStore(files);
        EXPECT_EQ(rowsOf(*broken).size(), 40u);
        EXPECT_NE(faultsOf(*broken), Rows{});
        EXPECT_EQ(errorOf([&] { broken->writer("T"); }), 3197);
    }
    EXPECT_EQ(errorOf([&] {
                  Bytes file = whole;
                  storeLE<std::int16_t>(&file[2048 + 4], 77);  // not a multiple of the record size
                  files.put("C:\\T.DB", file);
                  openStore(files)->writer("T");
              }),
              3197);
}

TEST_F(RecordChainTest, aLastBlockCutShortReadsAsZeros)
{
    for (int id = 1; id <= 25; ++id)
        add(id);
    writer.reset();
    store->commit();
    store.reset();
    Bytes file = files.content("C:\\T.DB");
    file.resize(file.size() - 1024);
    files.put("C:\\T.DB", file);
    store = openStore(files);
    EXPECT_EQ(rowsOf(*store).size(), 25u);
    writer = store->writer("T");
    add(26);
    EXPECT_EQ(counts(), (std::vector<int>{20, 6}));
}
