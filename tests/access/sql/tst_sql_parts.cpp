// The parts below statements: order of texts, patterns, spellings in an index, records on the disk.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "access/sql/like_pattern.h"
#include "access/sql/plain_value.h"
#include "access/sql/row_road.h"
#include "access/sql/text_order.h"
#include "access/storage/row_store.h"

using namespace velnor;
using namespace velnor::sql;

TEST(SqlText, comparesWithoutRegardToCase)
{
    EXPECT_TRUE(equalText("Größe", "GRÖßE"));
    EXPECT_TRUE(equalText("ЖУК", "жук"));
    EXPECT_FALSE(equalText("a", "a "));
    EXPECT_LT(compareText("a_b", "aab"), 0);  // as in every other program: "_" before letters
    EXPECT_LT(compareText("Z", "é"), 0);
    EXPECT_GT(compareText("\xFF", "é"), 0);
    EXPECT_EQ(compareText("", ""), 0);
    EXPECT_EQ(hashText("Größe"), hashText("gRÖßE"));
}

// A search by an ASCII text through an index must find all that equals it.
TEST(SqlText, noOtherCharacterEqualsAnAsciiOne)
{
    for (char32_t c = 0x80; c < 0x11000; ++c)
        ASSERT_GE(foldedCharacter(c), 0x80u) << std::hex << static_cast<unsigned>(c);
}

TEST(SqlLike, patterns)
{
    EXPECT_TRUE(isLike("", "*"));
    EXPECT_TRUE(isLike("abc", "A*C"));
    EXPECT_TRUE(isLike("abcabd", "*abd"));
    EXPECT_FALSE(isLike("abcabd", "*abc"));
    EXPECT_TRUE(isLike("é", "?"));
    EXPECT_TRUE(isLike("a5", "a#"));
    EXPECT_TRUE(isLike("a*", "a[*]"));
    EXPECT_FALSE(isLike("ab", "a[*]"));
    EXPECT_TRUE(isLike("B", "[a-c]"));
    EXPECT_FALSE(isLike("B", "[!a-c]"));
    EXPECT_TRUE(isLike("-", "[a-]"));
    EXPECT_FALSE(isLike("", "?"));
    EXPECT_ANY_THROW(isLike("a", "[a"));
    EXPECT_ANY_THROW(isLike("", "[a"));
    // What makes a naive matcher run for years.
    EXPECT_FALSE(isLike(std::string(3000, 'a'), "*a*a*a*a*a*a*a*a*a*a*b"));
}

/// All spellings by trying each, against the jumps.
TEST(SqlSpelling, jumpsMeetEverySpelling_andNoOther)
{
    const std::string text = "a1bC";
    std::set<std::string> all;
    for (int bits = 0; bits < 8; ++bits)
        all.insert({bits & 1 ? 'a' : 'A', '1', bits & 2 ? 'b' : 'B', bits & 4 ? 'c' : 'C'});
    for (const std::string& from :
         {std::string(""), std::string("A"), std::string("A1BD"), std::string("A1Bz"),
          std::string("A1bc1"), std::string("a"), std::string("B"), std::string("a1bc"),
          std::string("a1bcd"), std::string("A2"), std::string("\xC3\x89"),
          std::string("A1BC NORTE")}) {
        std::string found;
        const bool there = nextSpelling(text, from, found);
        const auto wanted = all.lower_bound(from);
        if (all.count(from))
            continue;  // itself a spelling: met as such
        EXPECT_EQ(there, wanted != all.end()) << from;
        if (there && wanted != all.end())
            EXPECT_EQ(found, *wanted) << from;
    }
}

TEST(SqlValues, datesLieOnAStraightLine)
{
    EXPECT_EQ(straightDate(-1.25), -0.75);
    EXPECT_EQ(dateOfStraight(-0.75), -1.25);
    EXPECT_EQ(dateOfStraight(straightDate(-2)), -2);
    EXPECT_EQ(straightDate(37000.5), 37000.5);
    EXPECT_LT(
        comparePlain(ValueView::integer(9007199254740993), ValueView::real(9007199254740994.0)), 0);
    EXPECT_GT(comparePlain(ValueView::text("0"), ValueView::integer(5)), 0);
}

TEST(RowStore, recordsBeyondTheBoundLieInAFile)
{
    RowStore store(3, 1u << 20);
    for (int i = 0; i < 60000; ++i) {
        const std::string text(static_cast<std::size_t>(i % 90), static_cast<char>('a' + i % 26));
        const ValueView values[] = {ValueView::integer(i), ValueView::text(text),
                                    ValueView::decimal(i & 1, 7, static_cast<std::uint64_t>(i), 3)};
        store.append(values);
    }
    ASSERT_TRUE(store.usesFile());
    ASSERT_EQ(store.size(), 60000);
    for (std::int64_t step = 0, n = 0; step < 3000; ++step, n = (n + 7919) % 60000) {
        ASSERT_EQ(store.value(n, 0).asInteger(), n);
        ASSERT_EQ(store.value(n, 1).asText(),
                  std::string(static_cast<std::size_t>(n % 90), static_cast<char>('a' + n % 26)));
        ASSERT_EQ(store.value(n, 2).decimalLow(), static_cast<std::uint64_t>(n));
        ASSERT_EQ(store.value(n, 2).decimalNegative(), n % 2 != 0);
    }
}

TEST(RowStore, smallOnesStayInMemory)
{
    RowStore store(1, 1u << 20);
    const ValueView value = ValueView::text("x");
    store.append({&value, 1});
    EXPECT_EQ(store.value(0, 0).asText(), "x");
    EXPECT_FALSE(store.usesFile());
}
