#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <random>

#include "tests/access/storage/storage_testing.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

constexpr const char* kPath = "C:\\ORDERS.DBF";

struct PageFileTest : ::testing::Test {
    MemoryFileSystem files;

    void put(std::string_view content) { files.put(kPath, bytesOf(content)); }
    std::string onDisk() const { return contentOf(files, kPath); }
};

TEST_F(PageFileTest, aShortLastPageIsFilledUpWithZeros)
{
    put("abcdefghij");
    FileSet set(files, kPath, pagesOf(8), false);
    EXPECT_EQ(set.main().pageCount(), 2u);
    const PageRef page = set.main().read(1);
    EXPECT_EQ(std::memcmp(page.data(), "ij\0\0\0\0\0\0", 8), 0);
    EXPECT_EQ(page.number(), 1u);
}

TEST_F(PageFileTest, aPagePastTheEndIsDamage)
{
    put("abcdefgh");
    FileSet set(files, kPath, pagesOf(8), false);
    EXPECT_EQ(engineNumberOf([&] { set.main().read(1); }), 3197);
    EXPECT_EQ(engineNumberOf([&] { set.main().read(0xFFFFFFFFu); }), 3197);
}

TEST_F(PageFileTest, changesStayInMemoryUntilCommit)
{
    put("abcdefghij");
    FileSet set(files, kPath, pagesOf(8), false);
    std::memcpy(set.main().read(0).edit(), "XY", 2);
    write(set.main(), 8, "IJKL");
    EXPECT_EQ(onDisk(), "abcdefghij");
    EXPECT_EQ(read(set.main(), 0, 99), "XYcdefghIJKL");
    EXPECT_EQ(set.pendingBytes(), 16u);
    set.commit();
    EXPECT_EQ(onDisk(), "XYcdefghIJKL");
    EXPECT_EQ(set.pendingBytes(), 0u);
}

TEST_F(PageFileTest, peekingSeesChangesAndTheDisk)
{
    put("abcdefghijklmnop");
    FileSet set(files, kPath, pagesOf(4), false);
    write(set.main(), 5, "XY");
    std::string out(8, '?');
    const auto peek = [&](std::uint64_t at, std::size_t length) {
        out.assign(length, '?');
        out.resize(set.main().peekAt(at, {reinterpret_cast<std::uint8_t*>(out.data()), length}));
        return out;
    };
    EXPECT_EQ(peek(2, 8), "cdeXYhij");
    EXPECT_EQ(peek(9, 2), "jk");
    EXPECT_EQ(peek(14, 9), "op");
    EXPECT_EQ(peek(16, 1), "");
    set.main().resize(9);
    EXPECT_EQ(peek(6, 9), "Yhi");
    set.rollback();
    EXPECT_EQ(peek(4, 8), "efghijkl");
}

TEST_F(PageFileTest, aWriteBehindTheEndLeavesZerosBetween)
{
    put("ab");
    FileSet set(files, kPath, pagesOf(4), false);
    write(set.main(), 9, "z");
    EXPECT_EQ(read(set.main(), 0, 99), std::string("ab\0\0\0\0\0\0\0z", 10));
    set.commit();
    EXPECT_EQ(onDisk(), std::string("ab\0\0\0\0\0\0\0z", 10));
}

TEST_F(PageFileTest, appendStartsAtAPageBorder)
{
    put("abcde");
    FileSet set(files, kPath, pagesOf(4), false);
    PageRef page = set.main().append();
    EXPECT_EQ(page.number(), 2u);
    page.edit()[0] = 'N';
    page.release();
    set.commit();
    EXPECT_EQ(onDisk(), std::string("abcde\0\0\0N\0\0\0", 12));
}

TEST_F(PageFileTest, bytesThatWereCutOffComeBackAsZeros)
{
    put("abcdefghijklmnop");
    FileSet set(files, kPath, pagesOf(4), false);
    const PageRef kept = set.main().read(1);
    set.main().resize(6);
    set.main().resize(14);
    const std::string expected("abcdef\0\0\0\0\0\0\0\0", 14);
    EXPECT_EQ(read(set.main(), 0, 99), expected);
    EXPECT_EQ(std::memcmp(kept.data(), "ef\0\0", 4), 0);
    set.commit();
    EXPECT_EQ(onDisk(), expected);
}

TEST_F(PageFileTest, rollbackBringsBackWhatWasCutOff)
{
    put("abcdefghijklmnop");
    FileSet set(files, kPath, pagesOf(4), false);
    read(set.main(), 0, 16);
    set.main().resize(6);
    write(set.main(), 20, "tail");
    set.rollback();
    EXPECT_EQ(read(set.main(), 0, 99), "abcdefghijklmnop");
    EXPECT_EQ(set.pendingBytes(), 0u);
    set.commit();
    EXPECT_EQ(onDisk(), "abcdefghijklmnop");
}

TEST_F(PageFileTest, aPageHeldOverARollbackShowsTheOldContent)
{
    put("abcdefgh");
    FileSet set(files, kPath, pagesOf(4), false);
    PageRef held = set.main().read(1);
    PageRef added = set.main().append();
    held.edit()[0] = 'X';
    set.rollback();
    EXPECT_EQ(held.data()[0], 'e');
    EXPECT_EQ(engineNumberOf([&] { added.edit(); }), 3197);
}

TEST_F(PageFileTest, aPageOutlivesItsSet)
{
    put("abcdefgh");
    PageRef held;
    {
        FileSet set(files, kPath, pagesOf(4), true);
        held = set.main().read(1);
    }
    EXPECT_EQ(held.data()[0], 'e');
}

TEST_F(PageFileTest, heldPagesStayWhileTheCacheTurnsOver)
{
    std::string content;
    for (int i = 0; i < 200; ++i)
        content += static_cast<char>(i);
    put(content);
    FileSet set(files, kPath, pagesOf(1), true);
    std::vector<PageRef> held;
    for (std::uint32_t i = 0; i < 100; ++i)
        held.push_back(set.main().read(i));
    for (std::uint32_t i = 0; i < 200; ++i)
        EXPECT_EQ(set.main().read(i).data()[0], i);
    for (std::uint32_t i = 0; i < 100; ++i)
        EXPECT_EQ(held[i].data()[0], i);
}

TEST_F(PageFileTest, aLargeReadSeesTheChangedPages)
{
    const std::string content(100000, '.');
    put(content);
    FileSet set(files, kPath, pagesOf(512), false);
    std::string expected = content;
    for (const std::uint64_t at : {0u, 511u, 50000u, 99990u}) {
        write(set.main(), at, "change");
        expected.replace(at, 6, "change");
    }
    write(set.main(), 100000, "more");
    EXPECT_EQ(read(set.main(), 0, 200000), expected + "more");
    EXPECT_EQ(read(set.main(), 505, 60000), expected.substr(505, 60000));
}

TEST_F(PageFileTest, aReadOnlySetRefusesChanges)
{
    put("abcd");
    FileSet set(files, kPath, pagesOf(4), true);
    EXPECT_TRUE(set.readOnly());
    EXPECT_EQ(engineNumberOf([&] { write(set.main(), 0, "x"); }), 3027);
    EXPECT_EQ(engineNumberOf([&] { set.main().append(); }), 3027);
    EXPECT_EQ(engineNumberOf([&] { set.main().resize(0); }), 3027);
    EXPECT_EQ(engineNumberOf([&] { set.main().read(0).edit(); }), 3027);
    EXPECT_EQ(read(set.main(), 0, 9), "abcd");
}

TEST_F(PageFileTest, generationGrowsWithEveryChange)
{
    put("abcd");
    FileSet set(files, kPath, pagesOf(4), false);
    const std::uint64_t before = set.generation();
    set.main().read(0);
    EXPECT_EQ(set.generation(), before);
    set.main().read(0).edit();
    EXPECT_EQ(set.generation(), before + 1);
    write(set.main(), 0, "x");
    set.main().append();
    set.main().resize(1);
    EXPECT_EQ(set.generation(), before + 4);
    set.rollback();
    EXPECT_EQ(set.generation(), before + 5);
}

/// Turns letters over, differently on each page.
struct XorCodec : PageCodec {
    void decode(std::uint32_t page, std::span<std::uint8_t> bytes) const override
    {
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(byte ^ (0x55 + page));
    }
    void encode(std::uint32_t page, std::span<std::uint8_t> bytes) const override
    {
        decode(page, bytes);
    }
};

TEST_F(PageFileTest, aCodecStandsBetweenPagesAndDisk)
{
    put("");
    const XorCodec codec;
    PageFileOptions options = pagesOf(4);
    options.codec = &codec;
    {
        FileSet set(files, kPath, options, false);
        write(set.main(), 0, "abcdefgh");
        set.main().resize(16);  // these pages are encoded, too
        set.commit();
    }
    EXPECT_NE(onDisk().substr(0, 8), "abcdefgh");
    FileSet set(files, kPath, options, true);
    EXPECT_EQ(read(set.main(), 0, 99), std::string("abcdefgh\0\0\0\0\0\0\0\0", 16));
}

TEST_F(PageFileTest, aCodecMayComeAfterTheFirstPage)
{
    std::string content("HEADabcd");
    const XorCodec codec;
    for (std::size_t i = 4; i < 8; ++i)
        content[i] = static_cast<char>(content[i] ^ 0x56);
    put(content);
    FileSet set(files, kPath, pagesOf(4), false);
    EXPECT_EQ(std::memcmp(set.main().read(0).data(), "HEAD", 4), 0);
    set.main().setCodec(&codec);
    EXPECT_EQ(std::memcmp(set.main().read(1).data(), "abcd", 4), 0);
}

TEST_F(PageFileTest, aSavepointBringsBackPagesAndLength)
{
    put("abcdefghijklmnop");
    FileSet set(files, kPath, pagesOf(4), false);
    write(set.main(), 1, "B");
    const PageRef held = set.main().read(0);
    FileSet::Savepoint savepoint(set);
    write(set.main(), 2, "CDEFGHIJ");  // a whole page in it that nobody had read
    set.main().append().edit()[0] = 'q';
    set.main().resize(5);
    write(set.main(), 9, "z");
    const std::uint64_t generation = set.generation();
    EXPECT_TRUE(savepoint.goBack());
    EXPECT_GT(set.generation(), generation);
    EXPECT_EQ(read(set.main(), 0, 99), "aBcdefghijklmnop");
    EXPECT_EQ(std::memcmp(held.data(), "aBcd", 4), 0);
    EXPECT_FALSE(savepoint.goBack());
    set.commit();
    EXPECT_EQ(onDisk(), "aBcdefghijklmnop");
}

TEST_F(PageFileTest, aSavepointBringsBackWhatWasWrittenEarlySince)
{
    put("abcdefghijklmnop");
    FileSet set(files, kPath, pagesOf(4), false);
    FileSet::Savepoint savepoint(set);
    write(set.main(), 2, "CDEF");
    write(set.main(), 16, "qrst");
    set.spill();
    write(set.main(), 3, "x");
    EXPECT_TRUE(savepoint.goBack());
    EXPECT_EQ(read(set.main(), 0, 99), "abcdefghijklmnop");
    set.commit();
    EXPECT_EQ(onDisk(), "abcdefghijklmnop");
}

TEST_F(PageFileTest, aSavepointWithinAnotherLeavesItToThatOne)
{
    put("abcd");
    FileSet set(files, kPath, pagesOf(4), false);
    {
        FileSet::Savepoint outer(set);
        write(set.main(), 0, "A");
        {
            FileSet::Savepoint inner(set);
            write(set.main(), 1, "B");
            EXPECT_FALSE(inner.goBack());
        }
        write(set.main(), 2, "C");
        EXPECT_EQ(read(set.main(), 0, 99), "ABCd");
        EXPECT_TRUE(outer.goBack());
    }
    EXPECT_EQ(read(set.main(), 0, 99), "abcd");
    FileSet::Savepoint next(set);
    write(set.main(), 0, "X");
    EXPECT_TRUE(next.goBack());
}

TEST_F(PageFileTest, afterACommitOrARollbackASavepointHasNothingToGoBackTo)
{
    put("abcd");
    FileSet set(files, kPath, pagesOf(4), false);
    {
        FileSet::Savepoint savepoint(set);
        write(set.main(), 0, "A");
        set.commit();
        EXPECT_FALSE(savepoint.goBack());
    }
    FileSet::Savepoint savepoint(set);
    write(set.main(), 1, "B");
    set.rollback();
    EXPECT_FALSE(savepoint.goBack());
    EXPECT_EQ(read(set.main(), 0, 99), "Abcd");
}

/// Against a plain copy of the content, with a cache of eight pages.
TEST_F(PageFileTest, randomWorkEqualsWorkOnAPlainText)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        const auto upTo = [&](std::size_t n) { return random() % (n + 1); };
        put(std::string(upTo(300), 'o'));
        std::string model = onDisk();
        std::string committed = model;
        FileSet set(files, kPath, pagesOf(seed % 3 ? 16 : 7), false);
        PageFile& file = set.main();
        std::optional<FileSet::Savepoint> savepoint;
        std::string before;
        for (int step = 0; step < 300; ++step) {
            const char letter = static_cast<char>('a' + step % 26);
            switch (random() % 9) {
            case 0: {
                const std::size_t size = upTo(400);
                file.resize(size);
                model.resize(size, '\0');
                break;
            }
            case 1:
            case 2:
            case 3: {
                const std::size_t at = upTo(model.size() + 20);
                const std::string text(1 + upTo(60), letter);
                write(file, at, text);
                if (model.size() < at + text.size())
                    model.resize(at + text.size(), '\0');
                model.replace(at, text.size(), text);
                break;
            }
            case 4: {
                file.append().edit()[0] = static_cast<std::uint8_t>(letter);
                const std::size_t at = (model.size() + file.pageSize() - 1) / file.pageSize();
                model.resize((at + 1) * file.pageSize(), '\0');
                model[at * file.pageSize()] = letter;
                break;
            }
            case 5:
                if (file.pageCount() > 0) {
                    const auto page = static_cast<std::uint32_t>(upTo(file.pageCount() - 1));
                    file.read(page).edit()[0] = static_cast<std::uint8_t>(letter);
                    model[std::size_t{page} * file.pageSize()] = letter;
                }
                break;
            case 6:
                ASSERT_EQ(read(file, 0, 2000), model) << seed << " " << step;
                break;
            case 7:
                if (!savepoint) {
                    savepoint.emplace(set);
                    before = model;
                    break;
                }
                if (random() % 3) {
                    savepoint->goBack();
                    model = before;
                }
                savepoint.reset();
                break;
            default:
                if (random() % 3 == 0) {
                    set.spill();
                    break;
                }
                savepoint.reset();
                if (random() % 4 == 0) {
                    set.rollback();
                    model = committed;
                } else if (random() % 3 == 0) {
                    set.commit();
                    committed = model;
                    ASSERT_EQ(onDisk(), model) << seed << " " << step;
                }
            }
            ASSERT_EQ(file.size(), model.size());
        }
        ASSERT_EQ(read(file, 0, 2000), model);
    }
}

}  // namespace
