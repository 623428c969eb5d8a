// access/formats/lotus/sheet_records.h - the records that a new sheet or a new file begins with.
#pragma once

#include "access/formats/lotus/wk_book.h"

namespace velnor::lotus {

/// Data of an extended record (1B): the name that the book has for a sheet.
Bytes sheetNameRecord(std::uint8_t number, const WkBook& book);
/// Data of the records 05, 06 and 13 of a sheet.
Bytes sheetCellRecord(std::uint8_t number);
Bytes sheetLayoutRecord(std::uint8_t number);
Bytes sheetDefaultRecord(std::uint8_t number);

/// The bytes of a new file with an empty sheet A; Wk3 or Wk4.
Bytes newBook(WkVersion version);

}  // namespace velnor::lotus
