// Numbers and texts of worksheet cells.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "access/formats/lotus/lmbcs.h"
#include "access/formats/lotus/wk_format.h"
#include "access/formats/lotus/wk_number.h"

using namespace velnor;
using namespace velnor::lotus;

namespace {

using Ten = std::array<std::uint8_t, 10>;

Ten byMachine(double value)
{
    const long double wide = value;
    Ten bytes{};
    std::memcpy(bytes.data(), &wide, 10);
    return bytes;
}

std::string decoded(std::string_view bytes, std::uint8_t group = 1)
{
    std::string scratch;
    return std::string(decodeLmbcs(bytes, group, scratch));
}

std::string encoded(std::string_view text)
{
    std::string out;
    encodeLmbcs(text, 1, out);
    return out;
}

}  // namespace

TEST(WkNumber, doublesBecomeExtendedExactly)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i) {
        double value = 0;
        const std::uint64_t bits = random();
        std::memcpy(&value, &bits, 8);
        if (!std::isfinite(value))
            continue;
        ASSERT_EQ(real80(value), byMachine(value)) << value;
        ASSERT_EQ(readReal80(real80(value)).value, value);
    }
    for (const double value : {0.0, 1.0, -1.5, 0.1, 5e-324, 1.7976931348623157e308, 1e-310}) {
        EXPECT_EQ(real80(value), byMachine(value)) << value;
        EXPECT_EQ(readReal80(real80(value)).value, value);
    }
}

TEST(WkNumber, moreDigitsThanADoubleHasAreRoundedToTheNearestEven)
{
    const long double third = 1.0L / 3;
    Ten bytes{};
    std::memcpy(bytes.data(), &third, 10);
    EXPECT_EQ(readReal80(bytes).value, 1.0 / 3);
    const Ten tie{0x00, 0x04, 0, 0, 0, 0, 0, 0x80, 0xFF, 0x3F};  // 1 and half a last bit
    EXPECT_EQ(readReal80(tie).value, 1.0);
    const Ten above{0x01, 0x04, 0, 0, 0, 0, 0, 0x80, 0xFF, 0x3F};
    EXPECT_EQ(readReal80(above).value, std::nextafter(1.0, 2));
}

TEST(WkNumber, specialValuesAreTold)
{
    const auto kindOf = [](std::uint8_t mark) {
        return readReal80(Ten{0, 0, 0, 0, 0, 0, 0, mark, 0xFF, 0xFF}).kind;
    };
    EXPECT_EQ(kindOf(0x00), WkNumber::Kind::Blank);
    EXPECT_EQ(kindOf(0xE0), WkNumber::Kind::Text);
    EXPECT_EQ(kindOf(0xC0), WkNumber::Kind::Error);
    EXPECT_EQ(kindOf(0xD0), WkNumber::Kind::Error);
    EXPECT_EQ(readReal80(Ten{0, 0, 0, 0, 0, 0, 0, 0x80, 0xFE, 0x7F}).kind,
              WkNumber::Kind::Error);  // beyond a double
}

TEST(WkNumber, smallNumbersHaveFactors)
{
    EXPECT_EQ(readSmallNumber(0xFFFE), -1);
    EXPECT_EQ(readSmallNumber(2 * 16383), 16383);
    const auto packed = [](int mantissa, unsigned factor) {
        return readSmallNumber(
            static_cast<std::uint16_t>(static_cast<unsigned>(mantissa) << 4 | factor << 1 | 1));
    };
    EXPECT_EQ(packed(3, 0), 15000);
    EXPECT_EQ(packed(-3, 1), -1500);
    EXPECT_EQ(packed(7, 2), 0.35);
    EXPECT_EQ(packed(-7, 3), -0.035);
    EXPECT_EQ(packed(7, 4), 0.0035);
    EXPECT_EQ(packed(7, 5), 0.00035);
    EXPECT_EQ(packed(7, 6), 0.4375);
    EXPECT_EQ(packed(7, 7), 0.109375);
    for (const int value : {0, 1, -1, 16383, -16384})
        EXPECT_EQ(readSmallNumber(smallNumber(value).value()), value);
    for (const double value : {16384.0, -16385.0, 0.5, 1e300, std::nan("")})
        EXPECT_FALSE(smallNumber(value));
}

TEST(WkNumber, packedNumbersHaveAPowerOfTen)
{
    EXPECT_EQ(readPackedNumber(12345u << 6 | 0x10 | 2), 123.45);
    EXPECT_EQ(readPackedNumber(12345u << 6 | 0x20 | 0x10 | 3), -12.345);
    EXPECT_EQ(readPackedNumber(12u << 6 | 6), 12e6);
}

TEST(Lmbcs, groupsAreRead)
{
    EXPECT_EQ(decoded("plain"), "plain");
    EXPECT_EQ(decoded(std::string("cut\0off", 7)), "cut");
    EXPECT_EQ(decoded("M\x81ller"), "Müller");
    EXPECT_EQ(decoded("\x05\xCF\x05\xF0"), "Пр");
    EXPECT_EQ(decoded("\x06\x88"), "ł");
    EXPECT_EQ(decoded("\x14\x20\xAC"), "€");
    EXPECT_EQ(decoded("\x14\xD8\x3D\x14\xDE\x42"), "🙂" + std::string());
    EXPECT_EQ(decoded("\x14\xF6\x01"), "Ā");
    EXPECT_EQ(decoded("\x10\x93\xFA"), "日");
    EXPECT_EQ(decoded("a\x0F\x2A"
                      "b\x0F\x2D"
                      "c\x01\x0A"),
              "a\nb\rc\n");
    EXPECT_EQ(decoded("\x01\x20"), "\xEF\xBF\xBD");
    EXPECT_EQ(decoded("a\x05"), "a");
    EXPECT_EQ(decoded("a\x14\x20"), "a\xE2\x80\x80");
    EXPECT_EQ(decoded("\x88", 6), "ł");
}

TEST(Lmbcs, everyTextComesBack)
{
    EXPECT_EQ(encoded("Müller\n"), "M\x81ller\x0F\x2A");
    EXPECT_EQ(encoded("Ж"), "\x05\xC6");
    EXPECT_EQ(encoded("€"), "\x05\x88");  // the Cyrillic page has one
    for (const std::string text : {"plain", "äöüÄÖÜß éèê", "Ελληνικά", "Русский", "Łódź", "日本語",
                                   "😀", "tab\there", "Ā一", "l1\r\nl2", "\x7F"})
        EXPECT_EQ(decoded(encoded(text)), text);
    std::string all;
    for (char32_t c = 1; c < 0x3000; ++c) {
        char buffer[4];
        all.assign(buffer, c < 0x80    ? (buffer[0] = static_cast<char>(c), 1u)
                           : c < 0x800 ? (buffer[0] = static_cast<char>(0xC0 | c >> 6),
                                          buffer[1] = static_cast<char>(0x80 | (c & 63)), 2u)
                                       : (buffer[0] = static_cast<char>(0xE0 | c >> 12),
                                          buffer[1] = static_cast<char>(0x80 | (c >> 6 & 63)),
                                          buffer[2] = static_cast<char>(0x80 | (c & 63)), 3u));
        ASSERT_EQ(decoded(encoded(all)), all) << static_cast<unsigned>(c);
    }
}

TEST(WkFormat, datesAndMoneyAreToldByTheirFormats)
{
    using sheet::CellKind;
    for (const unsigned detail : {2u, 3u, 4u, 7u, 8u, 9u, 10u, 11u, 12u}) {
        EXPECT_EQ(kindOfFormat(static_cast<std::uint8_t>(0x70 | detail)), CellKind::Date);
        EXPECT_EQ(kindOfFormat(static_cast<std::uint8_t>(0xF0 | detail)), CellKind::Date);
    }
    for (const unsigned detail : {0u, 1u, 5u, 6u, 13u, 14u, 15u})
        EXPECT_EQ(kindOfFormat(static_cast<std::uint8_t>(0x70 | detail)), CellKind::Number);
    EXPECT_EQ(kindOfFormat(0xA2), CellKind::Currency);
    EXPECT_EQ(kindOfFormat(0x20), CellKind::Currency);
    for (const unsigned type : {0x02u, 0x12u, 0x32u, 0x42u})
        EXPECT_EQ(kindOfFormat(static_cast<std::uint8_t>(type)), CellKind::Number);
}
