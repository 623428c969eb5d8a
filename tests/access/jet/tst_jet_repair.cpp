// Repairing: what could be read before is there afterwards, and the file is sound again.
#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/jet/jet_file.h"
#include "access/storage/byte_reader.h"
#include "tests/access/jet/corpus_files.h"
#include "tests/access/jet/jet_testing.h"
#include "tests/support/faulty_disk.h"

namespace velnor::testing {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Lines = std::multiset<std::string>;
using Dumps = std::map<std::string, Lines>;

constexpr const char* kAside = "C:\\TEST-damaged.MDB";

OpenRequest repairing()
{
    OpenRequest request;
    request.name = kTestFile;
    request.readOnly = false;
    request.exclusive = true;
    return request;
}

/// What the repair told; `losses` counts what is no longer there.
struct Report {
    std::string text;
    int losses = 0;
    int error = 0;
};

Report repair(FileSystem& files)
{
    Report report;
    try {
        jet::JetDriver().repair(files, repairing(), [&](const Problem& problem) {
            report.text += problem.where + ": " + problem.text + "\n";
            report.losses += !problem.harmless;
        });
    } catch (const EngineError& error) {
        report.error = error.number();
        report.text = error.what();
    }
    return report;
}

/// The records of every table of the user, as far as they can be read.
Dumps dumpsOf(FileSystem& files, const std::string& password)
{
    Dumps dumps;
    std::unique_ptr<Store> store;
    std::vector<TableEntry> tables;
    try {
        store = jet::JetDriver().open(files, reading(password));
        tables = store->catalogue();
    } catch (const EngineError&) {
        return dumps;
    }
    for (const TableEntry& entry : tables) {
        if (entry.attributes & (kSystemTableBits | kLinkedTableBit | kLinkedOdbcTableBit))
            continue;
        try {
            std::istringstream in(dumpTable(*store, entry.name));
            std::string line;
            std::getline(in, line);  // the names
            while (std::getline(in, line))
                dumps[entry.name].insert(line);
        } catch (const EngineError&) {
        }
    }
    return dumps;
}

Lines common(const Lines& a, const Lines& b)
{
    Lines both;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::inserter(both, both.end()));
    return both;
}

std::string problemsOf(FileSystem& files, const std::string& password)
{
    std::string problems;
    try {
        jet::JetDriver().open(files, reading(password))->check({}, [&](const Problem& problem) {
            if (!problem.harmless)
                problems += problem.where + ": " + problem.text + "\n";
        });
    } catch (const EngineError& error) {
        problems += error.what();
    }
    return problems;
}

/// Repairs damaged bytes and compares with what was right in them before.
void expectMended(const Bytes& original, const Bytes& damaged, const std::string& password,
                  const std::string& what, bool outside = false)
{
    const auto right = dumpsOf(*memoryWith(original), password);
    const auto files = memoryWith(damaged);
    const auto readable = dumpsOf(*files, password);
    const Report report = repair(*files);
    if (report.error != 0) {
        EXPECT_EQ(files->content(kTestFile), damaged) << what << " is as it was";
        EXPECT_FALSE(files->exists(kAside)) << what;
        EXPECT_TRUE(report.error == 3343 || report.error == 3197) << what << ": " << report.text;
        EXPECT_TRUE(readable.empty())
            << what << " could be read, but not repaired: " << report.text;
        return;
    }
    EXPECT_EQ(problemsOf(*files, password), "") << what << "\n" << report.text;
    if (files->content(kTestFile) != damaged) {
        ASSERT_TRUE(files->exists(kAside)) << what;
        EXPECT_EQ(files->content(kAside), damaged) << what;
    }
    const auto now = dumpsOf(*files, password);
    Lines everything;  // a table that lost its name has another now
    for (const auto& [table, lines] : now)
        everything.insert(lines.begin(), lines.end());
    for (const auto& [table, lines] : readable) {
        const auto wanted = right.find(table);
        if (wanted == right.end() ||
            report.text.find("table " + table + ": Its field") != std::string::npos)
            continue;
        const Lines kept = common(lines, wanted->second);
        const auto mended = now.find(table);
        const Lines found = common(kept, mended == now.end() ? everything : mended->second);
        EXPECT_EQ(found.size(), kept.size()) << what << ", table " << table << "\n" << report.text;
    }
    const Verdict verdict = outside ? outsideCheck(files->content(kTestFile), password) : Verdict{};
    if (verdict.available) {
        EXPECT_TRUE(verdict.sound) << what << ": " << verdict.output;
    }
}

TEST(Repair, damagedFilesOfTheCorpusAreSoundAfterwards)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    const std::map<std::string, int> whole{
        {"bad/jet3-truncated.mdb", 85},     {"bad/jet3-index-loop.mdb", 120},
        {"bad/jet3-index-order.mdb", 120},  {"bad/jet3-count.mdb", 120},
        {"bad/jet3-map.mdb", 120},          {"bad/jet3-memo-pointer.mdb", 119},
        {"bad/jet3-tdef-length.mdb", 120},  {"bad/jet3-zero-page.mdb", 86},
        {"bad/jet4-index-loop.mdb", 120},   {"bad/jet4-map.mdb", 120},
        {"bad/jet4-memo-pointer.mdb", 119}, {"bad/jet4-zero-page.mdb", 65}};
    for (const Json& entry : corpusManifest().list) {
        const auto wanted = whole.find(entry["file"].text);
        if (wanted == whole.end())
            continue;
        const Bytes damaged = readBytes(corpusFolder() + entry["file"].text);
        const Bytes dump = readBytes(corpusFolder() + entry["tables"].list[0]["dump"].text);
        Lines right;
        std::istringstream in(std::string(dump.begin(), dump.end()));
        std::string line;
        for (std::getline(in, line); std::getline(in, line);)
            right.insert(line);
        const auto files = memoryWith(damaged);
        const Report report = repair(*files);
        EXPECT_EQ(report.error, 0) << wanted->first << ": " << report.text;
        EXPECT_EQ(problemsOf(*files, ""), "") << wanted->first << "\n" << report.text;
        EXPECT_EQ(files->content(kAside), damaged);
        EXPECT_EQ(static_cast<int>(common(dumpsOf(*files, "")["People"], right).size()),
                  wanted->second)
            << wanted->first << "\n"
            << report.text;
        EXPECT_EQ(report.losses == 0, wanted->second == 120) << wanted->first << "\n"
                                                             << report.text;
        const Verdict verdict = outsideCheck(files->content(kTestFile));
        if (verdict.available) {
            EXPECT_TRUE(verdict.sound) << wanted->first << ": " << verdict.output;
        }
    }
}

/// Whatever else a check finds in them, their records stay as they are.
TEST(Repair, otherProgramsFilesLoseNothing)
{
    const auto names = jet::corpusNames();
    if (names.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    for (const std::string& name : names) {
        const Bytes content = jet::corpusFile(name);
        const std::string password = jet::corpusPassword(name);
        expectMended(content, content, password, name);
        const auto files = memoryWith(content);
        EXPECT_EQ(repair(*files).losses, 0) << name;
        EXPECT_EQ(dumpsOf(*files, password), dumpsOf(*memoryWith(content), password)) << name;
    }
}

class Mended : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        if (corpusFolder().empty())
            GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
        original_ = jet::corpusFile(GetParam());
        password_ = jet::corpusPassword(GetParam());
        page_ = original_[0x14] == 0 ? 2048 : 4096;
        ASSERT_FALSE(original_.empty());
    }
    Bytes original_;
    std::string password_;
    std::size_t page_ = 0;
};

TEST_P(Mended, whateverPageIsZero)
{
    const std::size_t pages = original_.size() / page_;
    const std::size_t step = std::max<std::size_t>(1, pages / 40);
    for (std::size_t page = 1; page < pages; page += step) {
        Bytes damaged = original_;
        std::fill_n(damaged.begin() + static_cast<long>(page * page_), page_, std::uint8_t{0});
        expectMended(original_, damaged, password_, "page " + std::to_string(page),
                     page == 1 + 16 * step);
    }
}

TEST_P(Mended, whateverBitsAreWrong)
{
    const char* rounds = std::getenv("VELNOR_RANDOM_OPS");
    std::mt19937 random(11);
    for (int round = 0; round < (rounds ? std::atoi(rounds) : 40); ++round) {
        Bytes damaged = original_;
        const int faults = 1 + static_cast<int>(random() % 12);
        for (int i = 0; i < faults; ++i) {
            const std::size_t start = page_ * (1 + random() % (damaged.size() / page_ - 1));
            const std::size_t at = start + (random() % 2 ? random() % 64 : random() % page_);
            if (random() % 2)
                damaged[at] ^= static_cast<std::uint8_t>(1u << random() % 8);
            else
                damaged[at] = static_cast<std::uint8_t>(random());
        }
        expectMended(original_, damaged, password_, "round " + std::to_string(round), round == 1);
    }
}

TEST_P(Mended, whereverTheFileEnds)
{
    for (std::size_t part = 4; part < 24; ++part) {
        const Bytes damaged(original_.begin(),
                            original_.begin() + static_cast<long>(original_.size() * part / 24));
        expectMended(original_, damaged, password_, "part " + std::to_string(part), part == 9);
    }
}

INSTANTIATE_TEST_SUITE_P(Files, Mended,
                         ::testing::Values("jahlborn-delTestV2003.mdb",
                                           "jahlborn-delColTestV1997.mdb",
                                           "jahlborn-overflowTestV2000.mdb",
                                           "jahlborn-indexTestV1997.mdb", "own-jet3-password.mdb",
                                           "masspe-test.mdb"));

class Repairing : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files_, request);
        const auto store = driver_.open(files_, writing());
        TableLayout layout;
        layout.name = "Notes";
        layout.fields.resize(3);
        layout.fields[0].name = "ID";
        layout.fields[0].type = FieldType::Long;
        layout.fields[0].autonumber = true;
        layout.fields[1].name = "Name";
        layout.fields[1].size = 60;
        layout.fields[2].name = "Text";
        layout.fields[2].type = FieldType::Memo;
        IndexDef key, name;
        key.name = "PrimaryKey";
        key.fields = {{"ID", false}};
        key.primary = key.unique = key.required = true;
        name.name = "Name";
        name.fields = {{"Name", false}};
        layout.indexes = {key, name};
        store->createTable(layout);
        const auto writer = store->writer("Notes");
        for (int i = 0; i < 300; ++i) {
            const std::string text(static_cast<std::size_t>(i * 97 % 5000), 't');
            const std::string own = "name " + std::to_string(i);
            std::vector<ValueView> row(3);
            row[1] = ValueView::text(own);
            row[2] = ValueView::text(text);
            writer->insert(row);
        }
        store->commit();
    }
    jet::JetDriver driver_;
    MemoryFileSystem files_;
};

TEST_P(Repairing, aSoundFileIsLeftAsItIs)
{
    const Bytes before = files_.content(kTestFile);
    const Report report = repair(files_);
    EXPECT_EQ(report.error, 0);
    EXPECT_EQ(report.losses, 0);
    EXPECT_EQ(files_.content(kTestFile), before);
    EXPECT_FALSE(files_.exists(kAside));
}

TEST_P(Repairing, aProtectedFileIsMendedWithoutItsPasswordAndStaysProtected)
{
    driver_.open(files_, writing())->changePassword("secret");
    Bytes damaged = files_.content(kTestFile);
    damaged.resize(damaged.size() - 8192);
    files_.put(kTestFile, damaged);
    EXPECT_EQ(repair(files_).error, 0);
    EXPECT_TRUE(files_.exists(kAside));
    EXPECT_THROW(driver_.open(files_, reading()), EngineError);
    EXPECT_EQ(problemsOf(files_, "secret"), "");
}

TEST_P(Repairing, aFileInUseIsRefused)
{
    const auto store = driver_.open(files_, reading());
    EXPECT_EQ(repair(files_).error, 3045);
}

TEST_P(Repairing, whatIsNoDatabaseIsLeftAlone)
{
    files_.put(kTestFile, Bytes(20000, 7));
    EXPECT_EQ(repair(files_).error, 3343);
    EXPECT_EQ(files_.content(kTestFile), Bytes(20000, 7));
    EXPECT_FALSE(files_.exists(std::string(kTestFile) + "-new"));
}

TEST_P(Repairing, copiesOfDamagedFilesDoNotReplaceEachOther)
{
    Bytes damaged = files_.content(kTestFile);
    damaged.resize(damaged.size() - 8192);
    files_.put(kAside, Bytes{1, 2});
    files_.put(kTestFile, damaged);
    EXPECT_EQ(repair(files_).error, 0);
    EXPECT_EQ(files_.content(kAside), (Bytes{1, 2}));
    EXPECT_EQ(files_.content("C:\\TEST-damaged-2.MDB"), damaged);
}

TEST_P(Repairing, aRepairedTableGoesOn)
{
    Bytes damaged = files_.content(kTestFile);
    damaged.resize(damaged.size() - 8192);
    files_.put(kTestFile, damaged);
    ASSERT_EQ(repair(files_).error, 0);
    {
        const auto store = driver_.open(files_, writing());
        const auto writer = store->writer("Notes");
        const std::vector<ValueView> row(3);
        for (int i = 0; i < 50; ++i)
            writer->insert(row);
        store->commit();
    }
    EXPECT_EQ(problemsOf(files_, ""), "");
    const Verdict verdict = outsideCheck(files_.content(kTestFile));
    if (verdict.available) {
        EXPECT_TRUE(verdict.sound) << verdict.output;
    }
}

TEST_P(Repairing, aFailingDiskLeavesTheDamagedFileOrTheMendedOne)
{
    Bytes damaged = files_.content(kTestFile);
    damaged.resize(damaged.size() - 8192);
    files_.put(kTestFile, damaged);
    ASSERT_EQ(repair(files_).error, 0);
    const Bytes mended = files_.content(kTestFile);
    int failures = 0;
    for (const bool cut : {false, true})
        for (long n = 1;; ++n) {
            ASSERT_LT(n, 2000);
            FaultyDisk disk(static_cast<unsigned>(n));
            disk.put(kTestFile, damaged);
            if (cut)
                disk.cutAt(n);
            else
                disk.failAt(n, RunErrorNumber::DiskFull);
            try {
                failures += repair(disk).error != 0;
            } catch (const RunError&) {
                ++failures;
            }
            const bool done = cut ? !disk.wasCut() : !disk.hasFailed();
            if (cut)
                disk.restart();
            const Bytes now = disk.content(kTestFile);
            EXPECT_TRUE(now == damaged || now == mended) << n;
            if (now == mended) {
                EXPECT_EQ(disk.content(kAside), damaged) << n;
            }
            if (done)
                break;
        }
    EXPECT_GT(failures, 10);
}

INSTANTIATE_TEST_SUITE_P(Jet, Repairing, ::testing::Values(3, 4));

}  // namespace
}  // namespace velnor::testing
