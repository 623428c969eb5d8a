// Rows byte by byte: real examples, and rows of every length.
#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/row_codec.h"

namespace velnor::jet {
namespace {

using Bytes = std::vector<std::uint8_t>;

Column column(std::uint8_t type, int id, int place, int length, bool fixed)
{
    Column c;
    c.name = "C" + std::to_string(id);
    c.type = type;
    c.id = static_cast<std::uint16_t>(id);
    c.ordinal = c.id;
    c.length = static_cast<std::uint16_t>(length);
    c.flags = fixed ? column_flag::kFixed : 0;
    c.fixedOffset = static_cast<std::uint16_t>(fixed ? place : 0);
    c.variableSlot = static_cast<std::uint16_t>(fixed ? 0 : place);
    return c;
}

TableDef tableOf(std::vector<Column> columns, int slots)
{
    TableDef def;
    def.maxColumns = static_cast<std::uint16_t>(columns.size());
    def.variableColumns = static_cast<std::uint16_t>(slots);
    def.columns = std::move(columns);
    return def;
}

const CodePage& ansi()
{
    return *CodePage::find(1252);
}

std::string textOf(const RowReader& reader, int field)
{
    std::string scratch;
    const ValueView v = reader.value(field, scratch);
    return v.isNull() ? "(null)" : std::string(v.asText());
}

TEST(RowCodec, aDamagedDefinitionLaysOutNoRecord)
{
    for (const Column& damaged : {column(column_type::kText, 0, 0xFFFF, 100, false),
                                  column(column_type::kText, 0xFFFF, 0, 100, false),
                                  column(column_type::kLong, 0, 0xFFFE, 4, true)}) {
        const RowPlan plan(kJet4, ansi(), tableOf({damaged}, 1));
        EXPECT_THROW(RowWriterBuffer{plan}, EngineError);
    }
}

TEST(RowCodec, readsAJet4RowOfARealFile)
{
    const TableDef def = tableOf({column(column_type::kText, 0, 0, 100, false),
                                  column(column_type::kText, 1, 1, 100, false)},
                                 2);
    const RowPlan plan(kJet4, ansi(), def);
    const Bytes row{2, 0, 0x7A, 0, 0x79, 0, 6, 0, 4, 0, 2, 0, 2, 0, 3};
    RowReader reader(plan);
    ASSERT_TRUE(reader.open(row));
    EXPECT_EQ(textOf(reader, 0), "z");
    EXPECT_EQ(textOf(reader, 1), "y");
    RowWriterBuffer buffer(plan);
    buffer.set(0, ValueView::text("z"));
    buffer.set(1, ValueView::text("y"));
    const auto built = buffer.build();
    EXPECT_EQ(Bytes(built.begin(), built.end()), row);
}

TEST(RowCodec, readsAJet3RowOfARealFile)
{
    const TableDef def = tableOf(
        {column(column_type::kLong, 0, 0, 4, true), column(column_type::kLong, 1, 4, 4, true),
         column(column_type::kText, 2, 0, 50, false), column(column_type::kText, 3, 1, 50, false)},
        2);
    const RowPlan plan(kJet3, ansi(), def);
    const Bytes row{4,   0,   0,   0,   0,   2,    0,    0,    0, 'f', 'o',
                    'o', 'f', 'o', 'o', '2', 0x10, 0x0C, 0x09, 2, 0x0F};
    RowReader reader(plan);
    ASSERT_TRUE(reader.open(row));
    EXPECT_EQ(textOf(reader, 2), "foo");
    EXPECT_EQ(textOf(reader, 3), "foo2");
    RowWriterBuffer buffer(plan);
    buffer.set(0, ValueView::integer(0));
    buffer.set(1, ValueView::integer(2));
    buffer.set(2, ValueView::text("foo"));
    buffer.set(3, ValueView::text("foo2"));
    const auto built = buffer.build();
    EXPECT_EQ(Bytes(built.begin(), built.end()), row);
}

TEST(RowCodec, columnsAddedAfterTheRowAreNull)
{
    const TableDef old = tableOf({column(column_type::kLong, 0, 0, 4, true)}, 0);
    const RowPlan oldPlan(kJet4, ansi(), old);
    RowWriterBuffer buffer(oldPlan);
    buffer.set(0, ValueView::integer(5));
    const auto built = buffer.build();
    const Bytes row(built.begin(), built.end());
    const TableDef grown = tableOf(
        {column(column_type::kLong, 0, 0, 4, true), column(column_type::kText, 1, 0, 100, false),
         column(column_type::kLong, 2, 4, 4, true), column(column_type::kBoolean, 3, 0, 1, true)},
        1);
    const RowPlan plan(kJet4, ansi(), grown);
    RowReader reader(plan);
    ASSERT_TRUE(reader.open(row));
    std::string scratch;
    EXPECT_EQ(reader.value(0, scratch).asInteger(), 5);
    EXPECT_TRUE(reader.value(1, scratch).isNull());
    EXPECT_TRUE(reader.value(2, scratch).isNull());
    EXPECT_FALSE(reader.value(3, scratch).asBoolean());
}

TEST(RowCodec, anEmptyTextIsNotNull)
{
    for (const JetFormat* format : {&kJet3, &kJet4}) {
        const TableDef def = tableOf({column(column_type::kText, 0, 0, 100, false),
                                      column(column_type::kText, 1, 1, 100, false)},
                                     2);
        const RowPlan plan(*format, ansi(), def);
        RowWriterBuffer buffer(plan);
        buffer.set(0, ValueView::text(""));
        const auto row = buffer.build();
        RowReader reader(plan);
        ASSERT_TRUE(reader.open(row));
        EXPECT_EQ(textOf(reader, 0), "");
        EXPECT_EQ(textOf(reader, 1), "(null)");
    }
}

/// One byte offsets need help from 256 bytes on: every length around each border must come back.
TEST(RowCodec, rowsOfEveryLengthComeBack)
{
    for (const JetFormat* format : {&kJet3, &kJet4}) {
        std::vector<Column> columns;
        for (int i = 0; i < 12; ++i)
            columns.push_back(column(column_type::kBinary, i, i, 255, false));
        const TableDef def = tableOf(std::move(columns), 12);
        const RowPlan plan(*format, ansi(), def);
        RowWriterBuffer buffer(plan);
        RowReader reader(plan);
        std::mt19937 random(1);
        for (int round = 0; round < 4000; ++round) {
            buffer.clear();
            std::vector<Bytes> values(12);
            std::vector<bool> null(12);
            std::size_t left = static_cast<std::size_t>(round) % 1960;
            for (int i = 0; i < 12; ++i) {
                null[i] = random() % 6 == 0;
                const std::size_t most = std::min<std::size_t>(left, 255);
                values[i].assign(null[i] ? 0 : (i == 11 ? most : random() % (most + 1)),
                                 static_cast<std::uint8_t>(i + 1));
                left -= values[i].size();
                if (!null[i])
                    buffer.set(i, ValueView::bytes(values[i]));
            }
            const auto row = buffer.build();
            ASSERT_EQ(row.size(), buffer.size());
            ASSERT_TRUE(reader.open(row));
            EXPECT_TRUE(reader.sound());
            for (int i = 0; i < 12; ++i) {
                ASSERT_EQ(reader.isNull(i), null[i]);
                if (null[i])
                    continue;
                const auto raw = reader.raw(i);
                ASSERT_TRUE(raw);
                ASSERT_EQ(Bytes(raw->begin(), raw->end()), values[i]) << "round " << round;
            }
        }
    }
}

TEST(RowCodec, damagedRowsNeverReadOutside)
{
    for (const JetFormat* format : {&kJet3, &kJet4}) {
        const TableDef def = tableOf({column(column_type::kLong, 0, 0, 4, true),
                                      column(column_type::kText, 1, 0, 100, false),
                                      column(column_type::kGuid, 2, 4, 16, true),
                                      column(column_type::kDecimal, 3, 1, 9, false)},
                                     2);
        const RowPlan plan(*format, ansi(), def);
        RowReader reader(plan);
        std::mt19937 random(2);
        std::string scratch;
        for (int round = 0; round < 100000; ++round) {
            // Of its own size on the heap, so that a sanitizer sees one byte too far.
            Bytes row(random() % 60);
            for (std::uint8_t& byte : row)
                byte = static_cast<std::uint8_t>(random() % 3 ? random() % 8 : random());
            if (reader.open(row))
                for (int i = 0; i < 4; ++i)
                    reader.value(i, scratch);
        }
    }
}

TEST(RowCodec, decimalsAreBroughtToTheScaleOfTheColumn)
{
    TableDef def = tableOf({column(column_type::kDecimal, 0, 0, 17, true)}, 0);
    def.columns[0].scale = 2;
    const RowPlan plan(kJet4, ansi(), def);
    RowWriterBuffer buffer(plan);
    RowReader reader(plan);
    std::string scratch;
    const auto through = [&](ValueView v) {
        buffer.clear();
        buffer.set(0, v);
        EXPECT_TRUE(reader.open(buffer.build()));
        return reader.value(0, scratch);
    };
    EXPECT_EQ(through(ValueView::decimal(false, 0, 15, 1)).decimalLow(), 150u);
    EXPECT_EQ(through(ValueView::decimal(true, 0, 12345, 4)).decimalLow(), 123u);
    EXPECT_TRUE(through(ValueView::decimal(true, 0, 12345, 4)).decimalNegative());
    EXPECT_EQ(through(ValueView::decimal(false, 0, 12350, 4)).decimalLow(), 124u);
    const ValueView big = through(ValueView::decimal(false, 0x01000000, 5, 2));
    EXPECT_EQ(big.decimalHigh(), 0x01000000u);
    EXPECT_EQ(big.decimalLow(), 5u);
}

TEST(RowCodec, guidsAreReadAsTheyAreWritten)
{
    const std::string text = "{12345678-ABCD-EF01-2345-6789ABCDEF01}";
    const auto bytes = guidBytes(text);
    ASSERT_TRUE(bytes);
    EXPECT_EQ((*bytes)[0], 0x78);
    EXPECT_EQ((*bytes)[4], 0xCD);
    EXPECT_EQ((*bytes)[8], 0x23);
    std::string out;
    EXPECT_EQ(guidText(*bytes, out), text);
    EXPECT_EQ(guidBytes("12345678-abcd-ef01-2345-6789abcdef01"), bytes);
    for (const char* wrong :
         {"", "{}", "12345678ABCDEF0123456789ABCDEF0100", "{12345678-ABCD-EF01-2345-6789ABCDEF0G}"})
        EXPECT_FALSE(guidBytes(wrong)) << wrong;
}

TEST(RowCodec, aSingleShowsItsShortestDecimal)
{
    EXPECT_EQ(shortestDouble(0.1f), 0.1);
    EXPECT_EQ(shortestDouble(-99.85714f), -99.85714);
    EXPECT_EQ(shortestDouble(16777216.0f), 16777216.0);
    EXPECT_EQ(shortestDouble(-8540982000.0f), -8540982000.0);
    std::mt19937 random(4);
    for (int i = 0; i < 200000; ++i) {
        const std::uint32_t bits = static_cast<std::uint32_t>(random());
        float single;
        std::memcpy(&single, &bits, sizeof single);
        if (single == single) {
            ASSERT_EQ(static_cast<float>(shortestDouble(single)), single);
        }
    }
}

}  // namespace
}  // namespace velnor::jet
