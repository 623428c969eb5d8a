// access/formats/sheet/sheet_writer.h - adds and changes records of a table on a sheet, in memory;
// the store writes the grid's changes at its commit.
#pragma once

#include <memory>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/sheet/sheet_table.h"

namespace velnor::sheet {

/// What a kind of sheet can hold, and what its store does around a change.
class SheetRules {
public:
    virtual ~SheetRules() = default;
    virtual std::uint32_t rows() const = 0;       ///< of a sheet
    virtual std::size_t longestText() const = 0;  ///< UTF-16 units in a cell
    /// Throws 3027 where the file may not be written.
    virtual void requireWriteable(const SheetTable& table) = 0;
    /// Throws 3421 for a text that the format cannot store.
    virtual void checkText(std::string_view) const {}
    /// A Boolean as a cell; formats without Booleans hold 1 and 0 as numbers.
    virtual CellKind booleanKind() const { return CellKind::Boolean; }
};

/// Deletes are refused with 3617, changes of formulas with 3251, a record beyond the last row with
/// 3437, below a range whose next row is taken with 3434, dates that the date system does not have
/// and numbers that are none with 3421, long texts with 3163.
class SheetWriter final : public RowWriter {
public:
    SheetWriter(std::shared_ptr<SheetTable> table, SheetRules& rules);

    RowId insert(std::span<const ValueView> values) override;
    void update(RowId row, std::span<const FieldChange> changes) override;
    void remove(RowId row) override;

private:
    std::uint32_t nextRow() const;
    Cell cellOf(int field, ValueView value) const;
    void refuseFormula(std::uint32_t row, const FieldChange& change) const;

    std::shared_ptr<SheetTable> table_;
    SheetRules& rules_;
    std::vector<Cell> made_;
};

}  // namespace velnor::sheet
