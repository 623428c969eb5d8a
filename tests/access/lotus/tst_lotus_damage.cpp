// Real worksheets with bits turned and ends cut off: an answer or an error, never a crash or a
// hang; and real worksheets written, with their old cells as they were.
#include "tests/access/lotus/lotus_testing.h"
#include "tests/access/support/damaged_samples.h"

using namespace velnor;
using namespace velnor::lotus_testing;

namespace {

/// Opens, reads, checks, writes. Only EngineError and RunError may come.
void useFile(const Bytes& bytes)
{
    MemoryFileSystem files(64u << 20);
    files.put(kFile, bytes);
    try {
        const auto store = openStore(files);
        findingsOf(*store);
        for (const std::string& table : tablesOf(*store)) {
            const std::size_t fields = store->layout(table).fields.size();
            rowsOf(*store, table);
            try {
                const auto writer = store->writer(table);
                const std::vector<ValueView> row(fields, words("x"));
                writer->insert(row);
                if (fields > 0)
                    writer->update(1, std::array{FieldChange{0, ValueView()}});
            } catch (const EngineError&) {
            }
        }
        store->commit();
    } catch (const EngineError&) {
    } catch (const RunError&) {
    }
}

class LotusDamage : public ::testing::Test {
protected:
    void SetUp() override
    {
        samples_ = samplesOf("wk4", [](const std::filesystem::path& path) {
            return path.extension() != ".csv" && path.extension() != ".json";
        });
        if (samples_.empty())
            GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
        ASSERT_GT(samples_.size(), 20u);
    }
    std::vector<Sample> samples_;
};

}  // namespace

TEST_F(LotusDamage, turnedBits)
{
    useWithTurnedBits(samples_, 40, 300, useFile);
}

TEST_F(LotusDamage, endsCutOff)
{
    useCutOff(samples_, 20, useFile);
}

TEST_F(LotusDamage, anAddedRecordLeavesTheOldCellsAsTheyWere)
{
    int written = 0;
    for (const Sample& sample : samples_) {
        MemoryFileSystem files;
        files.put(kFile, sample.bytes);
        try {
            const auto store = openStore(files);
            const std::string table = tablesOf(*store).front();
            store->writer(table)->insert(
                std::vector<ValueView>(store->layout(table).fields.size(), words("added")));
            store->commit();
        } catch (const EngineError&) {
            continue;  // only read
        }
        ++written;
        MemoryFileSystem old;
        old.put(kFile, sample.bytes);
        const auto was = openStore(old, true, "cells=yes"),
                   is = openStore(files, true, "cells=yes");
        ASSERT_EQ(tablesOf(*was), tablesOf(*is));
        for (const std::string& table : tablesOf(*was)) {
            const Lines before = rowsOf(*was, table);
            Lines after = rowsOf(*is, table);
            if (table == tablesOf(*was).front()) {
                EXPECT_THAT(after.back(), ::testing::HasSubstr("'added'"));
                after.pop_back();
            }
            EXPECT_EQ(after, before) << sample.name << " " << table;
        }
    }
    EXPECT_GT(written, 6);
}
