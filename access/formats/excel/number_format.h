// access/formats/excel/number_format.h - what a number format makes of a number: a date, a sum of
// money or a plain number.
#pragma once

#include <string_view>

#include "access/formats/sheet/cell.h"

namespace velnor::excel {

struct FormatClass {
    sheet::CellKind kind = sheet::CellKind::Number;  ///< Number, Currency or Date
    bool time = false;                               ///< shows hours or seconds
};

/// By the format's text: a date when the first section has letters of dates and no digits in the
/// order of a number; else money when any section has a currency sign.
FormatClass classOfFormat(std::string_view text);
/// By the index of a format that the file does not spell out.
FormatClass classOfBuiltInFormat(int index);

}  // namespace velnor::excel
