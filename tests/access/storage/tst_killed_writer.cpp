// A writer on real files that is killed in the middle of its work.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <random>
#include <thread>

#include "access/storage/byte_reader.h"
#include "platform/host.h"
#include "tests/access/storage/storage_testing.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

constexpr const char* kMain = "C:\\ORDERS.DBF";
constexpr const char* kMemo = "C:\\ORDERS.DBT";
constexpr std::uint32_t kPage = 512;

struct KilledWriterTest : ::testing::Test {
    std::filesystem::path folder;
    HostPaths paths;
    std::unique_ptr<FileSystem> files;

    void SetUp() override
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "velnor-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        paths.mount("C:", pattern);
        files = makeLinuxFileSystem(paths);
        files->open(kMain, OpenMode::CreateNew);
        files->open(kMemo, OpenMode::CreateNew);
    }
    void TearDown() override { std::filesystem::remove_all(folder); }
};

/// Every page of both files holds the number of the commit; the length depends on it, too.
void writeNumber(FileSet& set, std::uint32_t number)
{
    for (PageFile* file : {&set.main(), &set.companion(kMemo, pagesOf(kPage))}) {
        file->resize((10 + number % 17) * kPage);
        for (std::uint32_t page = 0; page < file->pageCount(); ++page)
            storeLE(file->read(page).edit(), number);
    }
    set.commit();
}

[[noreturn]] void writeUntilKilled(FileSystem& files)
{
    try {
        FileSet set(files, kMain, pagesOf(kPage), false);
        std::uint32_t number = 0;
        if (set.main().pageCount() > 0)
            number = loadLE<std::uint32_t>(set.main().read(0).data());
        while (true)
            writeNumber(set, ++number);
    } catch (const std::exception&) {
        _exit(1);
    }
}

std::uint32_t numberInEveryPage(FileSet& set)
{
    PageFile& main = set.main();
    if (main.pageCount() == 0)
        return 0;
    const auto number = loadLE<std::uint32_t>(main.read(0).data());
    for (PageFile* file : {&main, &set.companion(kMemo, pagesOf(kPage))}) {
        EXPECT_EQ(file->size(), (10 + number % 17) * kPage);
        for (std::uint32_t page = 0; page < file->pageCount(); ++page)
            EXPECT_EQ(loadLE<std::uint32_t>(file->read(page).data()), number) << page;
    }
    return number;
}

TEST_F(KilledWriterTest, theNextOpeningFindsOneCommitWhole)
{
    std::mt19937 random(5);
    std::uint32_t last = 0;
    int journals = 0;
    for (int round = 0; round < 40; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            writeUntilKilled(*files);
        std::this_thread::sleep_for(std::chrono::microseconds(5000 + random() % 20000));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer gave up by itself";
        journals += files->exists("C:\\ORDERS.DBF-undo");
        FileSet set(*files, kMain, pagesOf(kPage), round % 2 == 0);
        const std::uint32_t number = numberInEveryPage(set);
        ASSERT_GE(number, last);
        last = number;
    }
    EXPECT_GT(last, 0u);
    EXPECT_GT(journals, 0) << "no kill met a commit";
}

TEST_F(KilledWriterTest, whileTheWriterLivesTheFileIsInUse)
{
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const FileSet set(*files, kMain, pagesOf(kPage), false);
        if (write(ready[1], "x", 1) == 1)
            pause();
        _exit(0);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    EXPECT_EQ(engineNumberOf([&] { FileSet(*files, kMain, pagesOf(kPage), true); }), 3045);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(engineNumberOf([&] { FileSet(*files, kMain, pagesOf(kPage), false); }), 0);
    close(ready[0]);
    close(ready[1]);
}

}  // namespace
