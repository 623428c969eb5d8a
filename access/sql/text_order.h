// access/sql/text_order.h - how texts compare in statements: blind to upper and lower case, else by
// character.
//
// ASCII letters compare as small letters, other letters with a simple pair as capitals. No other
// character equals an ASCII one, so that a search by an ASCII text may go through an index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velnor::sql {

/// Below, at or above zero. Bytes that are no UTF-8 come last.
int compareText(std::string_view a, std::string_view b);
bool equalText(std::string_view a, std::string_view b);
/// Equal texts have equal hashes.
std::uint64_t hashText(std::string_view text);
/// The character as it counts in a comparison.
char32_t foldedCharacter(char32_t character);
/// The character at `at`, which moves behind it; a byte that starts none counts as one.
char32_t takeCharacter(std::string_view text, std::size_t& at);

}  // namespace velnor::sql
