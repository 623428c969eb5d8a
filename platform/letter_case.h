// platform/letter_case.h - upper case of one letter, and UTF-8 taken apart. For file names only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velnor {

/// The capital of a small letter with a simple pair in Latin, Greek, Cyrillic, Armenian or
/// full-width Latin; any other character as it is. The same in every country: "i" is never a dotted
/// capital.
char32_t capitalOf(char32_t letter);

inline constexpr char32_t kNoCharacter = 0xFFFFFFFF;

/// The character at `at`, which moves behind it; kNoCharacter when it is no valid UTF-8 (`at`
/// stays).
char32_t nextCharacter(std::string_view text, std::size_t& at);
void appendCharacter(std::string& text, char32_t character);
bool isValidUtf8(std::string_view text);

}  // namespace velnor
