// access/formats/lotus/format_plan.h - what a commit does to the rows of formats, so that written
// dates and amounts are shown as such.
//
// 1. A row whose formats do not fit its new values gets the same formats as the row above it when
//    those fit, else a list of its own: in place of its record, or behind the sheet's last one.
// 2. A row with older cells that would change along, since it copies a changed row, gets a list of
//    its own with its old formats. Rows without cells may change along.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "access/formats/lotus/wk_format.h"

namespace velnor::lotus {

/// A cell that must be shown as this kind; `entry` is what makes it so where nothing else does.
struct FormatNeed {
    CellPlace place;
    sheet::CellKind kind = sheet::CellKind::Number;
    FormatEntry entry;
    bool exact = false;  ///< this very entry, not another of the kind
};

class FormatPlan {
public:
    using HasCells = std::function<bool(std::uint8_t sheet, std::uint16_t row)>;

    /// `needs` in the order of their places. `old`: the formats as they are. `hasOldCells`: a row
    /// holds cells that were not written just now.
    FormatPlan(std::vector<FormatNeed> needs, const FormatTable& old, HasCells hasOldCells,
               std::uint32_t rows);

    /// Takes in the file's FORMAT records, in order.
    void take(const Record& record);
    /// All were taken in.
    void finish();

    /// What stands for the FORMAT record at this place; null: the record itself.
    const Bytes* replacement(std::uint64_t at) const;
    /// New records, behind the last row's record of their sheet.
    const std::map<std::uint8_t, std::vector<Bytes>>& inserted() const { return inserted_; }
    const FormatTable& formats() const { return now_; }

private:
    using Needs = std::pair<std::size_t, std::size_t>;  // from, behind
    Needs needsOf(std::uint8_t sheet, std::uint16_t row) const;
    bool fits(const FormatNeed& need, const FormatRow& row) const;
    bool fit(Needs needs, const FormatRow& row) const;
    FormatRow composed(Needs needs, const FormatRow& base, const FormatRow& above) const;
    /// The record that gives a row what it needs; notes it as done.
    Bytes settle(std::uint8_t sheet, std::uint16_t row, Needs needs, const FormatRow& base);

    std::vector<FormatNeed> needs_;
    std::vector<bool> done_;  // of each need
    const FormatTable& old_;
    FormatTable now_;
    HasCells hasOldCells_;
    std::uint32_t rows_;
    std::map<std::uint64_t, Bytes> replaced_;
    std::map<std::uint8_t, std::vector<Bytes>> inserted_;
};

}  // namespace velnor::lotus
