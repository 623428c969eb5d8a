// One list of cases for both file systems: on the disk and in memory.
#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "platform/memory_file_system.h"
#include "platform/paths.h"
#include "tests/support/sandbox.h"

using namespace velnor;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using velnor::testing::Sandbox;

namespace {

ByteSpan bytes(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

int errorOf(const std::function<void()>& step)
{
    try {
        step();
    } catch (const RunError& error) {
        return error.number();
    }
    return 0;
}

enum class Kind { Disk, Memory };

class FileSystems : public ::testing::TestWithParam<Kind> {
protected:
    FileSystem& files() { return GetParam() == Kind::Disk ? box_.files() : memory_; }

    void put(std::string_view path, std::string_view text)
    {
        const auto file = files().open(path, OpenMode::Replace);
        file->writeAt(0, bytes(text));
    }

    std::string get(std::string_view path)
    {
        return contentOf(*files().open(path, OpenMode::Read));
    }

    static std::string contentOf(File& file)
    {
        std::string text(file.size(), '\0');
        EXPECT_EQ(file.readAt(0, {reinterpret_cast<std::uint8_t*>(text.data()), text.size()}),
                  text.size());
        return text;
    }

    std::vector<std::string> names(std::string_view folder)
    {
        std::vector<std::string> all;
        for (const FileInfo& entry : files().list(folder))
            all.push_back(entry.name);
        return all;
    }

    Sandbox box_;
    MemoryFileSystem memory_;
};

}  // namespace

TEST_P(FileSystems, WhatIsWrittenIsReadBack)
{
    put("C:\\a.txt", "hello");
    EXPECT_EQ(get("C:\\a.txt"), "hello");
    EXPECT_EQ(get("c:\\\\A.TXT"), "hello");
    EXPECT_EQ(files().info("C:\\A.TXT")->size, 5u);
    EXPECT_EQ(files().info("C:\\A.TXT")->name, "a.txt");
}

TEST_P(FileSystems, ReadingBehindTheEndGivesWhatIsThere)
{
    put("C:\\a", "hello");
    const auto file = files().open("C:\\a", OpenMode::Read);
    std::array<std::uint8_t, 4> out{};
    EXPECT_EQ(file->readAt(3, out), 2u);
    EXPECT_EQ(file->readAt(5, out), 0u);
    EXPECT_EQ(file->readAt(std::uint64_t{1} << 40, out), 0u);
    EXPECT_EQ(file->readAt(~std::uint64_t{0}, out), 0u);
    EXPECT_EQ(file->readAt(0, std::span<std::uint8_t>()), 0u);
}

TEST_P(FileSystems, AHoleReadsAsZeros)
{
    const auto file = files().open("C:\\a", OpenMode::CreateNew);
    file->writeAt(3, bytes("x"));
    EXPECT_EQ(contentOf(*file), std::string("\0\0\0x", 4));
    file->resize(1);
    file->resize(4);
    EXPECT_EQ(contentOf(*file), std::string(4, '\0'));
}

TEST_P(FileSystems, ModesOfOpeningKeepTheirPromises)
{
    EXPECT_EQ(errorOf([&] { files().open("C:\\a", OpenMode::Read); }), 53);
    EXPECT_EQ(errorOf([&] { files().open("C:\\a", OpenMode::ReadWrite); }), 53);
    EXPECT_EQ(errorOf([&] { files().open("C:\\no\\a", OpenMode::Read); }), 76);
    EXPECT_EQ(errorOf([&] { files().open("C:\\no\\a", OpenMode::CreateNew); }), 76);
    EXPECT_EQ(errorOf([&] { files().open("Q:\\a", OpenMode::Read); }), 68);
    put("C:\\a", "old");
    EXPECT_EQ(errorOf([&] { files().open("C:\\A", OpenMode::CreateNew); }), 58);
    EXPECT_EQ(get("C:\\a"), "old");
    files().open("C:\\A", OpenMode::ReadWrite)->writeAt(1, bytes("x"));
    EXPECT_EQ(get("C:\\a"), "oxd");
    files().open("C:\\A", OpenMode::Replace);
    EXPECT_EQ(get("C:\\a"), "");
    EXPECT_THAT(names("C:\\"), ElementsAre("a"));
}

TEST_P(FileSystems, AFolderIsNoFile)
{
    files().makeFolder("C:\\data");
    for (const OpenMode mode : {OpenMode::Read, OpenMode::ReadWrite, OpenMode::Replace})
        EXPECT_EQ(errorOf([&] { files().open("C:\\data", mode); }), 75);
    EXPECT_EQ(errorOf([&] { files().remove("C:\\data"); }), 75);
    EXPECT_FALSE(files().fileExists("C:\\data"));
    EXPECT_TRUE(files().exists("C:\\data"));
}

TEST_P(FileSystems, AReadHandleCannotWrite)
{
    put("C:\\a", "old");
    const auto file = files().open("C:\\a", OpenMode::Read);
    EXPECT_EQ(errorOf([&] { file->writeAt(0, bytes("new")); }), 70);
    EXPECT_EQ(errorOf([&] { file->resize(0); }), 70);
    EXPECT_EQ(get("C:\\a"), "old");
}

TEST_P(FileSystems, ListsNamesOfAFolderAsSpelled)
{
    files().makeFolder("C:\\Data");
    put("C:\\data\\B.dbf", "12");
    put("C:\\data\\a.DBF", "1");
    put("C:\\data\\.hidden", "");
    files().makeFolder("C:\\DATA\\Sub");
    auto entries = files().list("c:\\DATA");
    std::ranges::sort(entries, {}, &FileInfo::name);
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[0].name, ".hidden");
    EXPECT_TRUE(entries[0].hidden);
    EXPECT_EQ(entries[1].name, "B.dbf");
    EXPECT_EQ(entries[1].size, 2u);
    EXPECT_FALSE(entries[1].folder);
    EXPECT_EQ(entries[2].name, "Sub");
    EXPECT_TRUE(entries[2].folder);
    EXPECT_EQ(entries[2].size, 0u);
    EXPECT_EQ(entries[3].name, "a.DBF");
}

TEST_P(FileSystems, ListingWhatIsNoFolderIs76)
{
    put("C:\\a", "");
    EXPECT_EQ(errorOf([&] { files().list("C:\\no"); }), 76);
    EXPECT_EQ(errorOf([&] { files().list("C:\\a"); }), 76);
    EXPECT_EQ(errorOf([&] { files().list("Q:\\"); }), 68);
}

TEST_P(FileSystems, InfoOfNothingIsNothing)
{
    EXPECT_FALSE(files().info("C:\\no"));
    EXPECT_FALSE(files().info("C:\\no\\such"));
    put("C:\\a", "");
    EXPECT_FALSE(files().info("C:\\a\\b"));
    EXPECT_TRUE(files().info("C:\\")->folder);
}

TEST_P(FileSystems, RemovesAFile)
{
    put("C:\\a.DBF", "x");
    files().remove("C:\\A.dbf");
    EXPECT_THAT(names("C:\\"), IsEmpty());
    EXPECT_EQ(errorOf([&] { files().remove("C:\\a.DBF"); }), 53);
    EXPECT_EQ(errorOf([&] { files().remove("C:\\no\\a.DBF"); }), 76);
}

TEST_P(FileSystems, ARemovedFileStaysReadableThroughItsHandle)
{
    put("C:\\a", "hello");
    const auto file = files().open("C:\\a", OpenMode::Read);
    files().remove("C:\\a");
    EXPECT_EQ(contentOf(*file), "hello");
}

TEST_P(FileSystems, RenameReplacesAFileInOneStep)
{
    put("C:\\a", "new");
    put("C:\\b", "old");
    files().rename("C:\\A", "C:\\B");
    EXPECT_EQ(get("C:\\b"), "new");
    EXPECT_THAT(names("C:\\"), ElementsAre("b"));
}

TEST_P(FileSystems, RenameMovesBetweenFolders)
{
    files().makeFolder("C:\\x");
    files().makeFolder("C:\\y");
    put("C:\\x\\a", "1");
    files().rename("C:\\x\\a", "C:\\y\\b");
    EXPECT_EQ(get("C:\\y\\b"), "1");
    files().rename("C:\\y", "C:\\x\\z");
    EXPECT_EQ(get("C:\\x\\z\\b"), "1");
    EXPECT_THAT(names("C:\\"), ElementsAre("x"));
}

TEST_P(FileSystems, RenameChangesTheCaseOfAName)
{
    put("C:\\a.dbf", "1");
    files().rename("C:\\a.dbf", "C:\\A.DBF");
    EXPECT_THAT(names("C:\\"), ElementsAre("A.DBF"));
    EXPECT_EQ(get("C:\\a.dbf"), "1");
}

TEST_P(FileSystems, RenameRefusesWhatItCannotDo)
{
    put("C:\\a", "1");
    files().makeFolder("C:\\f");
    files().makeFolder("C:\\g");
    EXPECT_EQ(errorOf([&] { files().rename("C:\\no", "C:\\b"); }), 53);
    EXPECT_EQ(errorOf([&] { files().rename("C:\\a", "C:\\no\\b"); }), 76);
    EXPECT_EQ(errorOf([&] { files().rename("C:\\a", "C:\\f"); }), 58);
    EXPECT_EQ(errorOf([&] { files().rename("C:\\f", "C:\\g"); }), 58);
    EXPECT_EQ(errorOf([&] { files().rename("C:\\f", "C:\\f\\g"); }), 52);
    EXPECT_THAT(names("C:\\"), UnorderedElementsAre("a", "f", "g"));
}

TEST_P(FileSystems, FoldersAreMadeAndRemoved)
{
    files().makeFolder("C:\\Data");
    EXPECT_EQ(errorOf([&] { files().makeFolder("C:\\DATA"); }), 58);
    EXPECT_EQ(errorOf([&] { files().makeFolder("C:\\no\\x"); }), 76);
    put("C:\\Data\\a", "");
    EXPECT_EQ(errorOf([&] { files().removeFolder("C:\\Data"); }), 75);
    EXPECT_EQ(errorOf([&] { files().removeFolder("C:\\Data\\a"); }), 76);
    files().remove("C:\\Data\\a");
    files().removeFolder("C:\\data");
    EXPECT_EQ(errorOf([&] { files().removeFolder("C:\\data"); }), 76);
    EXPECT_THAT(names("C:\\"), IsEmpty());
}

TEST_P(FileSystems, SyncsFilesAndFolders)
{
    const auto file = files().open("C:\\a", OpenMode::CreateNew);
    file->writeAt(0, bytes("x"));
    file->sync();
    files().syncFolder("C:\\");
    EXPECT_EQ(errorOf([&] { files().syncFolder("C:\\no"); }), 76);
}

TEST_P(FileSystems, AnExclusiveLockShutsOthersOut)
{
    const auto first = files().open("C:\\a", OpenMode::CreateNew);
    const auto second = files().open("C:\\a", OpenMode::ReadWrite);
    EXPECT_TRUE(first->tryLock(LockKind::Exclusive));
    EXPECT_TRUE(first->tryLock(LockKind::Exclusive));
    EXPECT_FALSE(second->tryLock(LockKind::Shared));
    EXPECT_FALSE(second->tryLock(LockKind::Exclusive));
    first->unlock();
    EXPECT_TRUE(second->tryLock(LockKind::Exclusive));
}

TEST_P(FileSystems, SharedLocksLiveTogether_AndOneMayGrowWhenItIsAlone)
{
    const auto first = files().open("C:\\a", OpenMode::CreateNew);
    auto second = files().open("C:\\a", OpenMode::Read);
    EXPECT_TRUE(first->tryLock(LockKind::Shared));
    EXPECT_TRUE(second->tryLock(LockKind::Shared));
    EXPECT_FALSE(first->tryLock(LockKind::Exclusive));
    second.reset();  // a lock ends with its handle
    EXPECT_TRUE(first->tryLock(LockKind::Exclusive));
    EXPECT_TRUE(first->tryLock(LockKind::Shared));  // and shrinks again
    EXPECT_TRUE(files().open("C:\\a", OpenMode::Read)->tryLock(LockKind::Shared));
}

TEST_P(FileSystems, AReadHandleCannotLockExclusively)
{
    put("C:\\a", "");
    const auto file = files().open("C:\\a", OpenMode::Read);
    EXPECT_EQ(errorOf([&] { file->tryLock(LockKind::Exclusive); }), 70);
    EXPECT_TRUE(file->tryLock(LockKind::Shared));
}

TEST_P(FileSystems, AFolderOfTenThousandIsListedAndSearchedInOneReadEach)
{
    for (int i = 0; i < 10000; ++i) {
        const std::string name = "file" + std::to_string(i) + ".txt";
        if (GetParam() == Kind::Disk) {
            ASSERT_EQ(mknod((box_.root() + "/" + name).c_str(), S_IFREG | 0600, 0), 0);
        } else {
            memory_.put("C:\\" + name, {});
        }
    }
    EXPECT_EQ(files().list("C:\\").size(), 10000u);
    EXPECT_TRUE(files().fileExists("C:\\FILE9999.TXT"));
    EXPECT_FALSE(files().exists("C:\\nowhere"));
}

INSTANTIATE_TEST_SUITE_P(, FileSystems, ::testing::Values(Kind::Disk, Kind::Memory),
                         [](const auto& kind) {
                             return kind.param == Kind::Disk ? "Disk" : "Memory";
                         });

// The disk alone.

TEST(LinuxFileSystem, LeavesNamesOutThatAPathCannotHold)
{
    Sandbox box;
    for (const char* name : {"a\\b.dbf", "bad\xE4.dbf", "good.dbf"})
        ASSERT_EQ(mknod((box.root() + "/" + name).c_str(), S_IFREG | 0600, 0), 0);
    ASSERT_EQ(mkfifo((box.root() + "/pipe").c_str(), 0600), 0);
    ASSERT_EQ(symlink("/nowhere/at/all", (box.root() + "/broken").c_str()), 0);
    const auto entries = box.files().list("C:\\");
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].name, "good.dbf");
}

TEST(LinuxFileSystem, APipeIsRefusedWithoutWaiting)
{
    Sandbox box;
    ASSERT_EQ(mkfifo((box.root() + "/pipe").c_str(), 0600), 0);
    EXPECT_EQ(errorOf([&] { box.files().open("C:\\pipe", OpenMode::Read); }), 75);
}

TEST(LinuxFileSystem, FollowsLinks)
{
    Sandbox box;
    box.write("C:\\data\\a.dbf", "x");
    ASSERT_EQ(symlink((box.root() + "/data").c_str(), (box.root() + "/Link").c_str()), 0);
    EXPECT_TRUE(box.files().info("C:\\LINK")->folder);
    EXPECT_EQ(box.read("C:\\link\\A.DBF"), "x");
}

TEST(LinuxFileSystem, FoldersOnTheWayToAMountAreShown)
{
    Sandbox box;
    box.makeFolders("C:\\home\\app");
    box.write("C:\\home\\app\\Close.Txt", "");
    box.paths().mount("C:\\Program Files\\Velnor3", box.native("C:\\home\\app"));
    const auto top = box.files().list("C:\\");
    EXPECT_TRUE(std::ranges::any_of(top, [](const auto& e) { return e.name == "Program Files"; }));
    const auto below = box.files().list("C:\\Program Files");
    ASSERT_EQ(below.size(), 1u);
    EXPECT_EQ(below[0].name, "Velnor3");
    EXPECT_TRUE(box.files().info("c:\\program files")->folder);
    EXPECT_EQ(box.files().info("C:\\Program Files\\Velnor3")->name, "Velnor3");
    EXPECT_TRUE(box.files().fileExists("C:\\Program Files\\Velnor3\\CLOSE.TXT"));
}

TEST(LinuxFileSystem, TellsWhenAFileIsReadOnly)
{
    Sandbox box;
    box.write("C:\\a", "x");
    EXPECT_FALSE(box.files().info("C:\\a")->readOnly);
    std::filesystem::permissions(box.native("C:\\a"), std::filesystem::perms::owner_read);
    EXPECT_TRUE(box.files().info("C:\\a")->readOnly);
    const int expected = geteuid() == 0 ? 0 : 70;  // nothing stops root
    EXPECT_EQ(errorOf([&] { box.files().open("C:\\a", OpenMode::ReadWrite); }), expected);
}

TEST(LinuxFileSystem, AVolumeWithoutRoomIs61)
{
    Sandbox box;
    const auto file = box.files().open("C:\\a", OpenMode::CreateNew);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    signal(SIGXFSZ, SIG_IGN);
    const rlimit tight{4096, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &tight);
    const std::vector<std::uint8_t> block(8192, 1);
    const int number = errorOf([&] { file->writeAt(0, block); });
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(number, 61);
}

TEST(LinuxFileSystem, LocksAreSeenByOtherProcesses)
{
    Sandbox box;
    const auto file = box.files().open("C:\\a", OpenMode::CreateNew);
    ASSERT_TRUE(file->tryLock(LockKind::Exclusive));
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const bool locked = box.files().open("C:\\a", OpenMode::Read)->tryLock(LockKind::Shared);
        _exit(locked ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

// Memory alone.

TEST(MemoryFileSystem, HoldsNoMoreThanItsCapacity)
{
    MemoryFileSystem files(1000);
    const auto file = files.open("C:\\a", OpenMode::CreateNew);
    file->writeAt(0, bytes(std::string(1000, 'x')));
    EXPECT_EQ(errorOf([&] { file->writeAt(1000, bytes("x")); }), 61);
    EXPECT_EQ(errorOf([&] { file->writeAt(std::uint64_t{1} << 60, bytes("x")); }), 61);
    EXPECT_EQ(errorOf([&] { file->writeAt(~std::uint64_t{0}, bytes("x")); }), 61);
    EXPECT_EQ(errorOf([&] { files.put("C:\\b", bytes("y")); }), 61);
    EXPECT_EQ(file->size(), 1000u);
    file->resize(10);
    files.put("C:\\b", bytes("y"));
}

TEST(MemoryFileSystem, RoomComesBackWhenAFileAndItsHandlesAreGone)
{
    MemoryFileSystem files(10);
    files.put("C:\\a", bytes("0123456789"));
    auto handle = files.open("C:\\a", OpenMode::Read);
    files.remove("C:\\a");
    EXPECT_EQ(errorOf([&] { files.put("C:\\b", bytes("y")); }), 61);
    handle.reset();
    files.put("C:\\b", bytes("y"));
    EXPECT_EQ(files.content("C:\\b"), std::vector<std::uint8_t>{'y'});
}

TEST(MemoryFileSystem, PutMakesTheFoldersOnTheWay)
{
    MemoryFileSystem files;
    files.setTime(1100783290);
    files.put("C:\\a\\b\\c.dbf", bytes("x"));
    EXPECT_TRUE(files.info("C:\\A\\B")->folder);
    EXPECT_EQ(files.info("C:\\A\\B\\C.DBF")->modified, 1100783290);
    files.addRoot("\\\\srv\\pub");
    files.put("\\\\SRV\\pub\\x", bytes("x"));
    EXPECT_TRUE(files.fileExists("\\\\srv\\PUB\\x"));
}

TEST(MemoryFileSystem, AReadOnlyFileIsNotWritten)
{
    MemoryFileSystem files;
    files.put("C:\\a", bytes("x"));
    files.setReadOnly("C:\\a", true);
    EXPECT_TRUE(files.info("C:\\a")->readOnly);
    EXPECT_EQ(errorOf([&] { files.open("C:\\a", OpenMode::ReadWrite); }), 70);
    EXPECT_EQ(errorOf([&] { files.open("C:\\a", OpenMode::Replace); }), 70);
    EXPECT_NO_THROW(files.open("C:\\a", OpenMode::Read));
}
