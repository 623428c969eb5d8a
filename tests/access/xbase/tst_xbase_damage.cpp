// Real files with bits turned and ends cut off: an answer or an error, never a crash or a hang.
#include "tests/access/xbase/xbase_testing.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

using namespace velnor;
using namespace velnor::xbase_testing;

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

Bytes contentOf(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

struct Sample {
    std::string name;
    Bytes table, memo;
    std::string memoPath;
};

/// Tables of the corpus up to 64 KiB, with their memo files.
std::vector<Sample> samples()
{
    std::vector<Sample> found;
    const char* corpus = std::getenv("VELNOR_CORPUS");
    if (!corpus || !fs::is_directory(fs::path(corpus) / "xbase"))
        return found;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(corpus) / "xbase")) {
        const std::string extension = entry.path().extension();
        if ((extension != ".dbf" && extension != ".DBF") || entry.file_size() > 65536)
            continue;
        Sample sample{entry.path(), contentOf(entry.path()), {}, "C:\\T.DBT"};
        for (const char* memo : {".dbt", ".DBT", ".fpt", ".FPT"}) {
            const fs::path path = fs::path(entry.path()).replace_extension(memo);
            if (!fs::exists(path) || fs::file_size(path) > (1u << 20))
                continue;
            sample.memo = contentOf(path);
            if (memo[1] == 'f' || memo[1] == 'F')
                sample.memoPath = "C:\\T.FPT";
        }
        found.push_back(std::move(sample));
    }
    return found;
}

std::unique_ptr<MemoryFileSystem> filesOf(const Bytes& table, const Sample& sample,
                                          const Bytes& memo)
{
    auto files = std::make_unique<MemoryFileSystem>(64u << 20);
    files->put("C:\\T.DBF", table);
    if (!memo.empty())
        files->put(sample.memoPath, memo);
    return files;
}

/// Opens, reads, counts, checks, writes. Only EngineError and RunError may come.
void useTable(FileSystem& files)
{
    try {
        const auto store = openStore(files, "FoxPro 3.0;");
        rowsOf(*store, "T");
        store->recordCount("T");
        faultsOf(*store, "T");
        const auto writer = store->writer("T");
        const auto cursor = store->cursor("T", std::nullopt);
        if (cursor->first())
            writer->update(cursor->row(), {});
        writer->insert(std::vector<ValueView>(store->layout("T").fields.size()));
        store->commit();
    } catch (const EngineError&) {
    } catch (const RunError&) {
    }
}

class Damage : public ::testing::Test {
protected:
    void SetUp() override
    {
        samples_ = samples();
        if (samples_.empty())
            GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
        ASSERT_GT(samples_.size(), 50u);
    }
    std::vector<Sample> samples_;
};

}  // namespace

TEST_F(Damage, turnedBitsInTheHead)
{
    std::mt19937 random(3);
    for (const Sample& sample : samples_)
        for (int i = 0; i < 40; ++i) {
            Bytes table = sample.table;
            for (int bits = 1 + i % 3; bits > 0; --bits)
                table[random() % std::min<std::size_t>(table.size(), 400)] ^=
                    static_cast<std::uint8_t>(1u << random() % 8);
            useTable(*filesOf(table, sample, sample.memo));
        }
}

TEST_F(Damage, turnedBitsInTheMemoFile)
{
    std::mt19937 random(5);
    for (const Sample& sample : samples_)
        for (int i = 0; i < 40 && !sample.memo.empty(); ++i) {
            Bytes memo = sample.memo;
            for (int bits = 1 + i % 20; bits > 0; --bits) {
                const std::size_t reach = bits % 2 ? memo.size() : 24;
                memo[random() % std::min(reach, memo.size())] ^=
                    static_cast<std::uint8_t>(1u << random() % 8);
            }
            useTable(*filesOf(sample.table, sample, memo));
        }
}

TEST_F(Damage, endsCutOff)
{
    std::mt19937 random(7);
    for (const Sample& sample : samples_)
        for (int i = 0; i < 30; ++i) {
            Bytes table = sample.table, memo = sample.memo;
            const std::size_t reach =
                i % 2 ? table.size() : std::min<std::size_t>(table.size(), 600);
            table.resize(random() % (reach + 1));
            if (!memo.empty() && i % 3 == 0)
                memo.resize(random() % memo.size());
            useTable(*filesOf(i % 5 == 0 ? sample.table : table, sample, memo));
        }
}

TEST_F(Damage, writingAWholeFileLeavesItsOldRecordsAsTheyWere)
{
    int written = 0;
    for (const Sample& sample : samples_) {
        const auto files = filesOf(sample.table, sample, sample.memo);
        std::vector<std::string> before, after;
        try {
            {
                const auto store = openStore(*files, "FoxPro 3.0;");
                before = rowsOf(*store, "T");
                store->writer("T")->insert(
                    std::vector<ValueView>(store->layout("T").fields.size()));
                store->commit();
            }
            after = rowsOf(*openStore(*files, "FoxPro 3.0;", true), "T");
        } catch (const EngineError&) {
            continue;  // refused: dBASE II, a missing memo file, damage
        }
        ++written;
        ASSERT_EQ(after.size(), before.size() + 1) << sample.name;
        after.pop_back();
        EXPECT_EQ(after, before) << sample.name;
    }
    EXPECT_GT(written, 40);
}
