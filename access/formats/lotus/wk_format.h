// access/formats/lotus/wk_format.h - how cells are shown, which alone tells dates and money from
// numbers.
//
// A format byte: bit 7 not protected; bits 4 to 6 the type: 0 fixed, 1 scientific, 2 currency, 3
// percent, 4 comma, 7 special; bits 0 to 3 decimals or, of special: 1 general, 2 3 4 7 to 12
// dates and times, 15 the sheet's default. A FORMAT record is a row: entries from column 0 on,
// each for one or more columns (kind 0), or the same as another row that came before (kind 2);
// or the sheet's default (kind 1).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "access/formats/lotus/wk_records.h"
#include "access/formats/sheet/cell.h"

namespace velnor::lotus {

inline constexpr std::uint8_t kGeneral = 0xF1, kShortDate = 0xF9, kTimeOfDay = 0xF7, kMoney = 0xA2,
                              kLabelFormat = 0xFD, kSheetDefault = 0xFF;

/// Number, Currency or Date.
sheet::CellKind kindOfFormat(std::uint8_t format);

struct FormatEntry {
    std::uint8_t format = kSheetDefault;
    std::uint16_t attributes = 0;  ///< bold, italic, style number
    std::uint8_t flags = 0x40;     ///< without bit 7, which tells a repeat
    bool operator==(const FormatEntry&) const = default;
};
/// What this program writes for numbers and for long texts in a new table, so that a column without
/// values keeps its type: general, and "label".
inline constexpr FormatEntry kNumberEntry{kGeneral, 0, 0x40}, kMemoEntry{kLabelFormat, 0, 0x40};

/// The entries of a row from column 0 on, each for one or more columns; they may end before the
/// last column.
struct FormatRun {
    FormatEntry entry;
    std::uint16_t columns = 1;
};
using FormatRow = std::vector<FormatRun>;
/// Null for a column that the row does not reach.
const FormatEntry* entryAt(const FormatRow& row, unsigned column);
/// One entry a column, at least so many; default ones where the row says nothing.
std::vector<FormatEntry> expanded(const FormatRow& row, std::size_t columns);
FormatRow packed(const std::vector<FormatEntry>& entries);

enum class FormatRecordKind : std::uint8_t { Row = 0, SheetDefault = 1, Copy = 2 };
struct FormatHead {
    std::uint8_t sheet;
    std::uint8_t kind;
    std::uint16_t row;
    std::uint8_t sourceSheet;  ///< of a copy
    std::uint16_t sourceRow;
};
/// Nothing for a record that is too short.
std::optional<FormatHead> formatHead(const Record& record);
/// The entries of a record of kind 0. At most 256 columns.
FormatRow readFormatRow(const Record& record);
Bytes formatRowRecord(std::uint8_t sheet, std::uint16_t row, const FormatRow& entries);
Bytes formatCopyRecord(std::uint8_t sheet, std::uint16_t row, std::uint16_t sourceRow);

/// The formats of all rows of a file. Rows that copy share one list of entries.
class FormatTable {
public:
    /// Takes in the next FORMAT record; rows from `rows` on are passed over.
    void take(const Record& record, std::uint32_t rows);

    /// Takes over the sheets' defaults of another table.
    void takeDefaults(const FormatTable& other) { defaults_ = other.defaults_; }

    /// The entries of a row, empty where it has no record.
    const FormatRow& row(std::uint8_t sheet, std::uint16_t row) const;
    bool has(std::uint8_t sheet, std::uint16_t row) const { return number(sheet, row) != 0; }
    void set(std::uint8_t sheet, std::uint16_t row, FormatRow entries);
    void copy(std::uint8_t sheet, std::uint16_t row, std::uint16_t sourceRow,
              std::uint8_t sourceSheet);

    /// With the sheet's default where the row says nothing.
    std::uint8_t formatAt(std::uint8_t sheet, std::uint16_t row, std::uint8_t column) const
    {
        return formatIn(this->row(sheet, row), sheet, column);
    }
    std::uint8_t formatIn(const FormatRow& row, std::uint8_t sheet, std::uint8_t column) const;

private:
    std::uint32_t number(std::uint8_t sheet, std::uint16_t row) const
    {
        const auto& rows = rows_[sheet];
        return row < rows.size() ? rows[row] : 0;
    }
    std::uint32_t& place(std::uint8_t sheet, std::uint16_t row);

    std::vector<FormatRow> lists_{1};                   // 0: no record
    std::array<std::vector<std::uint32_t>, 256> rows_;  // of each sheet: the number of a list
    std::map<std::uint8_t, std::uint8_t> defaults_;
};

}  // namespace velnor::lotus
