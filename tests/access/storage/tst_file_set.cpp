#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/access/storage/storage_testing.h"
#include "tests/access/storage/watched_files.h"

using namespace velnor;
using namespace velnor::testing;
using ::testing::ElementsAre;

namespace {

constexpr const char* kMain = "C:\\ORDERS.DBF";
constexpr const char* kMemo = "C:\\ORDERS.DBT";
constexpr const char* kIndex = "C:\\ORDERS.MDX";
constexpr const char* kJournal = "C:\\ORDERS.DBF-undo";

PageFileOptions ranked(int rank)
{
    PageFileOptions options = pagesOf(4);
    options.rank = rank;
    return options;
}

struct FileSetTest : ::testing::Test {
    MemoryFileSystem files;
    WatchedFiles watched{files};

    FileSetTest()
    {
        files.put(kMain, bytesOf("mainmainmain"));
        files.put(kMemo, bytesOf("memomemo"));
    }
    std::string onDisk(std::string_view path) const { return contentOf(files, path); }
};

TEST_F(FileSetTest, aCommitKeepsTheOldBytesThenWritesThenCutsTheJournal)
{
    FileSet set(watched, kMain, pagesOf(4), false);
    write(set.main(), 4, "MAIN");
    watched.log.clear();
    set.commit();
    ASSERT_EQ(watched.log.size(), 9u);
    EXPECT_EQ(watched.log[0], "ORDERS.DBF-undo make");
    EXPECT_TRUE(watched.log[1].starts_with("ORDERS.DBF-undo write 0+"));
    watched.log.erase(watched.log.begin(), watched.log.begin() + 2);
    EXPECT_THAT(watched.log,
                ElementsAre("ORDERS.DBF-undo sync", "sync folder", "ORDERS.DBF write 4+4",
                            "ORDERS.DBF sync", "ORDERS.DBF-undo resize 0", "ORDERS.DBF-undo sync",
                            "remove ORDERS.DBF-undo"));
}

TEST_F(FileSetTest, aCommitOfNothingTouchesNothing)
{
    FileSet set(watched, kMain, pagesOf(4), false);
    set.companion(kMemo, pagesOf(4));
    read(set.main(), 0, 12);
    watched.log.clear();
    set.commit();
    write(set.main(), 0, "x");
    set.rollback();
    set.commit();
    EXPECT_THAT(watched.log, ElementsAre());
}

TEST_F(FileSetTest, filesAreWrittenInTheOrderOfTheirRank)
{
    files.put(kIndex, bytesOf("indx"));
    FileSet set(watched, kMain, ranked(1), false);
    PageFile& index = set.companion(kIndex, ranked(2));
    PageFile& memo = set.companion(kMemo, ranked(0));
    write(set.main(), 0, "1");
    write(index, 0, "2");
    write(memo, 0, "3");
    set.commit();
    const auto at = [&](std::string_view line) {
        return std::find(watched.log.begin(), watched.log.end(), line) - watched.log.begin();
    };
    EXPECT_LT(at("ORDERS.DBT write 0+4"), at("ORDERS.DBF write 0+4"));
    EXPECT_LT(at("ORDERS.DBF write 0+4"), at("ORDERS.MDX write 0+4"));
    EXPECT_LT(at("ORDERS.MDX write 0+4"), static_cast<long>(watched.log.size()));
}

TEST_F(FileSetTest, neighbouringPagesAreOneWriteAndPageZeroComesLast)
{
    FileSet set(watched, kMain, pagesOf(4), false);
    write(set.main(), 0, "0123456789AB");
    write(set.main(), 20, "zz");
    set.commit();
    EXPECT_THAT(
        watched.of("DBF write"),
        ElementsAre("ORDERS.DBF write 4+8", "ORDERS.DBF write 20+2", "ORDERS.DBF write 0+4"));
}

TEST_F(FileSetTest, pagesAreWrittenInTheOrderOfTheirWriteRank)
{
    PageFileOptions options = pagesOf(4);
    options.writeRank = [](std::uint32_t, const std::uint8_t* bytes) { return bytes[0] - '0'; };
    FileSet set(watched, kMain, options, false);
    write(set.main(), 0, "0aaa2bbb1ccc1ddd");
    set.commit();
    EXPECT_THAT(watched.of("DBF write"), ElementsAre("ORDERS.DBF write 8+8", "ORDERS.DBF write 4+4",
                                                     "ORDERS.DBF write 0+4"));
}

TEST_F(FileSetTest, filesBecomeShorterAfterEverythingIsWritten)
{
    FileSet set(watched, kMain, ranked(0), false);
    PageFile& memo = set.companion(kMemo, ranked(1));
    set.main().resize(5);
    write(memo, 8, "more");
    watched.log.clear();
    set.commit();
    const auto cut = std::find(watched.log.begin(), watched.log.end(), "ORDERS.DBF resize 5");
    const auto written = std::find(watched.log.begin(), watched.log.end(), "ORDERS.DBT sync");
    EXPECT_LT(written, cut);
    EXPECT_EQ(onDisk(kMain), "mainm");
}

TEST_F(FileSetTest, aNewCompanionComesWithTheCommit)
{
    {
        FileSet set(files, kMain, pagesOf(4), false);
        write(set.companion(kIndex, pagesOf(4), true), 0, "index");
        EXPECT_FALSE(files.exists(kIndex));
        EXPECT_GT(set.pendingBytes(), 0u);
    }
    EXPECT_FALSE(files.exists(kIndex));  // dropped with the set

    FileSet set(files, kMain, pagesOf(4), false);
    set.companion(kIndex, pagesOf(4), true);
    set.commit();
    EXPECT_EQ(onDisk(kIndex), "");
    write(set.companion(kIndex, pagesOf(4)), 0, "index");
    set.commit();
    EXPECT_EQ(onDisk(kIndex), "index");
    EXPECT_FALSE(files.exists(kJournal));
}

TEST_F(FileSetTest, aRolledBackCompanionIsNotMadeUntilItIsWantedAgain)
{
    FileSet set(files, kMain, pagesOf(4), false);
    PageFile& index = set.companion(kIndex, pagesOf(4), true);
    write(index, 0, "index");
    set.rollback();
    EXPECT_EQ(index.size(), 0u);
    write(set.main(), 0, "M");
    set.commit();
    EXPECT_FALSE(files.exists(kIndex));
    EXPECT_EQ(engineNumberOf([&] { set.companion(kIndex, pagesOf(4)); }), 3024);
    EXPECT_EQ(&set.companion(kIndex, pagesOf(4), true), &index);
    set.commit();
    EXPECT_TRUE(files.exists(kIndex));
}

TEST_F(FileSetTest, aFileThatAnotherProgramMadeMeanwhileIsNotTouched)
{
    FileSet set(files, kMain, pagesOf(4), false);
    write(set.companion(kIndex, pagesOf(4), true), 0, "index");
    write(set.main(), 0, "M");
    files.put(kIndex, bytesOf("theirs"));
    EXPECT_EQ(engineNumberOf([&] { set.commit(); }), 3051);
    EXPECT_EQ(onDisk(kIndex), "theirs");
    EXPECT_EQ(onDisk(kMain), "mainmainmain");
    EXPECT_EQ(read(set.main(), 0, 4), "main");
}

TEST_F(FileSetTest, aCompanionIsOpenedOnce)
{
    FileSet set(files, kMain, pagesOf(4), false);
    PageFile& memo = set.companion(kMemo, pagesOf(4));
    EXPECT_EQ(&set.companion("c:\\orders.dbt", pagesOf(8)), &memo);
    EXPECT_EQ(memo.pageSize(), 4u);
    EXPECT_EQ(engineNumberOf([&] { set.companion("C:\\OTHER\\ORDERS.DBT", pagesOf(4)); }), 3001);
}

TEST_F(FileSetTest, whatCannotBeOpenedHasItsNumber)
{
    EXPECT_EQ(engineNumberOf([&] { FileSet(files, "C:\\NONE.DBF", pagesOf(4), false); }), 3024);
    EXPECT_EQ(engineNumberOf([&] { FileSet(files, "C:\\NO\\A.DBF", pagesOf(4), true); }), 3044);
    files.setReadOnly(kMain, true);
    EXPECT_EQ(engineNumberOf([&] { FileSet(files, kMain, pagesOf(4), false); }), 3051);
    FileSet set(files, kMain, pagesOf(4), true);
    EXPECT_EQ(read(set.main(), 0, 4), "main");
    EXPECT_EQ(engineNumberOf([&] { set.companion(kIndex, pagesOf(4), true); }), 3024);
    set.commit();
    EXPECT_FALSE(files.exists(kJournal));
}

TEST_F(FileSetTest, readersShareAndAWriterIsAlone)
{
    const auto open = [&](bool readOnly) {
        return engineNumberOf([&] { FileSet(files, kMain, pagesOf(4), readOnly); });
    };
    {
        const FileSet reader(files, kMain, pagesOf(4), true);
        EXPECT_EQ(open(true), 0);
        EXPECT_EQ(open(false), 3045);
    }
    {
        const FileSet writer(files, kMain, pagesOf(4), false);
        EXPECT_EQ(open(true), 3045);
        EXPECT_EQ(open(false), 3045);
    }
    EXPECT_EQ(open(false), 0);
}

TEST_F(FileSetTest, aFullDiskIsToldAndTheSetIsUsedOn)
{
    MemoryFileSystem small(5000);
    small.put(kMain, bytesOf("mainmainmain"));
    FileSet set(small, kMain, pagesOf(512), false);
    write(set.main(), 2, std::string(20000, 'x'));
    EXPECT_EQ(engineNumberOf([&] { set.commit(); }), 3026);
    EXPECT_EQ(contentOf(small, kMain), "mainmainmain");
    EXPECT_EQ(read(set.main(), 0, 99), "mainmainmain");
    write(set.main(), 0, "M");
    set.commit();
    EXPECT_EQ(contentOf(small, kMain), "Mainmainmain");
    EXPECT_FALSE(small.exists(kJournal));
}

TEST_F(FileSetTest, aFileThatBecameShorterBehindOurBackIsDamage)
{
    FileSet set(files, kMain, pagesOf(4), false);
    files.open(kMain, OpenMode::ReadWrite)->resize(2);
    EXPECT_EQ(engineNumberOf([&] { set.main().read(1); }), 3197);
}

TEST_F(FileSetTest, aThrowInWriteRankPutsEverythingBack)
{
    PageFileOptions options = pagesOf(4);
    options.rank = 9;
    options.writeRank = [](std::uint32_t, const std::uint8_t*) -> int {
        throw EngineError(EngineErrorNumber::Corrupt, "a page of no kind");
    };
    FileSet set(files, kMain, options, false);
    PageFile& memo = set.companion(kMemo, ranked(0));
    write(memo, 0, "XXXXXXXXXXXX");
    write(set.main(), 4, "Y");
    EXPECT_EQ(engineNumberOf([&] { set.commit(); }), 3197);
    EXPECT_EQ(onDisk(kMemo), "memomemo");
    EXPECT_EQ(read(memo, 0, 99), "memomemo");
    EXPECT_FALSE(files.exists(kJournal));
}

}  // namespace
