// access/formats/sheet/sheet_table.h - an area of cells seen as a table.
//
// The rules, in one place:
//
// 1. Place. A sheet's table is the smallest area around its cells that are not blank; a named
// range's table is the range. At most 255 columns are used. The first row holds the names of the
// fields (HDR=No: it is a record); every row below it is a record, also a row of Nulls.
//
// 2. Name. The header's text, number, Boolean or date; control characters become a blank; "." "!"
// "[" "]" and the grave accent become "#" "$" "(" ")" and "'", since names cannot hold them; cut at
// 64 characters. Without a name, or with one that was there before, it is F and the column's place.
//
// 3. Type. The kind that most of the first 8 records have; with equal counts the first of Double,
// Currency, Date, Text, Boolean. In a column without any value: what a blank cell below the header
// is marked with (tables that were made and never filled), else Text. A Text column is Memo when
// any of its texts is longer than 255 characters.
//
// 4. Value. A Text field takes texts, a Boolean one Booleans, a Double, Currency or Date one every
// number, so that a number in a column of dates is not lost; everything else is Null.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "access/formats/driver.h"
#include "access/formats/sheet/cell_grid.h"
#include "access/formats/sheet/sheet_options.h"
#include "access/formats/sheet/text_pool.h"

namespace velnor::sheet {

/// One sheet of an open file.
struct Sheet {
    CellGrid cells;
    TextPool* texts = nullptr;  ///< of the file
    bool date1904 = false;
    /// The type that a blank cell's format stands for, for columns that hold no value yet; empty
    /// where the format cannot tell. Asked for the first record's cells only.
    std::function<std::optional<FieldType>(std::uint32_t row, std::uint16_t column)> blankType;
};

/// A table on a sheet. Shared by its cursors and writers; a writer lets it grow.
class SheetTable {
public:
    /// The table of a whole sheet, or of `range`. Reads every cell of it once.
    SheetTable(std::string name, std::shared_ptr<Sheet> sheet, std::optional<Area> range,
               const SheetOptions& options);
    /// A new table that `layout` describes, its header in the first row of `sheet`; the cells are
    /// there already.
    SheetTable(TableLayout layout, std::shared_ptr<Sheet> sheet);

    const TableLayout& layout() const { return layout_; }
    TableLayout& layout() { return layout_; }
    Sheet& sheet() const { return *sheet_; }
    const Area& area() const { return area_; }
    bool isRange() const { return range_; }
    bool header() const { return header_; }

    std::int64_t recordCount() const;
    /// Rows name the records: record n is the row firstRecord() + n.
    std::uint32_t firstRecord() const { return firstRecord_; }
    std::uint32_t lastRow() const;
    /// A record was added in this row; its cells are there already.
    void growTo(std::uint32_t row);

    /// A cell as the value of field n; Null for none. Texts that are made lie in `scratch`.
    ValueView valueOf(const Cell* cell, int field, std::string& scratch) const;
    std::uint16_t columnOf(int field) const
    {
        return static_cast<std::uint16_t>(area_.firstColumn + field);
    }

private:
    void readLayout(const SheetOptions& options);
    std::string nameOf(std::uint16_t column) const;
    CellKind commonKind(std::uint16_t column, int guessRows, bool& mixed) const;
    FieldType typeOf(std::uint16_t column, const SheetOptions& options, bool anyValue,
                     bool longText) const;

    std::shared_ptr<Sheet> sheet_;
    TableLayout layout_;
    Area area_;
    std::uint32_t firstRecord_ = 0;
    bool range_ = false;
    bool header_ = true;
    bool empty_ = false;          // a sheet without cells: no fields, no records
    bool numbersAsText_ = false;  // Text fields show every kind of cell
    // Its Boolean fields were asked for; where the format has no Booleans their cells are 1 and 0.
    bool numbersAsBooleans_ = false;
};

/// A cell as people see it: "True", a number, a date "YYYY-MM-DD[ HH:MM:SS]", a text. Nothing for
/// errors and blanks.
void appendCellText(std::string& out, const Cell& cell, const Sheet& sheet);
/// "A" for 0, "Z" for 25, "AA" for 26.
std::string columnName(std::uint16_t column);
/// The field that a sheet keeps for a wanted one: numbers as Double, other texts as Text; 3251 for
/// bytes, which a cell cannot hold.
FieldDef keptField(const FieldDef& wanted);

}  // namespace velnor::sheet
