// cli/record_text.h - records as CSV and JSON text.
//
// CSV is RFC 4180, UTF-8, lines end in CR LF: Null is an empty unquoted field, an empty text is "",
// True and False, dates YYYY-MM-DD[ HH:MM:SS], numbers shortest without exponent below 1e15, bytes
// up to 64 as lower-case hex, more as [binary N bytes].
#pragma once

#include <string>
#include <string_view>

#include "access/value.h"

namespace velnor::cli {

void appendCsv(std::string& out, ValueView v);
/// True when a text must stand in quotes: it is empty, or holds a quote, a comma or a line end.
bool needsQuotes(std::string_view text);
void appendCsvText(std::string& out, std::string_view text);
/// Numbers as JSON numbers, Null as null, dates and bytes as strings in the forms of CSV.
void appendJson(std::string& out, ValueView v);

}  // namespace velnor::cli
