// Random work on the files of a set, cut or failing at any change of the disk.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>

#include "tests/access/storage/storage_testing.h"
#include "tests/support/faulty_disk.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

constexpr const char* kMain = "C:\\DATA\\ORDERS.DBF";
constexpr const char* kFolder = "C:\\DATA\\";

/// Path to content; a file that is not there has no entry.
using Files = std::map<std::string, Bytes>;

Files withoutJournals(Files files)
{
    std::erase_if(files, [](const auto& file) { return file.first.ends_with("-UNDO"); });
    return files;
}

class RandomWork {
public:
    explicit RandomWork(unsigned seed) : random_(seed) {}

    void putFiles(FaultyDisk& disk)
    {
        disk.put(kMain, someBytes(3000));
        disk.put(std::string(kFolder) + "ORDERS.DBT", someBytes(3000));
        disk.put(std::string(kFolder) + "BYNAME.NDX", someBytes(2000));  // another base name
    }

    void openSet(FaultyDisk& disk)
    {
        set_.emplace(disk, kMain, pagesOf(128), false);
        open_.clear();
        open_.push_back({"ORDERS.DBF", &set_->main()});
        for (const auto& [name, rank] : {std::pair{"ORDERS.DBT", 0}, {"BYNAME.NDX", 2}})
            openCompanion(name, rank, false);
        if (disk.fileExists(std::string(kFolder) + "ORDERS.MDX"))
            openCompanion("ORDERS.MDX", 3, false);
    }

    void change()
    {
        const unsigned steps = 1 + random_() % 12;
        for (unsigned step = 0; step < steps; ++step)
            changeOne(*open_[random_() % open_.size()].file);
        if (open_.size() == 3 && random_() % 6 == 0)
            openCompanion("ORDERS.MDX", 3, true);
    }

    Files content()
    {
        Files files;
        for (const Open& open : open_) {
            Bytes bytes(open.file->size());
            EXPECT_EQ(open.file->readAt(0, bytes), bytes.size());
            files[kFolder + open.name] = std::move(bytes);
        }
        return files;
    }

    void forgetCompanionsBut(std::size_t count) { open_.resize(std::min(count, open_.size())); }
    std::size_t companions() const { return open_.size(); }
    FileSet& set() { return *set_; }
    void close()
    {
        open_.clear();
        set_.reset();
    }
    unsigned number(unsigned below) { return random_() % below; }

private:
    struct Open {
        std::string name;
        PageFile* file;
    };

    void openCompanion(const std::string& name, int rank, bool create)
    {
        PageFileOptions options = pagesOf(random_() % 2 ? 64 : 200);
        options.rank = rank;
        open_.push_back({name, &set_->companion(kFolder + name, options, create)});
    }

    Bytes someBytes(std::size_t most)
    {
        Bytes bytes(random_() % most);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random_());
        return bytes;
    }

    void changeOne(PageFile& file)
    {
        const std::uint64_t size = file.size();
        switch (random_() % 8) {
        case 0:
            file.resize(random_() % (size + 500));
            break;
        case 1:
            file.append().edit()[3] = 'A';
            break;
        case 2:
        case 3:
            file.writeAt(size, someBytes(600));
            break;
        case 4:
            if (file.pageCount() > 0)
                file.read(random_() % file.pageCount()).edit()[0] ^= 0x5A;
            break;
        case 5:
            file.writeAt(size + random_() % 1000, someBytes(100));
            break;
        default:
            file.writeAt(size == 0 ? 0 : random_() % size, someBytes(400));
        }
        if (file.size() > 20000)
            file.resize(random_() % 3000);
    }

    std::mt19937 random_;
    std::optional<FileSet> set_;
    std::vector<Open> open_;
};

struct Cuts {
    int all = 0;
    int inCommit = 0;
    int inRecovery = 0;
    int oldState = 0;
    int newState = 0;
};

/// Works until the power is cut; `committed` is the last state that commit() promised, `next` what
/// was being committed, if anything.
void workUntilCut(RandomWork& work, FaultyDisk& disk, Files& committed, std::optional<Files>& next)
{
    try {
        work.openSet(disk);
        while (true) {
            work.change();
            next = work.content();
            work.set().commit();
            committed = *std::exchange(next, std::nullopt);
        }
    } catch (const std::exception& error) {
        ASSERT_TRUE(disk.wasCut()) << error.what();
    }
    work.close();
}

/// Opens the set again after the cut, which may be cut, too.
void recover(RandomWork& work, FaultyDisk& disk, Cuts& cuts)
{
    for (int tries = 0;; ++tries) {
        disk.restart();
        if (tries < 4 && work.number(2) == 0)
            disk.cutAt(1 + work.number(12));
        try {
            if (work.number(3) == 0)
                recoverFiles(disk, kMain);
            FileSet set(disk, kMain, pagesOf(128), work.number(2) == 0);
            disk.clearFaults();
            return;
        } catch (const std::exception& error) {
            ASSERT_TRUE(disk.wasCut()) << error.what();
            ++cuts.inRecovery;
        }
    }
}

TEST(CrashSafetyTest, afterAnyPowerCutTheOldOrTheNewStateStands)
{
    Cuts cuts;
    for (unsigned seed = 1; seed <= 150; ++seed) {
        RandomWork work(seed);
        FaultyDisk disk(seed * 7919);
        work.putFiles(disk);
        Files committed = disk.snapshot();
        for (int round = 0; round < 30; ++round) {
            std::optional<Files> next;
            disk.cutAt(1 + work.number(60));
            workUntilCut(work, disk, committed, next);
            ++cuts.all;
            cuts.inCommit += next.has_value();
            recover(work, disk, cuts);
            if (HasFatalFailure())
                return;
            const Files found = withoutJournals(disk.snapshot());
            const bool isNew = next && found == *next;
            ASSERT_TRUE(found == committed || isNew) << "seed " << seed << " round " << round;
            ++(found == committed ? cuts.oldState : cuts.newState);
            committed = found;
        }
    }
    std::cout << cuts.all << " cuts, " << cuts.inCommit << " in a commit, " << cuts.inRecovery
              << " more in recovery; old state " << cuts.oldState << ", new " << cuts.newState
              << "\n";
    EXPECT_GT(cuts.inCommit, 3000);
    EXPECT_GT(cuts.inRecovery, 500);
    EXPECT_GT(cuts.newState, 100);
}

struct Fault {
    RunErrorNumber error;
    FaultyDisk::Lasts lasts;
    int engineNumber;
};

class FailingDiskTest : public ::testing::TestWithParam<Fault> {};

/// 5. The files are back at once, and the set can be used on; a disk that stays broken is undone by
/// the next opening.
TEST_P(FailingDiskTest, aFailedCommitLeavesTheOldState)
{
    const Fault fault = GetParam();
    int failures = 0;
    int leftToTheNextOpening = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        RandomWork work(seed);
        FaultyDisk disk(seed * 31);
        work.putFiles(disk);
        work.openSet(disk);
        for (int round = 0; round < 10; ++round) {
            const Files before = withoutJournals(disk.snapshot());
            const std::size_t companions = work.companions();
            work.change();
            const Files next = work.content();
            disk.failAt(1 + work.number(25), fault.error, fault.lasts);
            const int number = engineNumberOf([&] { work.set().commit(); });
            if (number == 0) {
                disk.clearFaults();
                ASSERT_EQ(withoutJournals(disk.snapshot()), next) << seed << " " << round;
                continue;
            }
            ++failures;
            ASSERT_EQ(number, fault.engineNumber);
            work.forgetCompanionsBut(companions);
            const bool usable = engineNumberOf([&] { work.set().main().resize(0); }) == 0;
            if (usable) {
                work.set().rollback();
                ASSERT_EQ(work.content(), before) << seed << " " << round;
                ASSERT_EQ(withoutJournals(disk.snapshot()), before) << seed << " " << round;
                disk.clearFaults();
                continue;
            }
            ASSERT_EQ(fault.lasts, FaultyDisk::Lasts::FromThenOn);
            ++leftToTheNextOpening;
            work.close();
            disk.clearFaults();
            work.openSet(disk);
            const Files found = withoutJournals(disk.snapshot());
            ASSERT_TRUE(found == before || found == next) << seed << " " << round;
        }
    }
    std::cout << failures << " failed commits, " << leftToTheNextOpening
              << " left to the next opening\n";
    EXPECT_GT(failures, 300);
    if (fault.error == RunErrorNumber::DiskFull) {
        EXPECT_EQ(leftToTheNextOpening, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Faults, FailingDiskTest,
    ::testing::Values(Fault{RunErrorNumber::DiskFull, FaultyDisk::Lasts::Once, 3026},
                      Fault{RunErrorNumber::DiskFull, FaultyDisk::Lasts::FromThenOn, 3026},
                      Fault{RunErrorNumber::DeviceIo, FaultyDisk::Lasts::Once, 3051},
                      Fault{RunErrorNumber::DeviceIo, FaultyDisk::Lasts::FromThenOn, 3051}));

}  // namespace
