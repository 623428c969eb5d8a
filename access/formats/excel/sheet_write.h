// access/formats/excel/sheet_write.h - writes a sheet's substream anew with changed cells in it.
//
// Every record that is not touched stays as it is and where it is. What is touched:
//   1. a changed cell's record is replaced, keeping its format; of several cells in one record
//      (MULRK, MULBLANK) the others become records of their own;
//   2. a new cell comes in where rows and columns put it. Its format is that of the nearest cell
//      above in its column below the header, else of the row, of the column, else the plain one;
//   3. ROW records are widened, or made for new rows when the sheet has such records;
//   4. DIMENSIONS is widened;
//   5. INDEX and DBCELL go: they hold positions, and are an aid to speed that readers do without.
// Formulas are left alone with their results.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <vector>

#include "access/formats/excel/cell_records.h"
#include "access/formats/excel/globals.h"
#include "access/formats/excel/stream_sink.h"
#include "access/formats/excel/style_book.h"
#include "access/formats/sheet/cell_grid.h"

namespace velnor::excel {

/// What is to be written into a sheet.
struct SheetEdit {
    sheet::CellGrid* cells = nullptr;  ///< its changes()
    std::set<std::uint32_t> headers;   ///< rows whose formats do not go on below
    /// The types of the fields of a table that was made, by column, for the blank cells in the row
    /// below its header.
    std::map<std::uint16_t, FieldType> blankTypes;
    std::uint32_t blankRow = 0;
};

/// Writes the substream `old` (BOF to EOF). Without an edit only positions go (5). To `references`
/// the number of its cells with a shared text is added.
void writeSheet(Bytes old, SheetEdit* edit, const Globals& globals, StyleBook& styles,
                const TextNumbers& texts, StreamSink& sink, std::uint32_t& references);

/// Writes it without its cells and rows; what else the sheet has stays.
void writeClearedSheet(Bytes old, StreamSink& sink);

}  // namespace velnor::excel
