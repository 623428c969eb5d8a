#include <gtest/gtest.h>

#include "access/storage/replace_file.h"
#include "tests/access/storage/storage_testing.h"
#include "tests/support/faulty_disk.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

constexpr const char* kPath = "C:\\BOOK.XLS";
constexpr const char* kSibling = "C:\\BOOK.XLS-new";

TEST(FileReplacementTest, theOldFileStandsUntilTheCommit)
{
    MemoryFileSystem files;
    files.put(kPath, bytesOf("old"));
    files.put(kSibling, bytesOf("left over from a crash"));
    FileReplacement replacement(files, kPath);
    EXPECT_EQ(replacement.siblingPath(), kSibling);
    replacement.file().writeAt(0, bytesOf("new content"));
    EXPECT_EQ(contentOf(files, kPath), "old");
    replacement.commit();
    EXPECT_EQ(contentOf(files, kPath), "new content");
    EXPECT_FALSE(files.exists(kSibling));
}

TEST(FileReplacementTest, withoutACommitTheSiblingGoes)
{
    MemoryFileSystem files;
    files.put(kPath, bytesOf("old"));
    {
        FileReplacement replacement(files, kPath);
        replacement.file().writeAt(0, bytesOf("new content"));
        EXPECT_TRUE(files.exists(kSibling));
    }
    EXPECT_FALSE(files.exists(kSibling));
    EXPECT_EQ(contentOf(files, kPath), "old");
}

TEST(FileReplacementTest, afterAnyPowerCutOneOfTheTwoFilesStands)
{
    const Bytes old(3000, 'o');
    const Bytes fresh(5000, 'n');
    int replaced = 0;
    for (unsigned seed = 1; seed <= 1000; ++seed) {
        FaultyDisk disk(seed);
        disk.put(kPath, old);
        disk.cutAt(1 + seed % 7);
        bool promised = false;
        try {
            FileReplacement replacement(disk, kPath);
            replacement.file().writeAt(0, std::span(fresh).first(2500));
            replacement.file().writeAt(2500, std::span(fresh).subspan(2500));
            replacement.commit();
            promised = true;
        } catch (const RunError&) {
            ASSERT_TRUE(disk.wasCut());
        }
        disk.restart();
        const Bytes found = disk.content(kPath);
        ASSERT_TRUE(found == fresh || (found == old && !promised)) << seed;
        replaced += found == fresh;
    }
    EXPECT_GT(replaced, 100);
    EXPECT_LT(replaced, 900);
}

TEST(FileReplacementTest, aFailureLeavesTheOldFileAndNoSibling)
{
    const Bytes old(3000, 'o');
    for (long n = 1; n <= 4; ++n) {
        FaultyDisk disk;
        disk.put(kPath, old);
        disk.failAt(n, RunErrorNumber::DeviceIo);
        try {
            FileReplacement replacement(disk, kPath);
            replacement.file().writeAt(0, bytesOf("new"));
            replacement.commit();
            ADD_FAILURE() << n;
        } catch (const RunError& error) {
            EXPECT_EQ(error.number(), 57);
        }
        EXPECT_EQ(disk.content(kPath), old);
        EXPECT_EQ(disk.snapshot().size(), 1u) << n;
    }
}

}  // namespace
