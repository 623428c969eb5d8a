// Every key of every index of every real file, made anew from its record; every compressed text and
// every property block, taken apart and put together again.
#include <gtest/gtest.h>

#include <map>

#include "access/formats/jet/text_compression.h"
#include "tests/access/jet/open_corpus.h"

namespace velnor::jet {
namespace {

std::string hex(KeyView bytes)
{
    std::string out;
    for (const std::uint8_t b : bytes) {
        constexpr char digits[] = "0123456789ABCDEF";
        out += {digits[b >> 4], digits[b & 15], ' '};
    }
    return out;
}

struct Counts {
    int keys = 0, unsure = 0, wrong = 0;
};

void compareIndex(const std::string& file, std::shared_ptr<JetTable> table, int real,
                  std::map<int, Counts>& byType)
{
    OpenIndex& index = table->index(real);
    const JetFormat& format = table->file().format();
    KeyBuilder keys(!format.wideText, &table->file().codePage(), index.keyColumns);
    PhysicalCursor cursor(table);
    IndexWalker walker(*index.tree);
    std::vector<ValueView> values;
    for (bool there = walker.first(); there; there = walker.next()) {
        if (!cursor.moveTo(rowIdOf(walker.row()))) {
            ADD_FAILURE() << file << " " << table->name() << ": no record for an entry";
            continue;
        }
        values.clear();
        for (const int field : index.fields)
            values.push_back(cursor.field(field));
        const KeyView made = keys.build(values);
        Counts& counts = byType[index.keyColumns[0].type];
        ++counts.keys;
        const bool same = std::ranges::equal(made, walker.key());
        if (!keys.sure())
            ++counts.unsure;
        else if (!same && ++counts.wrong)
            std::printf("%s %s %d\n  stored %s\n  made   %s\n", file.c_str(), table->name().c_str(),
                        real, hex(walker.key()).c_str(), hex(made).c_str());
    }
}

TEST(Corpus, everyKeyIsWhatItsRecordGives)
{
    const auto names = corpusNames();
    if (names.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    std::map<int, Counts> byType;
    for (const std::string& name : names) {
        OpenCorpusFile file(name);
        for (const auto& table : file.tables())
            for (int real = 0; real < table->indexCount(); ++real)
                compareIndex(name, table, real, byType);
    }
    int wrong = 0;
    for (const auto& [type, counts] : byType) {
        wrong += counts.wrong;
        std::printf("first column of type %d: %d keys, %d unsure, %d wrong\n", type, counts.keys,
                    counts.unsure, counts.wrong);
    }
    // One row of testUnicodeCompV2003 was written by a program that counts expansions once.
    EXPECT_LE(wrong, 1);
    EXPECT_GT(byType[column_type::kText].keys, 5000);
    EXPECT_LT(byType[column_type::kText].unsure, byType[column_type::kText].keys / 10);
}

TEST(Corpus, everyCompressedTextIsCompressedAlike)
{
    const auto names = corpusNames();
    if (names.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    int texts = 0;
    for (const std::string& name : names) {
        OpenCorpusFile file(name);
        if (!file.file().format().wideText)
            continue;
        for (const auto& table : file.tables()) {
            PhysicalCursor cursor(table);
            RowReader reader(table->plan());
            for (bool there = cursor.first(); there; there = cursor.next()) {
                const auto row = table->row(pointerOf(cursor.row()));
                ASSERT_TRUE(row && reader.open(row->bytes));
                for (std::size_t f = 0; f < table->plan().fields.size(); ++f) {
                    const auto stored = reader.raw(static_cast<int>(f));
                    const FieldPlan& plan = table->plan().fields[f];
                    if (plan.type != column_type::kText || plan.fixed || !stored)
                        continue;
                    std::string scratch;
                    std::string again;
                    const auto utf8 = decodeText(*stored, scratch);
                    const bool compressed =
                        stored->size() >= 2 && (*stored)[0] == 0xFF && (*stored)[1] == 0xFE;
                    encodeText(utf8, compressed, again);
                    EXPECT_TRUE(std::ranges::equal(
                        again, *stored, {}, [](char c) { return static_cast<std::uint8_t>(c); }))
                        << name << " " << table->name() << " " << utf8 << " " << hex(*stored);
                    ++texts;
                }
            }
        }
    }
    EXPECT_GT(texts, 5000);
}

TEST(Corpus, everyPropertyBlockIsBuiltAlike)
{
    const auto names = corpusNames();
    if (names.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    int blocks = 0;
    for (const std::string& name : names) {
        OpenCorpusFile file(name);
        const auto objects = file.catalog().objectTable();
        const int field = fieldNamed(*objects, "LvProp");
        PhysicalCursor cursor(objects);
        const PropertyText text{!file.file().format().wideText, &file.file().codePage()};
        for (bool there = cursor.first(); there; there = cursor.next()) {
            const ValueView value = cursor.field(field);
            if (value.isNull() || value.asBytes().size() == 0)
                continue;
            const std::string stored(value.asBytes().begin(), value.asBytes().end());
            try {
                const PropertyBlock block = PropertyBlock::parse(value.asBytes(), text);
                EXPECT_EQ(block.build(), stored) << name;
                ++blocks;
            } catch (const EngineError& error) {
                ADD_FAILURE() << name << " " << error.what() << hex(value.asBytes());
            }
        }
    }
    EXPECT_GT(blocks, 100);
}

}  // namespace
}  // namespace velnor::jet
