#include "access/formats/lotus/wk_number.h"

#include <bit>
#include <cmath>

#include "access/storage/byte_reader.h"

namespace velnor::lotus {
namespace {

constexpr int kBias = 16383;
constexpr unsigned kSpecial = 0x7FFF, kSign = 0x8000;
constexpr std::uint8_t kBlankMark = 0x00, kTextMark = 0xE0;
constexpr int kFractionBits = 52, kDoubleBias = 1023, kDoubleSpecial = 0x7FF;

}  // namespace

WkNumber readReal80(std::span<const std::uint8_t, 10> bytes)
{
    const auto mantissa = loadLE<std::uint64_t>(bytes.data());
    const unsigned exponent = loadLE<std::uint16_t>(bytes.data() + 8);
    if ((exponent & kSpecial) == kSpecial) {
        if (exponent != (kSpecial | kSign))
            return {WkNumber::Kind::Error, 0};
        return {bytes[7] == kBlankMark  ? WkNumber::Kind::Blank
                : bytes[7] == kTextMark ? WkNumber::Kind::Text
                                        : WkNumber::Kind::Error,
                0};
    }
    if (mantissa == 0)
        return {};
    // The mantissa is rounded to 53 bits here; the power of two is exact.
    const double value = std::ldexp(static_cast<double>(mantissa),
                                    static_cast<int>(exponent & kSpecial) - kBias - 63);
    if (std::isinf(value))
        return {WkNumber::Kind::Error, 0};
    return {WkNumber::Kind::Number, exponent & kSign ? -value : value};
}

std::array<std::uint8_t, 10> real80(double value)
{
    std::array<std::uint8_t, 10> out{};
    const auto bits = std::bit_cast<std::uint64_t>(value);
    std::uint64_t mantissa = bits & ((std::uint64_t{1} << kFractionBits) - 1);
    int exponent = static_cast<int>(bits >> kFractionBits) & kDoubleSpecial;
    if (exponent == 0 && mantissa == 0)
        return out;
    if (exponent == 0)
        exponent = 1;  // below the normal numbers there is no hidden one
    else
        mantissa |= std::uint64_t{1} << kFractionBits;
    const int shift = std::countl_zero(mantissa);
    mantissa <<= shift;
    const int unbiased = exponent - kDoubleBias - kFractionBits + 63 - shift;
    storeLE(out.data(), mantissa);
    storeLE(out.data() + 8, static_cast<std::uint16_t>(static_cast<unsigned>(unbiased + kBias) |
                                                       (bits >> 63 ? kSign : 0u)));
    return out;
}

double readSmallNumber(std::uint16_t word)
{
    const auto number = static_cast<std::int16_t>(word);
    if ((number & 1) == 0)
        return number >> 1;
    const double mantissa = number >> 4;
    static constexpr double kTimes[] = {5000, 500};
    static constexpr double kDivide[] = {20, 200, 2000, 20000, 16, 64};
    const unsigned factor = word >> 1 & 7;
    return factor < 2 ? mantissa * kTimes[factor] : mantissa / kDivide[factor - 2];
}

std::optional<std::uint16_t> smallNumber(double value)
{
    if (!(value >= -16384 && value <= 16383) || value != std::trunc(value))
        return std::nullopt;
    return static_cast<std::uint16_t>(static_cast<int>(value) * 2);
}

double readPackedNumber(std::uint32_t word)
{
    static constexpr double kTens[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                       1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const double mantissa = static_cast<double>(word >> 6) * (word & 0x20 ? -1 : 1);
    const double ten = kTens[word & 15];
    return word & 0x10 ? mantissa / ten : mantissa * ten;
}

}  // namespace velnor::lotus
