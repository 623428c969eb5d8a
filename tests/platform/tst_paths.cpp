#include <clocale>
#include <cwctype>
#include <string>

#include <gmock/gmock.h>

#include "platform/letter_case.h"
#include "platform/path_parts.h"
#include "platform/paths.h"

using namespace velnor;

namespace {

std::string utf8(char32_t c)
{
    std::string out;
    appendCharacter(out, c);
    return out;
}

}  // namespace

TEST(Paths, PartsAreCutAtTheLastBackslashAndDot)
{
    EXPECT_EQ(paths::folder("C:\\data\\A.DBF"), "C:\\data");
    EXPECT_EQ(paths::folder("C:\\A.DBF"), "C:");
    EXPECT_EQ(paths::folder("A.DBF"), "");
    EXPECT_EQ(paths::fileName("C:\\data\\A.DBF"), "A.DBF");
    EXPECT_EQ(paths::fileName("A.DBF"), "A.DBF");
    EXPECT_EQ(paths::fileName("C:\\data\\"), "");
    EXPECT_EQ(paths::extension("C:\\data\\A.b.DbF"), "DbF");
    EXPECT_EQ(paths::baseName("C:\\data\\A.b.DbF"), "A.b");
}

TEST(Paths, DotsOfFoldersAreNoExtension)
{
    EXPECT_EQ(paths::extension("C:\\data.old\\README"), "");
    EXPECT_EQ(paths::baseName("C:\\data.old\\README"), "README");
}

TEST(Paths, JoinDoesNotDoubleTheBackslashOfARoot)
{
    EXPECT_EQ(paths::join("C:\\data", "A.DBF"), "C:\\data\\A.DBF");
    EXPECT_EQ(paths::join("C:\\", "A.DBF"), "C:\\A.DBF");
    EXPECT_EQ(paths::join("", "A.DBF"), "A.DBF");
}

TEST(Paths, CompanionTakesTheCaseOfTheExtensionBeforeIt)
{
    EXPECT_EQ(paths::withExtension("C:\\A.DBF", "DBT"), "C:\\A.DBT");
    EXPECT_EQ(paths::withExtension("C:\\a.dbf", "DBT"), "C:\\a.dbt");
    EXPECT_EQ(paths::withExtension("C:\\a.Dbf", "DBT"), "C:\\a.DBT");
    EXPECT_EQ(paths::withExtension("C:\\data.old\\A", "DBT"), "C:\\data.old\\A.DBT");
    EXPECT_EQ(paths::withExtension("A.DBF", "DBT"), "A.DBT");
    EXPECT_EQ(paths::withExtension("\\A.DBF", "DBT"), "\\A.DBT");
}

TEST(Paths, NamesAreEqualBlindToCaseInAllAlphabets)
{
    EXPECT_TRUE(paths::sameName("customer.DBF", "CUSTOMER.dbf"));
    EXPECT_TRUE(paths::sameName("Übergröße.mdb", "üBERGRÖßE.MDB"));
    EXPECT_TRUE(paths::sameName("Счёт.dbf", "СЧЁТ.DBF"));
    EXPECT_TRUE(paths::sameName("Λογαριασμός.db", "ΛΟΓΑΡΙΑΣΜΌΣ.DB"));
    EXPECT_TRUE(paths::sameName("ÿ", "Ÿ"));
    EXPECT_FALSE(paths::sameName("a", "ab"));
    EXPECT_FALSE(paths::sameName("ab", "a"));
    EXPECT_FALSE(paths::sameName("a", "á"));
    EXPECT_FALSE(paths::sameName("i", "ı"));
}

TEST(Paths, BytesThatAreNoTextEqualOnlyThemselves)
{
    EXPECT_TRUE(paths::sameName("\xE4x", "\xE4X"));
    EXPECT_FALSE(paths::sameName("\xE4", "\xE5"));
    EXPECT_FALSE(paths::sameName("\xE4", "ä"));
    EXPECT_EQ(paths::foldName("\xE4x"), "\xE4X");
}

TEST(Paths, FoldedNamesAreEqualExactlyWhenTheNamesAre)
{
    for (const char32_t a :
         {U'a', U'A', U'ä', U'Ä', U'ÿ', U'Ÿ', U'ß', U'µ', U'ж', U'Ж', U'ς', U'Σ'})
        for (const char32_t b :
             {U'a', U'A', U'ä', U'Ä', U'ÿ', U'Ÿ', U'ß', U'µ', U'ж', U'Ж', U'ς', U'Σ'})
            EXPECT_EQ(paths::sameName(utf8(a), utf8(b)),
                      paths::foldName(utf8(a)) == paths::foldName(utf8(b)))
                << utf8(a) << " and " << utf8(b);
}

TEST(LetterCase, CapitalsAreThoseOfTheSystem)
{
    if (!std::setlocale(LC_CTYPE, "C.UTF-8"))
        GTEST_SKIP() << "no locale C.UTF-8 to compare with";
    // Left aside: letters of phonetics and old scripts, and the dotless i and long s, which are no
    // pair of small and capital.
    for (char32_t c = 1; c < 0x530; ++c) {
        const bool aside = (c >= 0x250 && c < 0x370) || (c >= 0x180 && c < 0x1A0) || c == 0x131 ||
                           c == 0x17F || c == 0x19A || c == 0x19E || c == 0x1BF || c == 0x23C ||
                           (c > 0x233 && c < 0x250) || c == 0x345 || (c >= 0x370 && c < 0x386) ||
                           (c >= 0x3D0 && c <= 0x3D7) || (c >= 0x3F0 && c < 0x400);
        if (aside)
            continue;
        EXPECT_EQ(capitalOf(c), static_cast<char32_t>(std::towupper(static_cast<wint_t>(c))))
            << std::hex << static_cast<unsigned>(c);
    }
}

TEST(LetterCase, BrokenTextIsNoUtf8)
{
    EXPECT_TRUE(isValidUtf8("abc äöü Ж € 𝄞"));
    for (const char* broken : {"\x80", "\xC0\xAF", "\xE2\x82", "\xED\xA0\x80", "\xF5\x80\x80\x80",
                               "\xF4\x90\x80\x80", "a\xFF", "\xC3"})
        EXPECT_FALSE(isValidUtf8(broken));
}

struct PatternCase {
    const char* name;
    const char* pattern;
    bool fits;
};

class Patterns : public testing::TestWithParam<PatternCase> {};

TEST_P(Patterns, FitAsInAFileList)
{
    const auto& c = GetParam();
    EXPECT_EQ(paths::matches(c.name, c.pattern), c.fits) << c.name << " against " << c.pattern;
}

INSTANTIATE_TEST_SUITE_P(
    All, Patterns,
    testing::Values(PatternCase{"README", "*.*", true}, PatternCase{"README", "*", true},
                    PatternCase{"a.dbf", "*.DBF", true}, PatternCase{"a.dbf", "*.DB", false},
                    PatternCase{"a.db", "*.DB", true}, PatternCase{"Å.DBF", "å.*", true},
                    PatternCase{"abc", "a?c", true}, PatternCase{"aßc", "a?c", true},
                    PatternCase{"ac", "a?c", false}, PatternCase{"abcabc", "*abc", true},
                    PatternCase{"abcabd", "*abc", false}, PatternCase{"a.b.c", "*.b.*", true},
                    PatternCase{"", "*", true}, PatternCase{"", "?", false},
                    PatternCase{"abc", "", false}, PatternCase{"abc", "abc**", true},
                    PatternCase{"CUSTOMER.MDX", "CUSTOMER.*", true}));

TEST(Patterns, ManyStarsAgainstALongNameEndSoon)
{
    const std::string name(2000, 'a');
    std::string pattern;
    for (int i = 0; i < 200; ++i)
        pattern += "*a";
    EXPECT_FALSE(paths::matches(name, pattern + "b"));
}

TEST(PathParts, DoubledBackslashesAndDotsAreGone)
{
    EXPECT_EQ(cutPath("D:\\\\DataTabl.MDB").text(), "D:\\DataTabl.MDB");
    EXPECT_EQ(cutPath("C:/a/./b/../c").text(), "C:\\a\\c");
    EXPECT_EQ(cutPath("C:\\..\\..\\a").text(), "C:\\a");
    EXPECT_EQ(cutPath("C:\\").text(), "C:");
    EXPECT_EQ(cutPath("\\\\server\\share\\a").root, "\\\\server\\share");
}

TEST(PathParts, WhatHasNoRootIsABadName)
{
    for (const std::string_view bad :
         {std::string_view("a.dbf"), std::string_view(""), std::string_view("\\a"),
          std::string_view("\\\\server"), std::string_view("C:\\a\0b", 6)}) {
        try {
            cutPath(bad);
            ADD_FAILURE() << "accepted: " << bad;
        } catch (const RunError& error) {
            EXPECT_EQ(error.number(), 52);
        }
    }
}
