// access/formats/lotus/sheet_name.h - names that a sheet may have.
#pragma once

#include <string>
#include <string_view>

namespace velnor::lotus {

/// The name for a new sheet of this table, without the ":" that tables show behind it. 3125 when it
/// cannot be one: longer than 15 characters, with a ":" or a blank at an end, a letter of a sheet
/// ("AB"), or the address of a cell ("B12").
std::string sheetNameFor(std::string_view table);

}  // namespace velnor::lotus
