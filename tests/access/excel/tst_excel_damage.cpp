// Real workbooks with bits turned and ends cut off: an answer or an error, never a crash or a hang;
// and real workbooks written, with their old records as they were.
#include "tests/access/excel/excel_testing.h"
#include "tests/access/support/damaged_samples.h"

using namespace velnor;
using namespace velnor::excel_testing;

namespace {

/// Opens, reads, checks, writes. Only EngineError and RunError may come.
void useFile(const Bytes& bytes)
{
    MemoryFileSystem files(64u << 20);
    files.put(kFile, bytes);
    try {
        const auto store = openStore(files);
        faultsOf(*store);
        for (const std::string& table : tablesOf(*store)) {
            const std::size_t fields = store->layout(table).fields.size();
            const auto cursor = store->cursor(table, std::nullopt);
            int rows = 0;
            for (bool on = cursor->first(); on && rows < 300; on = cursor->next(), ++rows)
                for (std::size_t i = 0; i < fields; ++i)
                    shown(cursor->field(static_cast<int>(i)));
            try {
                const auto writer = store->writer(table);
                if (fields > 0)
                    writer->insert(Row(fields));
                if (cursor->first() && fields > 0)
                    writer->update(cursor->row(), std::array{FieldChange{0, ValueView()}});
            } catch (const EngineError&) {
            }
        }
        store->commit();
    } catch (const EngineError&) {
    } catch (const RunError&) {
    }
}

class ExcelDamage : public ::testing::Test {
protected:
    void SetUp() override
    {
        samples_ = samplesOf("xls", [](const std::filesystem::path& path) {
            const std::string extension = path.extension();
            return (extension == ".xls" || extension == ".XLS") && file_size(path) <= 60'000;
        });
        if (samples_.empty())
            GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
        ASSERT_GT(samples_.size(), 50u);
    }
    std::vector<Sample> samples_;
};

}  // namespace

TEST_F(ExcelDamage, turnedBits)
{
    useWithTurnedBits(samples_, 24, 1536, useFile);
}

TEST_F(ExcelDamage, endsCutOff)
{
    useCutOff(samples_, 10, useFile);
}

TEST_F(ExcelDamage, anAddedRecordLeavesTheOldOnesAsTheyWere)
{
    int written = 0;
    for (const Sample& sample : samples_) {
        MemoryFileSystem old, files;
        old.put(kFile, sample.bytes);
        files.put(kFile, sample.bytes);
        std::string changed;
        try {
            const auto store = openStore(files);
            for (const std::string& table : tablesOf(*store))
                if (const auto fields = store->layout(table).fields; !fields.empty()) {
                    Row values;
                    for (const FieldDef& field : fields)
                        values.push_back(valueKindOf(field.type) == ValueKind::Text ? text("added")
                                         : field.type == FieldType::Double ? ValueView::real(1)
                                                                           : ValueView());
                    store->writer(table)->insert(values);
                    changed = table;
                    break;
                }
            store->commit();
        } catch (const EngineError&) {
            continue;  // only read
        }
        ++written;
        const auto was = openStore(old, true), is = openStore(files, true);
        ASSERT_EQ(tablesOf(*was), tablesOf(*is)) << sample.name;
        EXPECT_LE(faultsOf(*is).size(), faultsOf(*was).size()) << sample.name;
        for (const std::string& table : tablesOf(*was)) {
            const Lines before = rowsOf(*was, table);
            Lines after = rowsOf(*is, table);
            if (table == changed && after.size() > before.size())
                after.resize(before.size());
            EXPECT_EQ(after, before) << sample.name << " " << table;
        }
    }
    EXPECT_GT(written, 40);
}
