// access/formats/sheet/cell.h - one cell of a spreadsheet, as the formats of sheets share it.
//
// 16 bytes, no heap: a text is its number in the TextPool of its file. Rows and columns count from
// 0.
#pragma once

#include <cstdint>

namespace velnor::sheet {

/// What a cell holds. Number, Currency and Date are the same double, told apart by the cell's
/// number format alone; a Date is the serial of the file's own date system.
enum class CellKind : std::uint8_t { Blank, Number, Currency, Date, Text, Boolean, Error };

struct Cell {
    union {
        double number = 0;   ///< Number, Currency, Date; 1 or 0 of Boolean
        std::uint32_t text;  ///< Text: its number in the TextPool
    };
    std::uint16_t column = 0;
    std::uint16_t style = 0;  ///< the format's own: an XF index, a format byte
    CellKind kind = CellKind::Blank;
    bool formula = false;  ///< the value is the cached result of one

    static Cell blank(std::uint16_t column) { return of(CellKind::Blank, column); }
    static Cell ofNumber(CellKind kind, std::uint16_t column, double number)
    {
        Cell cell = of(kind, column);
        cell.number = number;
        return cell;
    }
    static Cell ofText(std::uint16_t column, std::uint32_t text)
    {
        Cell cell = of(CellKind::Text, column);
        cell.text = text;
        return cell;
    }
    bool isNumber() const { return kind >= CellKind::Number && kind <= CellKind::Date; }

private:
    static Cell of(CellKind kind, std::uint16_t column)
    {
        Cell cell;
        cell.kind = kind;
        cell.column = column;
        return cell;
    }
};
static_assert(sizeof(Cell) == 16);

/// A rectangle of cells; both ends belong to it.
struct Area {
    std::uint32_t firstRow = 0, lastRow = 0;
    std::uint16_t firstColumn = 0, lastColumn = 0;
};

struct Place {
    std::uint32_t row = 0;
    std::uint16_t column = 0;
};

}  // namespace velnor::sheet
