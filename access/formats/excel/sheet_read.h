// access/formats/excel/sheet_read.h - the cells of a sheet's substream.
#pragma once

#include <vector>

#include "access/formats/excel/globals.h"
#include "access/formats/sheet/cell_grid.h"
#include "access/formats/sheet/text_pool.h"

namespace velnor::excel {

/// A cell that is blank but has a format.
struct BlankCell {
    std::uint32_t row;
    std::uint16_t column, xf;
};

struct SheetContent {
    sheet::CellGrid* cells = nullptr;
    sheet::TextPool* texts = nullptr;  ///< number n is string n of the SST
    std::vector<BlankCell> blanks;     ///< the first ones of the sheet, row by row
    std::vector<std::string> faults;
};

/// Reads the substream at `position` into `content`. Cells of charts within the sheet are left out;
/// records that are too short are passed over; of several cells for a place the last one wins.
void readSheet(Bytes stream, std::size_t position, const Globals& globals, SheetContent& content);

/// The value of an RK number: 30 bits as an integer or as the upper half of a double, perhaps
/// divided by 100.
double numberOfRk(std::uint32_t rk);

}  // namespace velnor::excel
