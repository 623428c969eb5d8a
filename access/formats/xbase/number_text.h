// access/formats/xbase/number_text.h - numbers as the text of N and F fields, read and written.
#pragma once

#include <cstdint>
#include <span>

#include "access/value.h"

namespace velnor::xbase {

/// The number in a field: the longest numeric prefix between blanks and zero bytes, with a comma
/// read as a point. Null when it holds no digit ("", "*****", "-"). Integer or Decimal up to 15
/// digits, else Real.
ValueView readNumber(std::span<const std::uint8_t> field);

enum class NumberFit { Written, TooLarge, NoNumber };

/// Writes the number right-justified with exactly `decimals` digits behind the point, rounded half
/// away from zero on its decimal digits. `field` is left alone unless the answer is Written.
NumberFit writeNumber(ValueView value, int decimals, std::span<std::uint8_t> field);

}  // namespace velnor::xbase
