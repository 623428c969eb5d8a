#include "access/formats/lotus/format_plan.h"

#include <algorithm>

namespace velnor::lotus {
namespace {

bool sameRow(const FormatRow& a, const FormatRow& b)
{
    return expanded(a, 0) == expanded(b, 0);
}

}  // namespace

FormatPlan::FormatPlan(std::vector<FormatNeed> needs, const FormatTable& old, HasCells hasOldCells,
                       std::uint32_t rows)
    : needs_(std::move(needs)), done_(needs_.size()), old_(old),
      hasOldCells_(std::move(hasOldCells)), rows_(rows)
{
    now_.takeDefaults(old);
}

FormatPlan::Needs FormatPlan::needsOf(std::uint8_t sheet, std::uint16_t row) const
{
    const auto first = std::lower_bound(
        needs_.begin(), needs_.end(), CellPlace{sheet, row, 0},
        [](const FormatNeed& need, const CellPlace& place) { return need.place < place; });
    auto behind = first;
    while (behind != needs_.end() && behind->place.sheet == sheet && behind->place.row == row)
        ++behind;
    return {static_cast<std::size_t>(first - needs_.begin()),
            static_cast<std::size_t>(behind - needs_.begin())};
}

bool FormatPlan::fits(const FormatNeed& need, const FormatRow& row) const
{
    if (need.exact) {
        const FormatEntry* entry = entryAt(row, need.place.column);
        return entry && *entry == need.entry;
    }
    return kindOfFormat(now_.formatIn(row, need.place.sheet, need.place.column)) == need.kind;
}

bool FormatPlan::fit(Needs needs, const FormatRow& row) const
{
    for (std::size_t i = needs.first; i < needs.second; ++i)
        if (!fits(needs_[i], row))
            return false;
    return true;
}

FormatRow FormatPlan::composed(Needs needs, const FormatRow& base, const FormatRow& above) const
{
    std::vector<FormatEntry> entries =
        expanded(base, needs_[needs.second - 1].place.column + std::size_t{1});
    for (std::size_t i = needs.first; i < needs.second; ++i) {
        const FormatNeed& need = needs_[i];
        if (fits(need, base))
            continue;
        const FormatEntry* like = fits(need, above) ? entryAt(above, need.place.column) : nullptr;
        entries[need.place.column] = like ? *like : need.entry;
    }
    return packed(entries);
}

Bytes FormatPlan::settle(std::uint8_t sheet, std::uint16_t row, Needs needs, const FormatRow& base)
{
    const auto above = static_cast<std::uint16_t>(row - 1);
    if (row > 0 && !hasOldCells_(sheet, row) && now_.has(sheet, above) &&
        fit(needs, now_.row(sheet, above))) {
        now_.copy(sheet, row, above, sheet);
        return formatCopyRecord(sheet, row, above);
    }
    const FormatRow none;
    FormatRow made = composed(needs, base, row > 0 ? now_.row(sheet, above) : none);
    Bytes record = formatRowRecord(sheet, row, made);
    now_.set(sheet, row, std::move(made));
    return record;
}

void FormatPlan::take(const Record& record)
{
    const auto head = formatHead(record);
    now_.take(record, rows_);
    if (!head || head->row >= rows_ ||
        head->kind == static_cast<std::uint8_t>(FormatRecordKind::SheetDefault))
        return;
    const FormatRow& would = now_.row(head->sheet, head->row);
    const Needs needs = needsOf(head->sheet, head->row);
    std::fill(done_.begin() + static_cast<std::ptrdiff_t>(needs.first),
              done_.begin() + static_cast<std::ptrdiff_t>(needs.second), true);
    const bool settles = needs.first != needs.second && !fit(needs, would);
    if (settles && !hasOldCells_(head->sheet, head->row)) {
        const FormatRow base = would;
        replaced_[record.at] = settle(head->sheet, head->row, needs, base);
        return;
    }
    if (!hasOldCells_(head->sheet, head->row))
        return;
    const FormatRow& before = old_.row(head->sheet, head->row);
    if (!settles && sameRow(before, would))
        return;
    FormatRow own = settles ? composed(needs, before, before) : before;
    replaced_[record.at] = formatRowRecord(head->sheet, head->row, own);
    now_.set(head->sheet, head->row, std::move(own));
}

void FormatPlan::finish()
{
    for (std::size_t i = 0; i < needs_.size();) {
        const CellPlace place = needs_[i].place;
        const Needs needs = needsOf(place.sheet, place.row);
        i = needs.second;
        const FormatRow none;
        if (done_[needs.first] || fit(needs, none))
            continue;
        inserted_[place.sheet].push_back(settle(place.sheet, place.row, needs, none));
    }
}

const Bytes* FormatPlan::replacement(std::uint64_t at) const
{
    const auto found = replaced_.find(at);
    return found == replaced_.end() ? nullptr : &found->second;
}

}  // namespace velnor::lotus
