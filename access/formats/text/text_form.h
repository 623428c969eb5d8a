// access/formats/text/text_form.h - how a text file is laid out: characters, lines, fields.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "access/layout.h"
#include "access/storage/code_page.h"

namespace velnor::text {

/// The unit of the stored characters.
enum class Units { Bytes, Utf16Little, Utf16Big };

struct Encoding {
    Units units = Units::Bytes;
    const CodePage* page =
        nullptr;             ///< of Bytes; null: UTF-8 when the whole file is such, else 1252
    unsigned markBytes = 0;  ///< length of the byte order mark at the start

    bool wide() const { return units != Units::Bytes; }
};

/// One column as schema.ini tells it; a type of None is found out from the values.
struct ColumnDef {
    std::string name;
    FieldType type = FieldType::None;
    int width = 0;  ///< characters: the size of a text, the width of a column of fixed width
};

struct TextForm {
    Encoding encoding;
    bool header = true;    ///< the first record holds the names of the fields
    bool fixed = false;    ///< columns of fixed width; else a delimiter stands between the fields
    char delimiter = ',';  ///< 0: a line is one field
    char quote = '"';      ///< around fields that hold a delimiter or a line end; 0: none
    char decimalPoint = '.';
    std::string dateFormat;  ///< "dd/mm/yyyy hh:nn"; empty: YYYY-MM-DD or m/d/yyyy
    std::string lineEnd = "\r\n";
    std::vector<ColumnDef> columns;
};

/// The most columns of a table; what a line has behind them is not shown.
inline constexpr std::size_t kMostColumns = 255;

}  // namespace velnor::text
