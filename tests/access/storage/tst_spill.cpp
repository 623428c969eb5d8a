// Pages that are written before their commit: they are undone like all others.
#include <gtest/gtest.h>

#include <random>

#include "access/storage/undo_journal.h"
#include "tests/access/storage/storage_testing.h"
#include "tests/support/faulty_disk.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

constexpr const char* kFile = "C:\\DATA\\SHOP.MDB";

Bytes content(PageFile& file)
{
    Bytes bytes(file.size());
    EXPECT_EQ(file.readAt(0, bytes), bytes.size());
    return bytes;
}

/// Random changes of one file, and its content as it must be.
class Work {
public:
    explicit Work(unsigned seed) : random_(seed) {}

    Bytes start()
    {
        Bytes bytes(number(3000));
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random_());
        return bytes;
    }
    void change(PageFile& file)
    {
        switch (number(8)) {
        case 0:
            file.append().edit()[3] = 'A';
            break;
        case 1:
            file.writeAt(file.size() + number(300), start());
            break;
        case 2:
            if (number(6) == 0)
                file.resize(number(static_cast<unsigned>(file.size()) + 1));
            break;
        case 3:
            if (file.size() > 20000)
                file.resize(number(3000));
            break;
        default:
            if (file.pageCount() > 0)
                file.read(number(file.pageCount())).edit()[0] ^= 0x5A;
        }
    }
    /// A transaction with pages written early, up to its commit.
    void transaction(FileSet& set, Bytes* next = nullptr)
    {
        const unsigned steps = 1 + number(12);
        for (unsigned i = 0; i < steps; ++i) {
            change(set.main());
            if (number(3) == 0)
                set.spill();
        }
        if (next)
            *next = content(set.main());
    }
    unsigned number(unsigned below) { return static_cast<unsigned>(random_() % below); }

private:
    std::mt19937 random_;
};

TEST(SpillTest, aPowerCutAtAnyMomentLeavesTheOldOrTheNewState)
{
    int olds = 0, news = 0;
    for (unsigned seed = 1; seed <= 600; ++seed) {
        Work work(seed);
        FaultyDisk disk(seed * 7919);
        disk.put(kFile, work.start());
        for (int round = 0; round < 10; ++round) {
            Bytes committed = disk.content(kFile), next = committed;
            disk.cutAt(1 + work.number(40));
            try {
                FileSet set(disk, kFile, pagesOf(128, 1024), false);
                for (;;) {
                    next = committed;
                    work.transaction(set, &next);
                    set.commit();
                    committed = next;
                }
            } catch (const std::exception& error) {
                ASSERT_TRUE(disk.wasCut()) << error.what();
            }
            disk.restart();
            if (work.number(2))
                disk.cutAt(1 + work.number(8));  // the recovery may be cut, too
            try {
                recoverFiles(disk, kFile);
            } catch (const std::exception& error) {
                ASSERT_TRUE(disk.wasCut()) << error.what();
            }
            disk.restart();
            recoverFiles(disk, kFile);
            const Bytes found = disk.content(kFile);
            ASSERT_TRUE(found == committed || found == next) << "seed " << seed;
            ++(found == committed ? olds : news);
        }
    }
    EXPECT_GT(olds, 1000);
    EXPECT_GT(news, 50);
}

/// Both files of a set, one behind the other.
struct Pair {
    Bytes main, index;
    bool operator==(const Pair&) const = default;
};

constexpr const char* kIndex = "C:\\DATA\\SHOP.CDX";

Pair pairOn(FaultyDisk& disk)
{
    return {disk.content(kFile), disk.content(kIndex)};
}

/// Changes of both files up to the commit, some of them written early.
Pair changeBoth(Work& work, FileSet& set, PageFile& index)
{
    for (unsigned i = 0, steps = 1 + work.number(12); i < steps; ++i) {
        work.change(work.number(2) ? set.main() : index);
        if (work.number(3) == 0)
            set.spill();
    }
    return {content(set.main()), content(index)};
}

TEST(SpillTest, theFilesOfASetAreOldOrNewTogetherAfterAPowerCut)
{
    int olds = 0, news = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        Work work(seed);
        FaultyDisk disk(seed * 7919);
        disk.put(kFile, work.start());
        disk.put(kIndex, work.start());
        for (int round = 0; round < 6; ++round) {
            Pair committed = pairOn(disk), next = committed;
            disk.cutAt(1 + work.number(50));
            try {
                FileSet set(disk, kFile, pagesOf(128, 1024), false);
                PageFile& index = set.companion(kIndex, pagesOf(128, 1024));
                for (;;) {
                    next = committed;
                    next = changeBoth(work, set, index);
                    if (work.number(4) == 0) {
                        set.rollback();
                        ASSERT_TRUE((Pair{content(set.main()), content(index)} == committed));
                        continue;
                    }
                    set.commit();
                    committed = next;
                }
            } catch (const std::exception& error) {
                ASSERT_TRUE(disk.wasCut()) << error.what();
            }
            disk.restart();
            recoverFiles(disk, kFile);
            const Pair found = pairOn(disk);
            ASSERT_TRUE(found == committed || found == next) << "seed " << seed;
            ++(found == committed ? olds : news);
        }
    }
    EXPECT_GT(olds, 300);
    EXPECT_GT(news, 15);
}

TEST(SpillTest, aNewFileOfTheSetComesWithTheCommitOrNotAtAll)
{
    int olds = 0, news = 0;
    for (unsigned seed = 1; seed <= 600; ++seed) {
        Work work(seed);
        FaultyDisk disk(seed * 7919);
        disk.put(kFile, work.start());
        const Bytes before = disk.content(kFile);
        Pair next;
        disk.cutAt(1 + work.number(60));
        try {
            FileSet set(disk, kFile, pagesOf(128, 1024), false);
            PageFile* index = &set.companion(kIndex, pagesOf(128, 1024), true);
            if (work.number(4) == 0) {
                changeBoth(work, set, *index);
                set.spill();
                set.rollback();
                ASSERT_FALSE(disk.fileExists(kIndex)) << "seed " << seed;
                ASSERT_EQ(disk.content(kFile), before) << "seed " << seed;
                index = &set.companion(kIndex, pagesOf(128, 1024), true);
            }
            next = changeBoth(work, set, *index);
            set.commit();
            ASSERT_TRUE(pairOn(disk) == next) << "seed " << seed;
        } catch (const std::exception& error) {
            ASSERT_TRUE(disk.wasCut()) << error.what();
        }
        disk.restart();
        recoverFiles(disk, kFile);
        const bool made = disk.fileExists(kIndex);
        ASSERT_TRUE(made ? pairOn(disk) == next : disk.content(kFile) == before) << "seed " << seed;
        ++(made ? news : olds);
    }
    EXPECT_GT(olds, 200);
    EXPECT_GT(news, 30);
}

TEST(SpillTest, aNewFileTakesNoMemoryEither)
{
    FaultyDisk disk;
    disk.put(kFile, Bytes(1000, 7));
    FileSet set(disk, kFile, pagesOf(128), false);
    PageFile& index = set.companion(kIndex, pagesOf(128), true);
    index.resize(100000);
    for (std::uint32_t page = 0; page < 700; ++page)
        index.read(page).edit()[0] = 1;
    EXPECT_GT(set.pendingBytes(), 80000u);
    set.spill();
    EXPECT_LE(set.pendingBytes(), 128u);
    set.commit();
    EXPECT_EQ(disk.content(kIndex).size(), 100000u);
}

TEST(SpillTest, aRollbackGivesTheOldStateBackInMemoryAndOnTheDisk)
{
    for (unsigned seed = 1; seed <= 300; ++seed) {
        Work work(seed);
        FaultyDisk disk(seed);
        const Bytes before = work.start();
        disk.put(kFile, before);
        FileSet set(disk, kFile, pagesOf(128, 1024), false);
        for (int round = 0; round < 4; ++round) {
            PageRef held = before.empty() ? PageRef() : set.main().read(0);
            work.transaction(set);
            set.rollback();
            ASSERT_EQ(content(set.main()), before) << "seed " << seed;
            ASSERT_EQ(disk.content(kFile), before) << "seed " << seed;
            ASSERT_FALSE(disk.fileExists(journalPath(kFile)));
            if (held) {
                ASSERT_EQ(held.data()[0], before[0]) << "seed " << seed;
            }
        }
        Bytes next;
        work.transaction(set, &next);
        set.commit();
        ASSERT_EQ(disk.content(kFile), next) << "seed " << seed;
        ASSERT_EQ(content(set.main()), next) << "seed " << seed;
    }
}

TEST(SpillTest, aFailingDiskLeavesTheOldStateAndASetThatGoesOn)
{
    int failures = 0;
    for (const RunErrorNumber error : {RunErrorNumber::DiskFull, RunErrorNumber::DeviceIo})
        for (unsigned seed = 1; seed <= 400; ++seed) {
            Work work(seed);
            FaultyDisk disk(seed);
            disk.put(kFile, work.start());
            FileSet set(disk, kFile, pagesOf(128, 1024), false);
            for (int round = 0; round < 5; ++round) {
                const Bytes before = disk.content(kFile);
                disk.failAt(1 + work.number(20), error);
                Bytes next;
                const int number = engineNumberOf([&] {
                    work.transaction(set, &next);
                    set.commit();
                });
                disk.clearFaults();
                failures += number != 0;
                ASSERT_EQ(disk.content(kFile), number ? before : next) << "seed " << seed;
                ASSERT_EQ(content(set.main()), number ? before : next) << "seed " << seed;
            }
        }
    EXPECT_GT(failures, 300);
}

TEST(SpillTest, whatIsNotCommittedGoesWithTheSet)
{
    FaultyDisk disk;
    const Bytes before(1000, 7);
    disk.put(kFile, before);
    {
        FileSet set(disk, kFile, pagesOf(128), false);
        write(set.main(), 10, "something");
        set.main().resize(5000);
        set.spill();
        EXPECT_NE(disk.content(kFile), before);
        EXPECT_TRUE(disk.fileExists(journalPath(kFile)));
    }
    EXPECT_EQ(disk.content(kFile), before);
    EXPECT_FALSE(disk.fileExists(journalPath(kFile)));
}

TEST(SpillTest, pagesWrittenEarlyTakeNoMemory)
{
    FaultyDisk disk;
    disk.put(kFile, Bytes(1000, 7));
    FileSet set(disk, kFile, pagesOf(128), false);
    set.main().resize(100000);
    for (std::uint32_t page = 0; page < 700; ++page)
        set.main().read(page).edit()[0] = 1;
    EXPECT_GT(set.pendingBytes(), 80000u);
    set.spill();
    EXPECT_LE(set.pendingBytes(), 128u);
    EXPECT_GT(set.pendingBytes(), 0u);  // there is something to commit
    set.commit();
    EXPECT_EQ(set.pendingBytes(), 0u);
}

/// One that gets its name when it is whole.
TEST(SpillTest, aFileThatIsNotUndoneIsWrittenWithoutJournalAndSync)
{
    FaultyDisk disk;
    disk.put(kFile, Bytes(1000, 7));
    PageFileOptions options = pagesOf(128);
    options.undone = false;
    FileSet set(disk, kFile, options, false);
    const long before = disk.changes();
    write(set.main(), 10, "something");
    set.spill();
    write(set.main(), 20, "more");
    set.commit();
    EXPECT_EQ(disk.changes(), before + 2);
    EXPECT_FALSE(disk.fileExists(journalPath(kFile)));
    const Bytes found = disk.content(kFile);
    EXPECT_EQ(std::string(found.begin() + 10, found.begin() + 24), "something\7more");
}

}  // namespace
