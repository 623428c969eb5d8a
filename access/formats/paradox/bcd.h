// access/formats/paradox/bcd.h - numbers of 32 decimal digits in 17 bytes.
//
// Byte 0 is C0 (40 for a negative number) and the count of digits behind the point; then 32 digits
// of four bits, the highest first, whose bytes are inverted in a negative number. Null: the two top
// bits of byte 0 are clear.
#pragma once

#include <cstdint>

#include "access/value.h"

namespace velnor::paradox {

inline constexpr std::size_t kBcdBytes = 17;

/// A decimal as it stands; a double when it has more than 17 digits that count. Numbers that came
/// from a double can hold nibbles above 9: they end in front of the first.
ValueView decodeBcd(const std::uint8_t* bytes);

/// False when the number has more digits in front of the point than fit. Digits behind the last
/// decimal are rounded, half away from zero.
bool encodeBcd(ValueView value, int decimals, std::uint8_t* bytes);

}  // namespace velnor::paradox
