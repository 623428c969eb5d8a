// access/formats/jet/text_compression.h - how Jet 4 stores text: UTF-16LE, or after the mark FF FE
// one byte a character in runs, between 00 bytes two. Jet 3 text is plain code page text: CodePage.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace velnor::jet {

/// UTF-8 of a stored Jet 4 text, compressed or not. A compressed run of plain ASCII comes back as a
/// view of the stored bytes; everything else is written into `scratch`, and the view is of that.
/// Never throws for damaged text: half a character and lone surrogates become U+FFFD.
std::string_view decodeText(std::span<const std::uint8_t> stored, std::string& scratch);

/// The stored form of a Text value, put in place of what `stored` held; it keeps its capacity.
/// `compress` is the column's wish (extension flag 0x01).
void encodeText(std::string_view utf8, bool compress, std::string& stored);

/// The stored form of a Memo value. Short ones (inline in the row) are compressed without a wish,
/// too.
void encodeMemo(std::string_view utf8, bool compress, std::string& stored);

/// Characters (UTF-16 units) of a UTF-8 text: what a column's size counts.
std::size_t utf16Length(std::string_view utf8);

}  // namespace velnor::jet
