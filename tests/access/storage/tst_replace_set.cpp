#include <gtest/gtest.h>

#include "access/storage/page_file.h"
#include "access/storage/replace_set.h"
#include "tests/access/storage/storage_testing.h"
#include "tests/support/faulty_disk.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

constexpr const char* kTable = "C:\\T.DBF";
constexpr const char* kMemo = "C:\\T.DBT";
constexpr const char* kIndex = "C:\\BYNAME.NDX";

const Bytes kOldTable(3000, 'o'), kOldMemo(700, 'm'), kOldIndex(900, 'i');
const Bytes kNewTable(5000, 'N'), kNewIndex(100, 'I');

void putOld(FaultyDisk& disk)
{
    disk.put(kTable, kOldTable);
    disk.put(kMemo, kOldMemo);
    disk.put(kIndex, kOldIndex);
}

void writeSibling(FileSystem& files, const char* path, const Bytes& bytes)
{
    files.open(SetReplacement::siblingOf(path), OpenMode::Replace)->writeAt(0, bytes);
}

/// The table and its index are written anew, its memo file goes.
void replaceAll(FileSystem& files)
{
    FileSet held(files, kTable, pagesOf(128), false);
    SetReplacement replacement(files, kTable);
    replacement.replace(kTable);
    replacement.replace(kIndex);
    replacement.remove(kMemo);
    writeSibling(files, kTable, kNewTable);
    writeSibling(files, kIndex, kNewIndex);
    replacement.commit();
}

bool isOld(FaultyDisk& disk)
{
    return disk.content(kTable) == kOldTable && disk.fileExists(kMemo) &&
           disk.content(kMemo) == kOldMemo && disk.content(kIndex) == kOldIndex;
}

bool isNew(FaultyDisk& disk)
{
    return disk.content(kTable) == kNewTable && !disk.exists(kMemo) &&
           disk.content(kIndex) == kNewIndex;
}

void openAgain(FileSystem& files)
{
    FileSet set(files, kTable, pagesOf(128), true);
}

TEST(SetReplacementTest, allFilesComeTogether)
{
    FaultyDisk disk;
    putOld(disk);
    replaceAll(disk);
    EXPECT_TRUE(isNew(disk));
    EXPECT_EQ(disk.snapshot().size(), 2u);  // no sibling, no journal
}

TEST(SetReplacementTest, withoutACommitTheSiblingsGo)
{
    FaultyDisk disk;
    putOld(disk);
    disk.put("C:\\BYNAME.NDX-new-undo", kOldMemo);  // of a crash before
    {
        SetReplacement replacement(disk, kTable);
        replacement.replace(kTable);
        replacement.replace(kIndex);
        writeSibling(disk, kTable, kNewTable);
        writeSibling(disk, kIndex, kNewIndex);
    }
    EXPECT_TRUE(isOld(disk));
    EXPECT_EQ(disk.snapshot().size(), 3u);
}

TEST(SetReplacementTest, afterAnyPowerCutTheOpenedFilesAreAllOldOrAllNew)
{
    int old = 0, fresh = 0;
    for (unsigned seed = 1; seed <= 1500; ++seed) {
        FaultyDisk disk(seed);
        putOld(disk);
        disk.cutAt(1 + seed % 20);
        bool promised = true;
        try {
            replaceAll(disk);
        } catch (const std::exception&) {
            promised = false;
        }
        disk.restart();
        if (seed % 3 == 0) {  // and again while it is finished
            disk.cutAt(1 + seed % 5);
            try {
                openAgain(disk);
            } catch (const std::exception&) {
            }
            disk.restart();
        }
        openAgain(disk);
        ASSERT_TRUE(isNew(disk) || (isOld(disk) && !promised)) << seed;
        (isNew(disk) ? fresh : old) += 1;
        replaceAll(disk);  // whatever was left over is in nobody's way
        ASSERT_TRUE(isNew(disk)) << seed;
    }
    EXPECT_GT(old, 300);
    EXPECT_GT(fresh, 300);
}

TEST(SetReplacementTest, aFailureLeavesTheOldFiles_orWhatTheNextOpeningFinishes)
{
    int failures = 0;
    for (long n = 1;; ++n) {
        FaultyDisk disk(static_cast<unsigned>(n));
        putOld(disk);
        disk.failAt(n, RunErrorNumber::DeviceIo);
        try {
            replaceAll(disk);
        } catch (const EngineError&) {
        } catch (const RunError&) {
        }
        if (!disk.hasFailed())
            break;
        ++failures;
        openAgain(disk);
        ASSERT_TRUE(isOld(disk) || isNew(disk)) << n;
    }
    EXPECT_GT(failures, 8);
}

TEST(SetReplacementTest, theJournalOfALivingOwnerIsLeftToHim)
{
    FaultyDisk disk;
    putOld(disk);
    JournalHead head;
    head.kind = JournalHead::Kind::Replace;
    head.mark = newJournalMark();
    head.owner = JournalOwner::thisProcess();
    head.owner.process = 1;
    head.owner.startTime = JournalOwner::startTimeOf(1);
    head.files = {{kTable, 0, false}};
    disk.put("C:\\T.DBF-undo", journalHeadBytes(head, kTable));
    disk.put("C:\\T.DBF-new", kNewTable);
    try {
        openAgain(disk);
        FAIL() << "opened";
    } catch (const EngineError& error) {
        EXPECT_EQ(error.number(), 3045);
    }
    EXPECT_EQ(disk.content(kTable), kOldTable);
}

}  // namespace
