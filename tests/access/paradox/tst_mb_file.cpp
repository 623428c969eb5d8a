// Long values: where they are put, what freeing them leaves, the table of free space.
#include <map>
#include <random>

#include "access/formats/paradox/mb_file.h"
#include "tests/access/paradox/paradox_testing.h"

using namespace velnor;
using namespace velnor::paradox;
using namespace velnor::paradox_testing;

namespace {

class MbFileTest : public ::testing::Test {
protected:
    MbFileTest()
    {
        files.put("C:\\T.MB", MbFile::newHeader());
        set = std::make_unique<FileSet>(files, "C:\\T.MB", mbFileOptions(), false);
        mb = std::make_unique<MbFile>(set->main());
    }
    LongPointer store(std::size_t length, char with = 'v')
    {
        const std::string value(length, with);
        return mb->store({reinterpret_cast<const std::uint8_t*>(value.data()), value.size()});
    }
    std::string read(const LongPointer& pointer)
    {
        std::string out, why;
        return mb->read(pointer, out, why) ? out : "(" + why + ")";
    }
    std::uint8_t byteAt(std::uint64_t at)
    {
        std::uint8_t byte = 0;
        set->main().readAt(at, {&byte, 1});
        return byte;
    }
    /// Kind, offset / 4096 and amount of an entry of the table of free space.
    std::vector<int> entry(std::size_t n)
    {
        std::uint8_t e[6];
        set->main().readAt(0x38 + n * 6, e);
        return {e[0], (e[1] | e[2] << 8 | e[3] << 16) / 16, e[4] | e[5] << 8};
    }

    MemoryFileSystem files;
    std::unique_ptr<FileSet> set;
    std::unique_ptr<MbFile> mb;
};

}  // namespace

TEST_F(MbFileTest, smallValuesShareABlockAndLargeOnesHaveTheirOwn)
{
    const LongPointer first = store(100, 'a'), second = store(33, 'b'), large = store(5000, 'c');
    EXPECT_EQ(first.offset, 4096u);
    EXPECT_EQ(first.slot, 63);  // slots are given out from the last one down
    EXPECT_EQ(second.offset, 4096u);
    EXPECT_EQ(second.slot, 62);
    EXPECT_EQ(large.offset, 8192u);
    EXPECT_EQ(large.slot, 0xFF);
    EXPECT_EQ(set->main().size(), 16384u);  // two units for 5009 bytes
    EXPECT_EQ(entry(0), (std::vector<int>{2, 1, 235 - 7 - 3}));
    EXPECT_EQ(read(first), std::string(100, 'a'));
    EXPECT_EQ(read(second), std::string(33, 'b'));
    EXPECT_EQ(read(large), std::string(5000, 'c'));
}

TEST_F(MbFileTest, theBorderBetweenSmallAndLargeIs2048)
{
    EXPECT_NE(store(2048).slot, 0xFF);
    EXPECT_EQ(store(2049).slot, 0xFF);
}

TEST_F(MbFileTest, freeingASmallValueClosesTheGap)
{
    const LongPointer a = store(100, 'a'), b = store(200, 'b'), c = store(50, 'c');
    mb->release(a);
    EXPECT_EQ(read(b), std::string(200, 'b'));
    EXPECT_EQ(read(c), std::string(50, 'c'));
    EXPECT_NE(read(a), std::string(100, 'a'));
    EXPECT_EQ(entry(0), (std::vector<int>{2, 1, 235 - 13 - 4}));
    mb->release(a);  // a second time frees nothing
    EXPECT_EQ(read(c), std::string(50, 'c'));
    mb->release(b);
    mb->release(c);
    EXPECT_EQ(byteAt(4096), 4);  // an empty block is free
    EXPECT_EQ(entry(0), (std::vector<int>{3, 1, 1}));
}

TEST_F(MbFileTest, freeBlocksBesideEachOtherBecomeOne)
{
    const LongPointer a = store(5000), b = store(3000), c = store(9000), d = store(3000, 'd');
    mb->release(a);
    mb->release(c);
    mb->release(b);
    EXPECT_EQ(entry(0)[0] == 3 ? entry(0) : entry(1), (std::vector<int>{3, 1, 2 + 1 + 3}));
    EXPECT_EQ(read(d), std::string(3000, 'd'));
    const std::uint64_t size = set->main().size();
    const LongPointer e = store(10000, 'e'), f = store(4000, 'f');
    EXPECT_EQ(set->main().size(), size);  // both fit into what was free
    EXPECT_EQ(e.offset, 4096u);
    EXPECT_EQ(read(e), std::string(10000, 'e'));
    EXPECT_EQ(read(f), std::string(4000, 'f'));
}

TEST_F(MbFileTest, aTableOfFreeSpaceThatLiesIsNotFollowed)
{
    const LongPointer kept = store(5000, 'k');
    const Bytes lie{3, 0x10, 0, 0, 2, 0, 2, 0x10, 0, 0, 200, 0};  // offset 4096 as free, twice
    set->main().writeAt(0x38, lie);
    mb->reload();
    const LongPointer large = store(5000, 'n'), small = store(10, 's');
    EXPECT_EQ(read(kept), std::string(5000, 'k'));
    EXPECT_EQ(read(large), std::string(5000, 'n'));
    EXPECT_EQ(read(small), std::string(10, 's'));
}

TEST_F(MbFileTest, pointersToNowhereAreTold)
{
    store(100);
    for (const LongPointer& bad :
         {LongPointer{0, 5, 40, 1}, LongPointer{4096, 63, 99, 1}, LongPointer{4096, 64, 100, 1},
          LongPointer{4096, 3, 100, 1}, LongPointer{0x7FFFFF00, 0xFF, 4000, 1},
          LongPointer{4096, 0xFF, 4000, 1}}) {
        std::string out, why;
        EXPECT_FALSE(mb->read(bad, out, why));
        EXPECT_FALSE(why.empty());
        mb->release(bad);
    }
    EXPECT_EQ(entry(0), (std::vector<int>{2, 1, 228}));
}

TEST_F(MbFileTest, randomWorkKeepsEveryValue)
{
    std::mt19937 random(5);
    std::map<int, std::pair<LongPointer, std::string>> kept;
    for (int step = 0; step < 6000; ++step) {
        if (kept.size() > 150 || (!kept.empty() && random() % 3 == 0)) {
            auto chosen =
                kept.lower_bound(static_cast<int>(random() % static_cast<unsigned>(step)));
            if (chosen == kept.end())
                chosen = kept.begin();
            ASSERT_EQ(read(chosen->second.first), chosen->second.second);
            mb->release(chosen->second.first);
            kept.erase(chosen);
            continue;
        }
        const std::size_t length = 1 + random() % (random() % 4 ? 2500 : 20000);
        const char with = static_cast<char>('a' + step % 26);
        kept[step] = {store(length, with), std::string(length, with)};
    }
    for (const auto& [step, value] : kept)
        ASSERT_EQ(read(value.first), value.second);
    EXPECT_LT(set->main().size(), 3u << 20);  // what is freed is used again
}
