#include "access/formats/sheet/sheet_cursor.h"

#include <algorithm>

namespace velnor::sheet {

SheetCursor::SheetCursor(std::shared_ptr<const SheetTable> table)
    : table_(std::move(table)), scratch_(table_->layout().fields.size())
{
}

bool SheetCursor::stand(std::int64_t n)
{
    const std::int64_t count = table_->recordCount();
    at_ = std::clamp<std::int64_t>(n, -1, count);
    return n >= 0 && n < count;
}

bool SheetCursor::first()
{
    return stand(0);
}

bool SheetCursor::last()
{
    return stand(table_->recordCount() - 1);
}

bool SheetCursor::next()
{
    return stand(at_ + 1);
}

bool SheetCursor::previous()
{
    return stand(at_ - 1);
}

bool SheetCursor::moveTo(RowId row)
{
    const std::uint32_t first = table_->firstRecord();
    if (row < first || row - first >= static_cast<RowId>(table_->recordCount()))
        return false;
    return stand(static_cast<std::int64_t>(row - first));
}

bool SheetCursor::moveToOrdinal(std::int64_t n)
{
    return n >= 0 && n < table_->recordCount() && stand(n);
}

ValueView SheetCursor::field(int n)
{
    return table_->valueOf(table_->sheet().cells.find(sheetRow(), table_->columnOf(n)), n,
                           scratch_[static_cast<std::size_t>(n)]);
}

void SheetCursor::fields(std::span<ValueView> out)
{
    const std::span<const Cell> cells = table_->sheet().cells.row(sheetRow());
    const std::uint16_t start = table_->columnOf(0);
    const Cell* cell = cells.data();
    const Cell* const end = cell + cells.size();
    while (cell != end && cell->column < start)
        ++cell;
    for (std::size_t n = 0; n < out.size(); ++n) {
        const bool there = cell != end && cell->column == start + n;
        out[n] = table_->valueOf(there ? cell : nullptr, static_cast<int>(n), scratch_[n]);
        cell += there;
    }
}

}  // namespace velnor::sheet
