#include "access/formats/sheet/cell_grid.h"

#include <algorithm>
#include <tuple>

namespace velnor::sheet {
namespace {

constexpr std::size_t kMostInRow = 0xFFFF;

bool before(const Place& a, const Place& b)
{
    return std::tie(a.row, a.column) < std::tie(b.row, b.column);
}

}  // namespace

void CellGrid::widen(std::uint32_t row, std::uint16_t column)
{
    if (!any_) {
        any_ = true;
        used_ = {row, row, column, column};
        return;
    }
    used_.firstRow = std::min(used_.firstRow, row);
    used_.lastRow = std::max(used_.lastRow, row);
    used_.firstColumn = std::min(used_.firstColumn, column);
    used_.lastColumn = std::max(used_.lastColumn, column);
}

std::optional<Area> CellGrid::usedArea() const
{
    return any_ ? std::optional(used_) : std::nullopt;
}

/// A row that grows in the middle of the others gets twice the room at the end; what it leaves
/// behind is less than what was put.
void CellGrid::moveToEnd(Row& row)
{
    const std::size_t start = cells_.size();
    const std::size_t room =
        std::min<std::size_t>(std::max<std::size_t>(8, row.count * 2u), kMostInRow);
    cells_.resize(start + room);
    std::copy_n(cells_.begin() + row.start, row.count,
                cells_.begin() + static_cast<std::ptrdiff_t>(start));
    row.start = static_cast<std::uint32_t>(start);
    row.room = static_cast<std::uint16_t>(room);
}

void CellGrid::insert(Row& row, std::size_t at, const Cell& cell)
{
    if (row.count == row.room) {
        const bool last = row.start + row.count == cells_.size();
        if (row.count == 0)
            row.start = static_cast<std::uint32_t>(cells_.size());
        if (row.count == 0 || (last && row.room < kMostInRow)) {
            cells_.emplace_back();
            ++row.room;
        } else {
            moveToEnd(row);
        }
    }
    const auto first = cells_.begin() + row.start;
    const auto place = first + static_cast<std::ptrdiff_t>(at);
    std::move_backward(place, first + row.count, first + row.count + 1);
    *place = cell;
    ++row.count;
}

void CellGrid::put(std::uint32_t row, const Cell& cell)
{
    const bool holds = cell.kind != CellKind::Blank || cell.formula;
    if (cell.kind != CellKind::Blank)
        widen(row, cell.column);
    if (row >= rows_.size()) {
        if (!holds)
            return;
        rows_.resize(row + 1);
    }
    Row& r = rows_[row];
    if (r.count == 0 || cells_[r.start + r.count - 1u].column < cell.column) {
        if (holds)
            insert(r, r.count, cell);
        return;
    }
    const auto first = cells_.begin() + r.start;
    const auto found =
        std::lower_bound(first, first + r.count, cell.column,
                         [](const Cell& c, std::uint16_t column) { return c.column < column; });
    if (found->column == cell.column)
        *found = cell;
    else if (holds)
        insert(r, static_cast<std::size_t>(found - first), cell);
}

void CellGrid::change(std::uint32_t row, const Cell& cell)
{
    const Place place{row, cell.column};
    put(row, cell);
    sorted_ = sorted_ && (changes_.empty() || before(changes_.back(), place));
    changes_.push_back(place);
}

std::span<const Cell> CellGrid::row(std::uint32_t row) const
{
    if (row >= rows_.size())
        return {};
    return {cells_.data() + rows_[row].start, rows_[row].count};
}

const Cell* CellGrid::find(std::uint32_t row, std::uint16_t column) const
{
    const std::span<const Cell> cells = this->row(row);
    if (cells.empty() || column < cells.front().column || column > cells.back().column)
        return nullptr;
    const std::size_t guess = static_cast<std::size_t>(column - cells.front().column);
    if (guess < cells.size() && cells[guess].column == column)  // a row without gaps
        return &cells[guess];
    const auto found =
        std::lower_bound(cells.begin(), cells.end(), column,
                         [](const Cell& c, std::uint16_t wanted) { return c.column < wanted; });
    return found != cells.end() && found->column == column ? &*found : nullptr;
}

const std::vector<Place>& CellGrid::changes()
{
    if (!sorted_) {
        std::sort(changes_.begin(), changes_.end(), before);
        changes_.erase(std::unique(changes_.begin(), changes_.end(),
                                   [](const Place& a, const Place& b) {
                                       return a.row == b.row && a.column == b.column;
                                   }),
                       changes_.end());
        sorted_ = true;
    }
    return changes_;
}

void CellGrid::forgetChanges()
{
    changes_ = {};
    sorted_ = true;
}

}  // namespace velnor::sheet
