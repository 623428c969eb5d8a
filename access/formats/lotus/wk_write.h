// access/formats/lotus/wk_write.h - a worksheet file written anew with its changes. Every record
// that has no part in them goes over as it is, and so does what stands behind EOF.
//
// 1. A changed cell keeps its place among the records, a label its alignment; an emptied cell
//    has no record. New cells go in front of the first cell behind them, else behind the last
//    one.
// 2. BOF's last row, column and sheet grow with the cells, and so do the bounds of columns where
//    the file has any (programs may size sheets by them).
// 3. Formats: format_plan.h. Named ranges get the last row of the table that grew through them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "access/formats/lotus/format_plan.h"
#include "access/formats/lotus/wk_book.h"

namespace velnor::lotus {

/// Changes beside those that the grids of the sheets have marked.
struct WkChanges {
    std::optional<std::uint8_t> newSheet;    ///< its records are missing
    std::optional<std::uint8_t> namedSheet;  ///< it gets its first name, as the book says
    std::optional<std::uint8_t> droppedSheet;
    std::map<std::size_t, std::uint16_t> rangeEnds;  ///< of WkRange::record: the new last row
    std::vector<FormatNeed> emptyCells;              ///< formats of cells that hold nothing yet

    bool any() const
    {
        return newSheet || namedSheet || droppedSheet || !rangeEnds.empty() || !emptyCells.empty();
    }
};

/// Writes the file into `to`, and takes the new formats into the book. The grids keep their marks.
void rewriteBook(File& from, File& to, WkBook& book, const WkChanges& changes);

}  // namespace velnor::lotus
