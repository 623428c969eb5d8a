// access/formats/lotus/lmbcs.h - the character set of worksheets, one of several bytes.
//
// A byte of 20 to 7F is ASCII. From 80 on it is a character of the file's own group (a byte of
// BOF; group 1, code page 850, in practice). Lower bytes lead others: 01 02 03 04 05 06 08 0B a
// character of another group, 10 to 13 a double-byte character of Japanese, Korean or Chinese,
// 14 a UTF-16 unit, high byte first (F6 in front where its low byte is zero), 0F a control
// character plus 20.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velnor::lotus {

inline constexpr std::uint8_t kPlainGroup = 1;

/// UTF-8 of a text up to its end or a zero byte. ASCII comes back as a view of the bytes, all else
/// lies in `scratch`. What is no character becomes U+FFFD.
std::string_view decodeLmbcs(std::string_view bytes, std::uint8_t group, std::string& scratch);
/// Appends the bytes of a UTF-8 text for a file of this group. Every character has a form.
void encodeLmbcs(std::string_view utf8, std::uint8_t group, std::string& out);

}  // namespace velnor::lotus
