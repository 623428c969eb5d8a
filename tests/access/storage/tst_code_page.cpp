#include <gtest/gtest.h>

#include <iconv.h>

#include <cerrno>
#include <map>
#include <set>
#include <string>

#include "access/storage/code_page.h"

using velnor::CodePage;

namespace {

std::string decoded(int page, std::string_view bytes)
{
    std::string scratch;
    return std::string(CodePage::find(page)->decode(bytes, scratch));
}

std::string encoded(int page, std::string_view text)
{
    std::string bytes;
    CodePage::find(page)->encode(text, bytes);
    return bytes;
}

/// One byte by the system's converter; empty when it refuses it.
std::string bySystem(const char* name, int byte)
{
    const iconv_t converter = iconv_open("UTF-8", name);
    EXPECT_NE(converter, reinterpret_cast<iconv_t>(-1)) << name;
    char in = static_cast<char>(byte);
    char* from = &in;
    std::size_t left = 1;
    char out[16];
    char* to = out;
    std::size_t room = sizeof out;
    std::size_t result = iconv(converter, &from, &left, &to, &room);
    if (result != static_cast<std::size_t>(-1))
        result = iconv(converter, nullptr, nullptr, &to, &room);
    iconv_close(converter);
    return result == static_cast<std::size_t>(-1) ? "" : std::string(out, to);
}

const std::map<int, const char*> kSystemNames = {
    {437, "IBM437"},       {737, "CP737"},        {775, "CP775"},        {850, "IBM850"},
    {852, "IBM852"},       {855, "IBM855"},       {857, "IBM857"},       {858, "CP858"},
    {860, "IBM860"},       {861, "IBM861"},       {862, "IBM862"},       {863, "IBM863"},
    {864, "IBM864"},       {865, "IBM865"},       {866, "IBM866"},       {869, "IBM869"},
    {874, "CP874"},        {1250, "CP1250"},      {1251, "CP1251"},      {1252, "CP1252"},
    {1253, "CP1253"},      {1254, "CP1254"},      {1255, "CP1255"},      {1256, "CP1256"},
    {1257, "CP1257"},      {1258, "CP1258"},      {10000, "MACINTOSH"},  {10007, "MAC-CYRILLIC"},
    {20866, "KOI8-R"},     {21866, "KOI8-U"},     {28591, "ISO-8859-1"}, {28592, "ISO-8859-2"},
    {28595, "ISO-8859-5"}, {28597, "ISO-8859-7"}, {28599, "ISO-8859-9"},
};

/// Where we mean to differ: bytes of a page.
const std::map<int, std::set<int>> kExceptions = {
    {864, {0x25}},          // the per cent sign: below 80 every page is ASCII
    {10000, {0xC6, 0xF0}},  // increment, not Delta; the maker's sign at its usual private place
    {10007, {0xFF}},        // the Euro of the later page
};

TEST(CodePageTest, everyByteEqualsTheSystemsButForTheKnownExceptions)
{
    for (const auto& [page, name] : kSystemNames)
        for (int byte = 0; byte < 256; ++byte) {
            if (kExceptions.contains(page) && kExceptions.at(page).contains(byte))
                continue;
            const std::string expected = bySystem(name, byte);
            if (expected.empty())
                continue;  // undefined there: see the next test
            EXPECT_EQ(decoded(page, std::string(1, static_cast<char>(byte))), expected)
                << page << " " << std::hex << byte;
        }
}

/// Every byte of every page of our own comes back, also one that the page leaves undefined.
TEST(CodePageTest, everyByteComesBack)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    int pages = 0;
    for (int number = 0; number < 30000; ++number) {
        const CodePage* page = CodePage::find(number);
        if (!page || !page->singleByte())
            continue;
        ++pages;
        std::string scratch;
        std::string bytes;
        EXPECT_TRUE(page->encode(page->decode(all, scratch), bytes)) << number;
        EXPECT_EQ(bytes, all) << number;
    }
    EXPECT_EQ(pages, 40);
}

TEST(CodePageTest, undefinedBytesAreControlCharacters)
{
    EXPECT_EQ(decoded(1252, "\x81\x8D\x8F\x90\x9D"), "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D");
    EXPECT_EQ(decoded(1253, "\xD2"), "\xEF\xA3\x92");  // U+F8D2: U+00D2 would be a letter
}

TEST(CodePageTest, theLettersOfCzechAndPolishPages)
{
    EXPECT_EQ(decoded(895, "\x80\x88\xA9\x9F \xE1"), "Čěřť ß");
    EXPECT_EQ(
        decoded(620, "\x86\x8D\x91\x92\xA4\xA2\x9E\xA7\xA6 \x8F\x95\x90\x9C\xA5\xA3\x98\xA1\xA0"),
        "ąćęłńóśżź ĄĆĘŁŃÓŚŻŹ");
    EXPECT_EQ(encoded(620, "Zażółć gęślą jaźń"), "Za\xA7\xA2\x92\x8D g\x91\x9El\x86 ja\xA6\xA4");
}

TEST(CodePageTest, plainAsciiIsAViewOfTheBytes)
{
    std::string scratch;
    const std::string text = "twenty-three letters, ok";
    for (const int page : {437, 1252, 932, 65001}) {
        const std::string_view view = CodePage::find(page)->decode(text, scratch);
        EXPECT_EQ(view.data(), text.data()) << page;
        EXPECT_EQ(view.size(), text.size()) << page;
    }
    EXPECT_TRUE(scratch.empty());
}

TEST(CodePageTest, aLetterIsFoundAtAnyPlace)
{
    for (std::size_t at = 0; at < 30; ++at) {
        std::string bytes(30, 'x');
        std::string text = bytes;
        bytes[at] = '\xE4';
        text.replace(at, 1, "ä");
        EXPECT_EQ(decoded(1252, bytes), text);
        EXPECT_EQ(encoded(1252, text), bytes);
    }
}

TEST(CodePageTest, aScratchMayBeUsedAgain)
{
    std::string scratch;
    const CodePage& page = *CodePage::find(1252);
    EXPECT_EQ(page.decode("a long text with \xFC", scratch), "a long text with ü");
    EXPECT_EQ(page.decode("\xE4", scratch), "ä");
    EXPECT_EQ(CodePage::find(932)->decode("\x8A\xBF\x8E\x9A", scratch), "漢字");
}

TEST(CodePageTest, whatThePageLacksBecomesAQuestionMark)
{
    std::string bytes = "kept ";
    EXPECT_FALSE(CodePage::find(437)->encode("a€ä漢b\xF0\x9F\x98\x80", bytes));
    EXPECT_EQ(bytes, "kept a?\x84?b?");
    EXPECT_TRUE(CodePage::find(858)->encode("€", bytes));
    EXPECT_EQ(encoded(1252, "a\xFFz"), "a?z");
}

TEST(CodePageTest, doubleBytePagesGoThereAndBack)
{
    const std::map<int, std::pair<std::string, std::string>> cases = {
        {932, {"\x8A\xBF\x8E\x9A ABC \xB1", "漢字 ABC ｱ"}},
        {936, {"\xBA\xBA\xD7\xD6", "汉字"}},
        {949, {"\xC7\xD1\xB1\xDB", "한글"}},
        {950, {"\xBA\x7E\xA6\x72", "漢字"}},
        {54936, {"\xBA\xBA\x81\x30\x81\x30", "汉\xC2\x80"}},
    };
    for (const auto& [page, texts] : cases) {
        EXPECT_EQ(decoded(page, texts.first), texts.second) << page;
        EXPECT_EQ(encoded(page, texts.second), texts.first) << page;
        EXPECT_FALSE(CodePage::find(page)->singleByte());
    }
}

TEST(CodePageTest, halfACharacterIsReplaced)
{
    EXPECT_EQ(decoded(932, "\x8A\xBF\x8E"), "漢\xEF\xBF\xBD");
    EXPECT_EQ(decoded(936, "\xBA"), "\xEF\xBF\xBD");
    EXPECT_EQ(decoded(932, "a\xFF"
                           "b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(decoded(950, std::string(1000, '\xFF')).size(), 3000u);
}

TEST(CodePageTest, aLongDoubleByteTextIsWhole)
{
    std::string bytes;
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        bytes += "\x8A\xBF";
        text += "漢";
    }
    EXPECT_EQ(decoded(932, bytes), text);
    EXPECT_EQ(encoded(932, text), bytes);
    std::string short_;
    EXPECT_FALSE(CodePage::find(932)->encode("漢\xF0\x9F\x98\x80字", short_));
    EXPECT_EQ(short_, "\x8A\xBF?\x8E\x9A");
}

TEST(CodePageTest, utf8IsCheckedOnItsWay)
{
    EXPECT_EQ(decoded(65001, "gr\xC3\xBC\xC3\x9F"), "grüß");
    EXPECT_EQ(decoded(65001, "a\xC3"), "a\xEF\xBF\xBD");
    EXPECT_EQ(decoded(65001, "\xC0\xAF\xED\xA0\x80"),
              "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(encoded(65001, "ü\xFFz"), "ü\xEF\xBF\xBDz");
}

TEST(CodePageTest, namesThatPeopleWrite)
{
    const std::map<std::string, int> cases = {
        {"1252", 1252},    {"cp866", 866},        {"windows-1251", 1251}, {"Windows 1250", 1250},
        {"latin1", 28591}, {"ISO-8859-1", 28591}, {"koi8-r", 20866},      {"GBK", 936},
        {"utf-8", 65001},  {"UTF8", 65001},       {"Big5", 950},          {"Shift_JIS", 932},
        {"IBM437", 437},   {"Mazovia", 620},      {"kamenicky", 895},     {"GB18030", 54936},
    };
    for (const auto& [name, number] : cases) {
        const CodePage* page = CodePage::find(std::string_view(name));
        ASSERT_NE(page, nullptr) << name;
        EXPECT_EQ(page->number(), number) << name;
    }
    for (const char* name : {"", "cp", "1252x", "99", "klingon", "12 52 9", "99999999999999"})
        EXPECT_EQ(CodePage::find(std::string_view(name)), nullptr) << name;
}

std::string fromUtf16(std::u16string_view units)
{
    std::string scratch;
    return std::string(velnor::utf16leToUtf8(
        {reinterpret_cast<const std::uint8_t*>(units.data()), 2 * units.size()}, scratch));
}

TEST(Utf16Test, everyKindOfCharacterGoesThereAndBack)
{
    const std::u16string units = u"plain ASCII text, then ä€漢 \U0001F600 end";
    const std::string text = "plain ASCII text, then ä€漢 \xF0\x9F\x98\x80 end";
    EXPECT_EQ(fromUtf16(units), text);
    std::string bytes;
    velnor::utf8ToUtf16le(text, bytes);
    EXPECT_EQ(bytes, std::string(reinterpret_cast<const char*>(units.data()), 2 * units.size()));
}

TEST(Utf16Test, loneSurrogatesAreReplaced)
{
    const char16_t high = 0xD83D;
    const char16_t low = 0xDE00;
    EXPECT_EQ(fromUtf16(std::u16string{u'a', high}), "a\xEF\xBF\xBD");
    EXPECT_EQ(fromUtf16(std::u16string{low, u'a'}), "\xEF\xBF\xBD"
                                                    "a");
    EXPECT_EQ(fromUtf16(std::u16string{high, high, low}), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
    std::string bytes;
    velnor::utf8ToUtf16le("\xED\xA0\x80", bytes);
    EXPECT_EQ(bytes, "\xFD\xFF\xFD\xFF\xFD\xFF");
}

TEST(Utf16Test, halfAUnitAtTheEndIsDropped)
{
    std::string scratch;
    const std::uint8_t bytes[] = {'a', 0, 'b'};
    EXPECT_EQ(velnor::utf16leToUtf8(bytes, scratch), "a");
}

}  // namespace
