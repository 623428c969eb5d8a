// access/formats/sheet/cell_grid.h - the cells of one sheet that hold something.
//
// Filled in any order, as files have them; read row by row. Cells of a row lie side by side in the
// order of their columns. Memory follows the cells that are there, never a size that a file claims.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "access/formats/sheet/cell.h"

namespace velnor::sheet {

class CellGrid {
public:
    /// Sets a cell; the last one for a place wins. Blank takes away what stands there;
    /// a blank formula is kept, since it cannot be written over.
    void put(std::uint32_t row, const Cell& cell);
    /// put(), remembered as a change that is to be written.
    void change(std::uint32_t row, const Cell& cell);

    /// The cells of a row, left to right; Blank ones may be among them. Good until the next put().
    std::span<const Cell> row(std::uint32_t row) const;
    /// Null when the place is empty. Good until the next put().
    const Cell* find(std::uint32_t row, std::uint16_t column) const;

    /// The smallest area around every cell that was put and is not blank; nothing when there is
    /// none. It does not shrink when cells are taken away.
    std::optional<Area> usedArea() const;

    /// Changed places in the order of rows, then columns, each once.
    const std::vector<Place>& changes();
    void forgetChanges();
    std::size_t changeCount() const { return changes_.size(); }

private:
    struct Row {
        std::uint32_t start = 0;
        std::uint16_t count = 0;
        std::uint16_t room = 0;
    };

    void insert(Row& row, std::size_t at, const Cell& cell);
    void moveToEnd(Row& row);
    void widen(std::uint32_t row, std::uint16_t column);

    std::vector<Cell> cells_;
    std::vector<Row> rows_;
    std::vector<Place> changes_;
    Area used_;
    bool any_ = false;
    bool sorted_ = true;
};

}  // namespace velnor::sheet
