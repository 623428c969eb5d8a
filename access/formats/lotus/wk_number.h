// access/formats/lotus/wk_number.h - the numbers of worksheet cells.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace velnor::lotus {

/// What a cell's number field can say.
struct WkNumber {
    enum class Kind { Number, Blank, Text, Error };
    Kind kind = Kind::Number;
    double value = 0;
};

/// Ten bytes: a 64-bit mantissa with its leading one, then sign and exponent (bias 16383). An
/// exponent of all ones is a special value; byte 7 tells which: 00 blank, E0 the text of a formula,
/// others an error. Rounded to the nearest double, half to even.
WkNumber readReal80(std::span<const std::uint8_t, 10> bytes);
/// Exact for every finite double.
std::array<std::uint8_t, 10> real80(double value);

/// 16 bits: bit 0 clear, a whole number; set, bits 1 to 3 choose a factor for the 12-bit mantissa.
double readSmallNumber(std::uint16_t word);
/// A whole number in 15 bits; nothing for other numbers.
std::optional<std::uint16_t> smallNumber(double value);

/// 32 bits: a 26-bit mantissa, its sign, and a power of ten that multiplies or divides.
double readPackedNumber(std::uint32_t word);

}  // namespace velnor::lotus
