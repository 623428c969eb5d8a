#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

#include <gmock/gmock.h>

#include "platform/host_paths.h"
#include "platform/run_error.h"
#include "tests/support/sandbox.h"

using namespace velnor;
using velnor::testing::Sandbox;
namespace fs = std::filesystem;

namespace {

int errorOf(const std::function<void()>& step)
{
    try {
        step();
    } catch (const RunError& error) {
        return error.number();
    }
    return 0;
}

class HostPathsTest : public ::testing::Test {
protected:
    std::string at(const std::string& below) const { return box_.root() + below; }
    void touch(const std::string& below) const
    {
        fs::create_directories(fs::path(at(below)).parent_path());
        std::ofstream(at(below)) << "x";
    }

    Sandbox box_;
    HostPaths& paths_ = box_.paths();
};

}  // namespace

TEST_F(HostPathsTest, APartIsTakenAsSpelledWhenItExists)
{
    touch("/Data/A.dbf");
    touch("/data/a.DBF");
    EXPECT_EQ(paths_.toNative("C:\\Data\\A.dbf"), at("/Data/A.dbf"));
    EXPECT_EQ(paths_.toNative("C:\\data\\a.DBF"), at("/data/a.DBF"));
}

TEST_F(HostPathsTest, ElseByTheFirstNameThatDiffersInCaseOnly)
{
    touch("/Data/Käufer.dbf");
    EXPECT_EQ(paths_.toNative("c:\\DATA\\KÄUFER.DBF"), at("/Data/Käufer.dbf"));
    touch("/Data/KÄUFER.Dbf");
    EXPECT_EQ(paths_.toNative("c:\\DATA\\KÄUFER.DBF"),
              at("/Data/KÄUFER.Dbf"));  // the same each time
}

TEST_F(HostPathsTest, ANewNameStaysAsSpelled_InAnExistingFolderOfAnotherCase)
{
    touch("/Data/x");
    EXPECT_EQ(paths_.toNative("C:\\DATA\\New.Dbf"), at("/Data/New.Dbf"));
    EXPECT_EQ(paths_.toNative("C:\\No\\Such\\File"), at("/No/Such/File"));
}

TEST_F(HostPathsTest, DoubledBackslashesCountAsOne)
{
    touch("/data/a.dbf");
    EXPECT_EQ(paths_.toNative("C:\\\\data\\\\a.dbf"), at("/data/a.dbf"));
}

TEST_F(HostPathsTest, ADriveRootIsTheMountItself)
{
    EXPECT_EQ(paths_.toNative("C:"), at(""));
    EXPECT_EQ(paths_.toNative("C:\\"), at(""));
    EXPECT_EQ(HostPaths().toNative("C:\\"), "/");
    EXPECT_EQ(paths_.toProgram(at("")), "C:\\");
    EXPECT_EQ(HostPaths().toProgram("/"), "C:\\");
}

TEST_F(HostPathsTest, ParentsDoNotLeadOutOfADrive)
{
    EXPECT_EQ(paths_.toNative("C:\\..\\..\\etc"), at("/etc"));
}

TEST_F(HostPathsTest, TheLongestPrefixWins_BlindToCase)
{
    paths_.mount("C:\\Program Files\\Velnor3", at("/home/app"));
    EXPECT_EQ(paths_.toNative("c:\\program files\\VELNOR3\\Options.INI"),
              at("/home/app/Options.INI"));
    EXPECT_EQ(paths_.toNative("C:\\Program Files\\Velnor3x\\a"), at("/Program Files/Velnor3x/a"));
    EXPECT_EQ(paths_.toProgram(at("/home/app/Options.INI")),
              "C:\\Program Files\\Velnor3\\Options.INI");
    EXPECT_EQ(paths_.toProgram(at("/home/application")), "C:\\home\\application");
}

TEST_F(HostPathsTest, FoldersOnTheWayToAMountAreKnown)
{
    paths_.mount("C:\\Program Files\\Velnor3", at("/home/app"));
    EXPECT_THAT(paths_.mountsBelow("C:\\"), ::testing::ElementsAre("Program Files"));
    EXPECT_THAT(paths_.mountsBelow("c:\\PROGRAM FILES"), ::testing::ElementsAre("Velnor3"));
    EXPECT_THAT(paths_.mountsBelow("C:\\Program Files\\Velnor3"), ::testing::IsEmpty());
}

TEST_F(HostPathsTest, AnUnmountedDriveIs68_AnUnmountedShare76_NoPathAtAll52)
{
    EXPECT_EQ(errorOf([&] { paths_.toNative("Q:\\a.dbf"); }), 68);
    EXPECT_EQ(errorOf([&] { paths_.toNative("\\\\server\\share\\a.dbf"); }), 76);
    EXPECT_EQ(errorOf([&] { paths_.toNative("a.dbf"); }), 52);
    EXPECT_EQ(errorOf([&] { paths_.toNative(""); }), 52);
}

TEST_F(HostPathsTest, ASharePathLeadsToWhereItIsMounted)
{
    paths_.mount("\\\\Server\\Share", at("/mnt/share"));
    EXPECT_EQ(paths_.toNative("\\\\SERVER\\share\\a.dbf"), at("/mnt/share/a.dbf"));
    EXPECT_EQ(paths_.toProgram(at("/mnt/share/a.dbf")), "\\\\Server\\Share\\a.dbf");
}

TEST_F(HostPathsTest, AMapOfAPersonMountsDrives)
{
    paths_.readMap("# my drives\n"
                   "D: = " +
                   at("/mnt/data/") +
                   "\n"
                   "  E:=" +
                   at("/mnt/My Disk") +
                   "\r\n"
                   "nonsense\n"
                   "F: = relative/folder\n"
                   "= /mnt\n"
                   "\\\\srv\\pub = " +
                   at("/mnt/pub"));
    EXPECT_EQ(paths_.toNative("d:\\x"), at("/mnt/data/x"));
    EXPECT_EQ(paths_.toNative("E:\\x"), at("/mnt/My Disk/x"));
    EXPECT_EQ(paths_.toNative("\\\\srv\\pub\\x"), at("/mnt/pub/x"));
    EXPECT_EQ(errorOf([&] { paths_.toNative("F:\\x"); }), 68);
    paths_.readMap("D: = " + at("/other"));
    EXPECT_EQ(paths_.toNative("D:\\x"), at("/other/x"));
}

TEST_F(HostPathsTest, BackToAProgramPath_CleanedOfDots)
{
    EXPECT_EQ(paths_.toProgram(at("//data/./b/../A.dbf")), "C:\\data\\A.dbf");
    EXPECT_EQ(errorOf([&] { paths_.toProgram("/elsewhere/a.dbf"); }), 76);
    EXPECT_EQ(errorOf([&] { paths_.toProgram(at("/a\\b.dbf")); }), 52);
}

TEST_F(HostPathsTest, ARelativeNativePathIsTakenFromTheProcessFolder)
{
    const std::string expected = "C:" + [] {
        std::string native = fs::current_path().string() + "/a.dbf";
        std::ranges::replace(native, '/', '\\');
        return native;
    }();
    EXPECT_EQ(HostPaths().toProgram("a.dbf"), expected);
}

TEST_F(HostPathsTest, WhatAPersonHandsOverComesInAnyForm)
{
    touch("/My Data/a.dbf");
    EXPECT_EQ(paths_.fromPerson("C:\\My Data\\a.dbf"), "C:\\My Data\\a.dbf");
    EXPECT_EQ(paths_.fromPerson("Q:\\unmounted"), "Q:\\unmounted");
    EXPECT_EQ(paths_.fromPerson("\\\\srv\\pub\\a"), "\\\\srv\\pub\\a");
    EXPECT_EQ(paths_.fromPerson(at("/My Data/a.dbf")), "C:\\My Data\\a.dbf");
    EXPECT_EQ(paths_.fromPerson("file://" + at("/My%20Data/a.dbf")), "C:\\My Data\\a.dbf");
    EXPECT_EQ(paths_.fromPerson("file://localhost" + at("/My%20Data/a.dbf")), "C:\\My Data\\a.dbf");
    EXPECT_EQ(paths_.fromPerson("file:///C:/My%20Data/100%25.dbf"), "C:\\My Data\\100%.dbf");
}
