// Stored text of Jet 4: values as real files hold them.
#include <gtest/gtest.h>

#include "access/formats/jet/text_compression.h"

namespace velnor::jet {
namespace {

std::span<const std::uint8_t> bytesOf(const std::string& s)
{
    return {reinterpret_cast<const std::uint8_t*>(s.data()), s.size()};
}

std::string bytes(std::initializer_list<int> values)
{
    std::string out;
    for (const int v : values)
        out.push_back(static_cast<char>(v));
    return out;
}

std::string decoded(const std::string& stored)
{
    std::string scratch;
    return std::string(decodeText(bytesOf(stored), scratch));
}

std::string asText(std::string_view utf8, bool compress = true)
{
    std::string stored = "left from before";
    encodeText(utf8, compress, stored);
    return stored;
}

std::string asMemo(std::string_view utf8, bool compress = true)
{
    std::string stored;
    encodeMemo(utf8, compress, stored);
    return stored;
}

TEST(DecodeText, plainText_isTwoBytesACharacter)
{
    EXPECT_EQ(decoded(bytes({'a', 0, 0xE9, 0, 0x42, 0x30})), "a\xC3\xA9\xE3\x81\x82");
    EXPECT_EQ(decoded(""), "");
}

TEST(DecodeText, compressedAscii_isAViewOfTheStoredBytes)
{
    const std::string stored = bytes({0xFF, 0xFE}) + "longer than eight";
    std::string scratch;
    const std::string_view text = decodeText(bytesOf(stored), scratch);
    EXPECT_EQ(text, "longer than eight");
    EXPECT_EQ(text.data(), stored.data() + 2);
}

TEST(DecodeText, zeroByteTurnsBetweenNarrowAndWide)
{
    EXPECT_EQ(decoded(bytes({0xFF, 0xFE, 'a', 0, 0x42, 0x30, 0, 'b', 0xE9})), "a\xE3\x81\x82"
                                                                              "b\xC3\xA9");
}

TEST(DecodeText, halfCharacterAtTheEnd_isMarked)
{
    EXPECT_EQ(decoded(bytes({'a', 0, 'b'})), "a\xEF\xBF\xBD");
    EXPECT_EQ(decoded(bytes({0xFF, 0xFE, 'a', 0, 0x42})), "a\xEF\xBF\xBD");
}

TEST(DecodeText, surrogatePairsJoin_andLoneOnesAreMarked)
{
    EXPECT_EQ(decoded(bytes({0x3D, 0xD8, 0x00, 0xDE})), "\xF0\x9F\x98\x80");
    EXPECT_EQ(decoded(bytes({0x3D, 0xD8, 'a', 0})), "\xEF\xBF\xBD"
                                                    "a");
    EXPECT_EQ(decoded(bytes({0x00, 0xDE})), "\xEF\xBF\xBD");
    EXPECT_EQ(decoded(bytes({0x3D, 0xD8})), "\xEF\xBF\xBD");
}

TEST(EncodeText, upToTwoCharacters_stayPlain)
{
    EXPECT_EQ(asText(""), "");
    EXPECT_EQ(asText("ab"), bytes({'a', 0, 'b', 0}));
    EXPECT_EQ(asText("abc"), bytes({0xFF, 0xFE, 'a', 'b', 'c'}));
}

TEST(EncodeText, withoutTheColumnsWish_staysPlain)
{
    EXPECT_EQ(asText("abc", false), bytes({'a', 0, 'b', 0, 'c', 0}));
}

TEST(EncodeText, latinLettersAreOneByte)
{
    EXPECT_EQ(asText("\xC3\xA9tude"), bytes({0xFF, 0xFE, 0xE9, 't', 'u', 'd', 'e'}));
}

TEST(EncodeText, characterWithLowByteZero_keepsTheWholeTextPlain)  // it would read as a toggle
{
    EXPECT_EQ(asText("aaaaaaaa\xC4\x80").size(), 18u);
}

TEST(EncodeText, wideRunsStandBetweenToggles_whenThatIsNotLonger)
{
    EXPECT_EQ(asText("abcd\xE3\x81\x82"
                     "ef"),
              bytes({0xFF, 0xFE, 'a', 'b', 'c', 'd', 0, 0x42, 0x30, 0, 'e', 'f'}));
    EXPECT_EQ(asText("ab\xE3\x81\x82").size(), 6u) << "compressed it would have seven bytes";
}

TEST(EncodeText, everyTextReadsBack)
{
    for (const char* text :
         {"", "a", "abc", "\xC3\xA9\xC3\xA9\xC3\xA9", "a\xE3\x81\x82\xE3\x81\x82z",
          "\xF0\x9F\x98\x80 smile", "\xC4\x80\xC4\x81\xC4\x82"}) {
        EXPECT_EQ(decoded(asText(text)), text);
        EXPECT_EQ(decoded(asText(text, false)), text);
        EXPECT_EQ(decoded(asMemo(text)), text);
    }
}

TEST(EncodeMemo, shortOnesAreCompressedWithoutAWish)
{
    EXPECT_EQ(asMemo("short memo", false).size(), 12u);
    EXPECT_EQ(asMemo(std::string(33, 'x'), false).size(), 66u) << "66 plain bytes: not inline";
    EXPECT_EQ(asMemo(std::string(33, 'x'), true).size(), 35u);
}

TEST(EncodeMemo, largeOnesStayPlain)
{
    EXPECT_EQ(asMemo(std::string(1908, 'x')).size(), 1910u);
    EXPECT_EQ(asMemo(std::string(1909, 'x')).size(), 3818u);
}

TEST(Utf16Length, countsUnits)
{
    EXPECT_EQ(utf16Length("a\xC3\xA9\xF0\x9F\x98\x80"), 4u);
}

}  // namespace
}  // namespace velnor::jet
