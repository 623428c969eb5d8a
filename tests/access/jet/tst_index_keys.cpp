// Key bytes of every type, as measured in real files.
#include <gtest/gtest.h>

#include <limits>

#include "access/engine_error.h"
#include "access/formats/jet/index_keys.h"
#include "access/formats/jet/jet_format.h"

namespace velnor::jet {
namespace {

std::string hex(std::span<const std::uint8_t> bytes)
{
    std::string out;
    for (const std::uint8_t b : bytes) {
        constexpr char digits[] = "0123456789ABCDEF";
        if (!out.empty())
            out += ' ';
        out += {digits[b >> 4], digits[b & 15]};
    }
    return out;
}

KeyColumn columnOf(std::uint8_t type, bool descending = false, SortOrder order = {})
{
    return {type, descending, 0, order};
}

std::string keyOf(KeyColumn column, ValueView value, bool jet3 = false)
{
    KeyBuilder builder(jet3, CodePage::find(1252), std::span(&column, 1));
    return hex(builder.build(std::span(&value, 1)));
}

std::string textKey(std::string_view text, bool descending = false)
{
    return keyOf(columnOf(column_type::kText, descending), ValueView::text(text));
}

std::string textKey3(std::string_view text, bool descending = false)
{
    return keyOf(columnOf(column_type::kText, descending), ValueView::text(text), true);
}

bool sure(SortOrder order, std::string_view text, bool jet3 = false, int codePage = 1252)
{
    const KeyColumn column = columnOf(column_type::kText, false, order);
    KeyBuilder builder(jet3, CodePage::find(codePage), std::span(&column, 1));
    return builder.canEncode(0, ValueView::text(text));
}

TEST(TextKeys, ofJet4)
{
    EXPECT_EQ(textKey("M\xC3\xA9xico D.F."), "7F 60 51 75 59 4D 64 07 4F 1C 53 1C 01 02 0E 00");
    EXPECT_EQ(textKey("co-op"), "7F 4D 64 64 66 01 01 01 01 80 0F 06 82 00");
    EXPECT_EQ(textKey(""), "7F 01 00");
    EXPECT_EQ(textKey("", true), "80 FE FF 00");
    EXPECT_TRUE(textKey("ANNE-MARIE").ends_with("01 01 01 01 80 17 06 82 00"));
}

TEST(TextKeys, caseTrailingBlanksAndSharpS_makeNoDifference)
{
    EXPECT_EQ(textKey("stra\xC3\x9F"
                      "e"),
              textKey("STRASSE"));
    EXPECT_EQ(textKey("a"), textKey("A  "));
    EXPECT_NE(textKey("a b"), textKey("ab"));
    EXPECT_NE(textKey(" a"), textKey("a"));
}

TEST(TextKeys, stopAfter255Characters)
{
    EXPECT_EQ(textKey(std::string(255, 'a')), textKey(std::string(300, 'a')));
    EXPECT_EQ(textKey("a" + std::string(254, ' ') + "b"), textKey("a"));
}

TEST(TextKeys, ofJet3)
{
    EXPECT_EQ(textKey3("\xC3\xA9"), "7F 66 04 00");
    EXPECT_EQ(textKey3("M\xC3\xBCller-Stra\xC3\x9F"
                       "e"),
              "7F 6F 78 6D 6D 66 75 1E 76 77 75 60 76 76 66 06 00");
    EXPECT_EQ(textKey3("a"), "7F 60 00");
    EXPECT_EQ(textKey3("a", true), "80 9F FF");
}

TEST(TextKeys, areSureOnlyWhereTheOrderIsKnown)
{
    EXPECT_TRUE(sure({1033, 0, 0}, "K\xC3\xB6ln"));
    EXPECT_TRUE(sure({1031, 0, 0}, "K\xC3\xB6ln"));
    EXPECT_FALSE(sure({1031, 1, 0}, "Koeln")) << "the phone book has an order of its own";
    EXPECT_FALSE(sure({1033, 0, 1}, "a")) << "nor is a later version known";
    EXPECT_TRUE(sure({1029, 0, 0}, "praze"));
    EXPECT_FALSE(sure({1029, 0, 0}, "chata"));
    EXPECT_FALSE(sure({1029, 0, 0}, "\xC5\x99"));
    EXPECT_FALSE(sure({1055, 0, 0}, "Izmir"));
    EXPECT_FALSE(sure({1042, 0, 0}, "a"));
    EXPECT_FALSE(sure({1033, 0, 0}, "\xE3\x81\x82")) << "kana have a part of their own";
    EXPECT_TRUE(sure({1033, 0, 0}, "\xF0\x9F\x98\x80")) << "surrogates add nothing";
    EXPECT_TRUE(sure({1033, 0, 0}, "\xC3\xA9", true));
    EXPECT_FALSE(sure({1055, 0, 0}, "a", true));
    EXPECT_TRUE(sure({1025, 0, 0}, "a", true, 1256));
    EXPECT_FALSE(sure({1033, 0, 0}, "\xE3\x81\x82", true)) << "not in the code page";
}

TEST(NumberKeys, ascendingAndDescending)
{
    EXPECT_EQ(keyOf(columnOf(column_type::kBoolean), ValueView::boolean(true)), "7F 00");
    EXPECT_EQ(keyOf(columnOf(column_type::kBoolean, true), ValueView::boolean(true)), "80 FF");
    EXPECT_EQ(keyOf(columnOf(column_type::kByte), ValueView::integer(200)), "7F C8");
    EXPECT_EQ(keyOf(columnOf(column_type::kInteger), ValueView::integer(-2)), "7F 7F FE");
    EXPECT_EQ(keyOf(columnOf(column_type::kLong), ValueView::integer(1)), "7F 80 00 00 01");
    EXPECT_EQ(keyOf(columnOf(column_type::kLong, true), ValueView::integer(1)), "80 7F FF FF FE");
    EXPECT_EQ(keyOf(columnOf(column_type::kCurrency), ValueView::currency(10000)),
              "7F 80 00 00 00 00 00 27 10");
    EXPECT_EQ(keyOf(columnOf(column_type::kSingle), ValueView::real(1)), "7F BF 80 00 00");
    EXPECT_EQ(keyOf(columnOf(column_type::kDouble), ValueView::real(-1)),
              "7F 40 0F FF FF FF FF FF FF");
    EXPECT_EQ(keyOf(columnOf(column_type::kDouble), ValueView::real(-0.0)),
              keyOf(columnOf(column_type::kDouble), ValueView::real(0.0)));
    EXPECT_EQ(keyOf(columnOf(column_type::kDate), ValueView::date(1)),
              "7F BF F0 00 00 00 00 00 00");
}

TEST(NumberKeys, ofDecimalsAreAtTheScaleOfTheColumn)
{
    KeyColumn column = columnOf(column_type::kDecimal);
    column.scale = 2;
    EXPECT_EQ(keyOf(column, ValueView::decimal(false, 0, 15, 1)),
              "7F FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 96");
    EXPECT_EQ(keyOf(column, ValueView::decimal(true, 0, 150, 2)),
              "7F 00 FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF 69");
}

TEST(ByteKeys, standInChunksOfEight)
{
    const std::uint8_t bytes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const auto key = [&](std::size_t n, bool descending = false) {
        return keyOf(columnOf(column_type::kBinary, descending),
                     ValueView::bytes(std::span(bytes).first(n)));
    };
    EXPECT_EQ(key(0), "7F");
    EXPECT_EQ(key(2), "7F 01 02 00 00 00 00 00 00 02");
    EXPECT_EQ(key(8), "7F 01 02 03 04 05 06 07 08 08");
    EXPECT_EQ(key(9), "7F 01 02 03 04 05 06 07 08 09 09 00 00 00 00 00 00 00 01");
    EXPECT_EQ(key(9, true), "80 FE FD FC FB FA F9 F8 F7 09 F6 FF FF FF FF FF FF FF FE");
}

TEST(ByteKeys, ofGuidsFollowTheWrittenForm)
{
    EXPECT_EQ(keyOf(columnOf(column_type::kGuid),
                    ValueView::text("{01020304-0506-0708-090A-0b0c0d0e0f10}")),
              "7F 01 02 03 04 05 06 07 08 09 09 0A 0B 0C 0D 0E 0F 10 08");
    EXPECT_THROW(keyOf(columnOf(column_type::kGuid), ValueView::text("{0102}")), EngineError);
}

TEST(Keys, nullsComeFirst_andLastWhenDescending)
{
    EXPECT_EQ(keyOf(columnOf(column_type::kLong), {}), "00");
    EXPECT_EQ(keyOf(columnOf(column_type::kLong, true), {}), "FF");
    const KeyColumn columns[] = {columnOf(column_type::kLong), columnOf(column_type::kText)};
    KeyBuilder builder(false, nullptr, columns);
    const ValueView half[] = {ValueView::integer(0), {}};
    EXPECT_EQ(hex(builder.build(half)), "7F 80 00 00 00 00");
    EXPECT_EQ(builder.nulls(), 1);
    EXPECT_FALSE(builder.allNull());
    const ValueView none[] = {{}, {}};
    builder.build(none);
    EXPECT_TRUE(builder.allNull());
}

TEST(Keys, fewerValuesGiveTheBeginningOfAKey)
{
    const KeyColumn columns[] = {columnOf(column_type::kText), columnOf(column_type::kLong)};
    KeyBuilder builder(false, nullptr, columns);
    const ValueView both[] = {ValueView::text("ab"), ValueView::integer(5)};
    const std::string whole = hex(builder.build(both));
    EXPECT_TRUE(whole.starts_with(hex(builder.build(std::span(both).first(1)))));
}

TEST(Keys, longerThan510Bytes_areCutWithACheckValue)
{
    KeyBytes key(600, 0x11);
    shortenKey(key);
    EXPECT_EQ(key.size(), 510u);
    KeyBytes other(600, 0x11);
    other[599] = 0x12;
    shortenKey(other);
    EXPECT_NE(key, other) << "the check value tells keys apart that differ in the part cut off";
    KeyBytes fits(510, 0x11);
    shortenKey(fits);
    EXPECT_EQ(fits, KeyBytes(510, 0x11));
}

TEST(Keys, valuesThatDoNotFit_areErrors)
{
    EXPECT_THROW(keyOf(columnOf(column_type::kByte), ValueView::integer(256)), EngineError);
    EXPECT_THROW(keyOf(columnOf(column_type::kInteger), ValueView::integer(40000)), EngineError);
    EXPECT_THROW(keyOf(columnOf(column_type::kLong), ValueView::text("1")), EngineError);
    EXPECT_THROW(keyOf(columnOf(column_type::kOle), ValueView::bytes({})), EngineError);
}

TEST(Keys, ofNumbersSortAsTheNumbersDo)
{
    const double numbers[] = {
        -std::numeric_limits<double>::infinity(), -1e300, -2, -1, -1e-300, 0, 1e-300, 1, 2, 1e300};
    for (std::size_t i = 1; i < std::size(numbers); ++i) {
        const auto column = columnOf(column_type::kDouble);
        EXPECT_LT(keyOf(column, ValueView::real(numbers[i - 1])),
                  keyOf(column, ValueView::real(numbers[i])));
    }
}

}  // namespace
}  // namespace velnor::jet
