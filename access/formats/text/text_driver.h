// access/formats/text/text_driver.h - text files as tables.
//
// A folder is a database; every TXT, CSV, TAB and ASC file in it is a table under its whole name
// ("Close.Txt"; "Close#Txt" and "Close" find it, too).
// Reads   fields separated by a comma, semicolon, tab or bar, found out from the first lines (a
//         file that has none is a table of lines), or of fixed width when schema.ini tells the
//         columns; quotes; CR LF, LF and CR; UTF-8, UTF-16, 8-bit code pages (1252 when nothing
//         else is told and the file is no UTF-8).
// Fields  are named by the first line, and typed by all values of a column, so that none is lost;
//         names and types told by schema.ini come first. An empty field is Null, "" an empty text.
// Writes  records at the end of a file, and new files with their section in schema.ini. Records are
//         not changed or deleted (3251).
// Options of the connect string: HDR=No (no names in the first line), FMT=TabDelimited,
//         CharacterSet=, DecimalSymbol=, DateTimeFormat= as in schema.ini.
// No other header of this folder is included from outside it.
#pragma once

#include "access/formats/driver.h"

namespace velnor::text {

class TextDriver final : public Driver {
public:
    std::span<const std::string_view> connectWords() const override;  // "Text;"
    const FormatTraits& traits(std::string_view connectWord) const override;
    std::unique_ptr<Store> open(FileSystem& files, const OpenRequest& request) const override;
};

}  // namespace velnor::text
