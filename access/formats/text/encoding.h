// access/formats/text/encoding.h - the characters of a text file.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "access/formats/text/text_form.h"

namespace velnor::text {

/// What the first bytes tell: a byte order mark, or UTF-16 by its zero bytes. Else Bytes of a page
/// that is not known yet.
Encoding encodingOfHead(std::span<const std::uint8_t> head);
/// The encoding that a word names: "1252", "cp866", "utf-8"; "ANSI", "OEM", "Unicode" of
/// schema.ini. Nothing known: 3001.
Encoding encodingNamed(std::string_view word);

bool isUtf8(std::string_view bytes);
const CodePage& utf8Page();
const CodePage& ansiPage();

/// The UTF-8 of UTF-16 bytes, appended.
void appendUtf8(Units units, std::span<const std::uint8_t> bytes, std::string& out);
/// A UTF-8 text in the file's characters, appended. 3421 when a character is not in its code page.
void appendEncoded(const Encoding& encoding, std::string_view utf8, std::string& out);

/// For people: "UTF-8", "UTF-16", "code page 1252".
std::string encodingWords(const Encoding& encoding);

}  // namespace velnor::text
