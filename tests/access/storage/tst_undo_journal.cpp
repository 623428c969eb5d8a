#include <gtest/gtest.h>

#include <unistd.h>

#include <random>

#include "access/storage/undo_journal.h"
#include "tests/access/storage/storage_testing.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

constexpr const char* kMain = "C:\\ORDERS.DBF";
constexpr const char* kMemo = "C:\\ORDERS.DBT";
constexpr const char* kNew = "C:\\ORDERS.MDX";
constexpr const char* kOther = "C:\\BYNAME.NDX";
constexpr const char* kJournal = "C:\\ORDERS.DBF-undo";

const std::string kOldMain(3000, 'm');
const std::string kOldMemo(1000, 'o');
const std::string kOldOther(200, 'i');
const std::string kNewMain(5000, 'M');
const std::string kNewMemo(400, 'O');

/// Files in the middle of a commit: everything is kept in the journal, all is written, nothing is
/// cut.
struct UndoJournalTest : ::testing::Test {
    MemoryFileSystem files;

    void SetUp() override
    {
        files.put(kMain, bytesOf(kOldMain));
        files.put(kMemo, bytesOf(kOldMemo));
        files.put(kOther, bytesOf(kOldOther));
        UndoJournal journal(
            files, kMain,
            {{kMain, 3000, false}, {kMemo, 1000, false}, {kOther, 200, false}, {kNew, 0, true}});
        const auto main = files.open(kMain, OpenMode::Read);
        const auto memo = files.open(kMemo, OpenMode::Read);
        const auto other = files.open(kOther, OpenMode::Read);
        journal.save(0, *main, 0, 1000);
        journal.save(0, *main, 1000, 2000);
        journal.save(1, *memo, 0, 1000);
        journal.save(2, *other, 50, 150);
        journal.seal();
        writeNew();
    }
    void writeNew()
    {
        files.put(kMain, bytesOf(kNewMain));
        files.put(kMemo, bytesOf(kNewMemo));
        files.put(kOther, bytesOf(kOldOther.substr(0, 50) + std::string(150, 'I')));
        files.put(kNew, bytesOf("new"));
    }
    void putOwner(const JournalOwner& owner)
    {
        const auto journal = files.open(kJournal, OpenMode::ReadWrite);
        JournalHead head = *readJournalHead(*journal, kMain);
        head.owner = owner;
        files.put(kJournal, journalHeadBytes(head, kMain));
    }
    void expectOld(const std::string& base = "C:\\ORDERS")
    {
        EXPECT_EQ(contentOf(files, base + ".DBF"), kOldMain);
        EXPECT_EQ(contentOf(files, base + ".DBT"), kOldMemo);
        EXPECT_EQ(contentOf(files, kOther), kOldOther);
        EXPECT_FALSE(files.exists(base + ".MDX"));
        EXPECT_FALSE(files.exists(base + ".DBF-undo"));
    }
    void expectNew()
    {
        EXPECT_EQ(contentOf(files, kMain), kNewMain);
        EXPECT_EQ(contentOf(files, kMemo), kNewMemo);
        EXPECT_EQ(contentOf(files, kNew), "new");
    }
};

TEST_F(UndoJournalTest, recoveryBringsBackBytesAndLengthsAndRemovesWhatWasMade)
{
    EXPECT_TRUE(recoverFiles(files, kMain));
    expectOld();
    EXPECT_FALSE(recoverFiles(files, kMain));
}

TEST_F(UndoJournalTest, aReaderUndoesItToo)
{
    const FileSet set(files, kMain, pagesOf(64), true);
    expectOld();
}

TEST_F(UndoJournalTest, aWriterUndoesIt)
{
    FileSet set(files, kMain, pagesOf(64), false);
    expectOld();
    EXPECT_EQ(set.main().size(), 3000u);
}

TEST_F(UndoJournalTest, undoingTwiceGivesTheSame)
{
    const Bytes journal = files.content(kJournal);
    recoverFiles(files, kMain);
    files.put(kJournal, journal);
    recoverFiles(files, kMain);
    expectOld();
}

TEST_F(UndoJournalTest, theJournalFollowsARename)
{
    for (const char* extension : {".DBF", ".DBT", ".MDX", ".DBF-undo"})
        files.rename("C:\\ORDERS" + std::string(extension), "C:\\SALES" + std::string(extension));
    EXPECT_TRUE(recoverFiles(files, "C:\\SALES.DBF"));
    expectOld("C:\\SALES");
}

TEST_F(UndoJournalTest, aMissingCompanionIsNoReasonToLeaveTheOthers)
{
    files.remove(kMemo);
    EXPECT_TRUE(recoverFiles(files, kMain));
    EXPECT_EQ(contentOf(files, kMain), kOldMain);
    EXPECT_FALSE(files.exists(kMemo));
}

TEST_F(UndoJournalTest, aLivingOwnerIsLeftInPeace)
{
    JournalOwner owner = JournalOwner::thisProcess();
    owner.process = static_cast<std::uint32_t>(getppid());
    owner.startTime = JournalOwner::startTimeOf(owner.process);
    ASSERT_NE(owner.startTime, 0u);
    putOwner(owner);
    EXPECT_EQ(engineNumberOf([&] { recoverFiles(files, kMain); }), 3045);
    EXPECT_EQ(engineNumberOf([&] { FileSet(files, kMain, pagesOf(64), true); }), 3045);
    EXPECT_EQ(engineNumberOf([&] { FileSet(files, kMain, pagesOf(64), false); }), 3045);
    expectNew();
}

TEST_F(UndoJournalTest, aNumberThatWasGivenToAnotherProcessIsADeadOwner)
{
    JournalOwner owner = JournalOwner::thisProcess();
    owner.process = static_cast<std::uint32_t>(getppid());
    owner.startTime = JournalOwner::startTimeOf(owner.process) + 1;
    EXPECT_FALSE(owner.livesElsewhere());
    owner.startTime -= 1;
    EXPECT_TRUE(owner.livesElsewhere());
    owner.bootId = "another boot";
    EXPECT_FALSE(owner.livesElsewhere());
    EXPECT_FALSE(JournalOwner::thisProcess().livesElsewhere());
}

TEST_F(UndoJournalTest, aSetOfThisProcessThatStillWorksIsLeftInPeace)
{
    const auto main = files.open(kMain, OpenMode::ReadWrite);
    ASSERT_TRUE(main->tryLock(LockKind::Exclusive));
    EXPECT_EQ(engineNumberOf([&] { recoverFiles(files, kMain); }), 3045);
    expectNew();
}

TEST_F(UndoJournalTest, readOnlyFilesWithAJournalCannotBeTrusted)
{
    files.setReadOnly(kMain, true);
    EXPECT_EQ(engineNumberOf([&] { FileSet(files, kMain, pagesOf(64), true); }), 3051);
    expectNew();
}

TEST_F(UndoJournalTest, aDamagedHeadIsIgnoredAndOnlyAWriterRemovesIt)
{
    const Bytes good = files.content(kJournal);
    const auto head = readJournalHead(*files.open(kJournal, OpenMode::Read), kMain)->length;
    for (std::size_t at = 0; at < head; ++at) {
        Bytes bad = good;
        bad[at] ^= static_cast<std::uint8_t>(1u << at % 8);
        files.put(kJournal, bad);
        ASSERT_FALSE(recoverFiles(files, kMain)) << at;
    }
    for (std::size_t length = 0; length < head; ++length) {
        files.put(kJournal, std::span(good).first(length));
        ASSERT_FALSE(recoverFiles(files, kMain)) << length;
    }
    expectNew();
    EXPECT_EQ(engineNumberOf([&] { FileSet(files, kMain, pagesOf(64), true); }), 0);
    EXPECT_TRUE(files.exists(kJournal));
    FileSet set(files, kMain, pagesOf(64), false);
    write(set.main(), 0, "x");
    set.commit();
    EXPECT_FALSE(files.exists(kJournal));
}

TEST_F(UndoJournalTest, aNameThatLeavesTheFolderIsNoJournalOfOurs)
{
    JournalHead head = *readJournalHead(*files.open(kJournal, OpenMode::Read), kMain);
    for (const char* path : {"C:\\../OTHER.DBF", "C:\\..", "C:\\X:Y"}) {
        head.files[1].path = path;
        files.put(kJournal, journalHeadBytes(head, kMain));
        EXPECT_FALSE(recoverFiles(files, kMain)) << path;
    }
    expectNew();
}

/// What stands in front of the damage is put back; every byte is the old or the new one.
TEST_F(UndoJournalTest, aDamagedTailIsIgnored)
{
    const Bytes good = files.content(kJournal);
    const auto head = readJournalHead(*files.open(kJournal, OpenMode::Read), kMain)->length;
    std::mt19937 random(7);
    for (int round = 0; round < 400; ++round) {
        writeNew();
        Bytes bad = good;
        const std::size_t at = head + random() % (bad.size() - head);
        if (round % 3 == 0)
            bad.resize(at);
        else
            bad[at] ^= static_cast<std::uint8_t>(1u << random() % 8);
        files.put(kJournal, bad);
        ASSERT_TRUE(recoverFiles(files, kMain));
        const std::string main = contentOf(files, kMain);
        ASSERT_EQ(main.size(), kOldMain.size());
        const bool first = at >= head + 24 + 1000;  // the first entry is whole
        EXPECT_EQ(main.substr(0, 1000), std::string(1000, first ? 'm' : 'M')) << at;
        EXPECT_EQ(main.find_first_not_of("mM"), std::string::npos);
        ASSERT_EQ(contentOf(files, kMemo).size(), kOldMemo.size());
    }
}

TEST_F(UndoJournalTest, bytesOfAnOlderJournalBehindTheEndAreNotTaken)
{
    const Bytes older = files.content(kJournal);
    const auto head = readJournalHead(*files.open(kJournal, OpenMode::Read), kMain)->length;
    {
        UndoJournal journal(
            files, kMain,
            {{kMain, 5000, false}, {kMemo, 400, false}, {kOther, 200, false}, {kNew, 3, false}});
        journal.seal();
    }
    Bytes mixed = files.content(kJournal);
    ASSERT_EQ(mixed.size(), head);
    mixed.insert(mixed.end(), older.begin() + static_cast<std::ptrdiff_t>(head), older.end());
    files.put(kJournal, mixed);
    EXPECT_TRUE(recoverFiles(files, kMain));
    expectNew();
}

TEST_F(UndoJournalTest, randomBytesAreNoJournal)
{
    std::mt19937 random(11);
    for (int round = 0; round < 500; ++round) {
        Bytes bytes(random() % 300);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        const std::string_view magic = "VELUNDO1";
        if (round % 2 && bytes.size() >= 12) {
            std::copy(magic.begin(), magic.end(), bytes.begin());
            bytes[9] = bytes[10] = bytes[11] = 0;
        }
        files.put(kJournal, bytes);
        ASSERT_FALSE(recoverFiles(files, kMain));
    }
    expectNew();
}

}  // namespace
