// access/formats/xbase/language.h - the code page of a table, by the mark in its header.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "access/storage/code_page.h"

namespace velnor::xbase {

/// The page number that the language byte (offset 29) stands for; 0 when it says nothing.
int codePageOfMark(std::uint8_t mark);

/// A language byte that stands for a page; 0 when there is none.
std::uint8_t markOfCodePage(int page);

/// The page number in a language driver's name: "DB437US0", "DB866RU0", "DBWINUS0"; 0 when there is
/// none.
int codePageOfLanguageName(std::string_view name);

/// The page that a table's text is in. `wanted` is what the user asked for and comes first (3001
/// when it is not known); then the file's own marks; then `fallback`.
const CodePage& chooseCodePage(const std::string& wanted, std::uint8_t mark,
                               std::string_view languageName, int fallback);

}  // namespace velnor::xbase
