#include "access/formats/lotus/wk_format.h"

#include <algorithm>

namespace velnor::lotus {
namespace {

constexpr std::uint8_t kRepeatFlag = 0x80, kUnprotected = 0x80;
constexpr std::size_t kColumns = 256;

bool meansDefault(std::uint8_t format)
{
    return (format | kUnprotected) == kSheetDefault;
}

}  // namespace

sheet::CellKind kindOfFormat(std::uint8_t format)
{
    constexpr unsigned kCurrencyType = 2, kSpecialType = 7;
    constexpr unsigned kDateDetails =
        1u << 2 | 1u << 3 | 1u << 4 | 1u << 7 | 1u << 8 | 1u << 9 | 1u << 10 | 1u << 11 | 1u << 12;
    const unsigned type = format >> 4 & 7;
    if (type == kCurrencyType)
        return sheet::CellKind::Currency;
    if (type == kSpecialType && (kDateDetails >> (format & 15) & 1))
        return sheet::CellKind::Date;
    return sheet::CellKind::Number;
}

std::optional<FormatHead> formatHead(const Record& record)
{
    if (record.size() < 4)
        return std::nullopt;
    FormatHead head{record.u8(0), record.u8(1), record.u16(2), 0, 0};
    if (head.kind == static_cast<std::uint8_t>(FormatRecordKind::Copy)) {
        if (record.size() < 8)
            return std::nullopt;
        head.sourceSheet = record.u8(4);
        head.sourceRow = record.u16(6);
    }
    return head;
}

const FormatEntry* entryAt(const FormatRow& row, unsigned column)
{
    for (const FormatRun& run : row) {
        if (column < run.columns)
            return &run.entry;
        column -= run.columns;
    }
    return nullptr;
}

std::vector<FormatEntry> expanded(const FormatRow& row, std::size_t columns)
{
    std::vector<FormatEntry> entries;
    for (const FormatRun& run : row)
        entries.insert(entries.end(), run.columns, run.entry);
    entries.resize(std::max(columns, entries.size()));
    return entries;
}

FormatRow packed(const std::vector<FormatEntry>& entries)
{
    FormatRow row;
    for (const FormatEntry& entry : entries) {
        if (!row.empty() && row.back().entry == entry)
            ++row.back().columns;
        else
            row.push_back({entry, 1});
    }
    return row;
}

FormatRow readFormatRow(const Record& record)
{
    FormatRow row;
    std::size_t left = kColumns;
    for (std::size_t at = 4; at + 4 <= record.size() && left > 0;) {
        const FormatEntry entry{record.u8(at), record.u16(at + 1),
                                static_cast<std::uint8_t>(record.u8(at + 3) & ~kRepeatFlag)};
        const bool repeats = record.u8(at + 3) & kRepeatFlag;
        at += 4;
        std::size_t columns = 1;
        if (repeats) {
            if (at >= record.size())
                break;
            columns += record.u8(at++);
        }
        columns = std::min(columns, left);
        row.push_back({entry, static_cast<std::uint16_t>(columns)});
        left -= columns;
    }
    return row;
}

Bytes formatRowRecord(std::uint8_t sheet, std::uint16_t row, const FormatRow& entries)
{
    Bytes data{sheet, static_cast<std::uint8_t>(FormatRecordKind::Row)};
    append16(data, row);
    for (const FormatRun& run : entries) {
        const bool repeats = run.columns > 1;
        data.push_back(run.entry.format);
        append16(data, run.entry.attributes);
        data.push_back(static_cast<std::uint8_t>(run.entry.flags | (repeats ? kRepeatFlag : 0)));
        if (repeats)
            data.push_back(static_cast<std::uint8_t>(run.columns - 1));
    }
    return data;
}

Bytes formatCopyRecord(std::uint8_t sheet, std::uint16_t row, std::uint16_t sourceRow)
{
    Bytes data{sheet, static_cast<std::uint8_t>(FormatRecordKind::Copy)};
    append16(data, row);
    data.push_back(sheet);
    data.push_back(0);
    append16(data, sourceRow);
    return data;
}

std::uint32_t& FormatTable::place(std::uint8_t sheet, std::uint16_t row)
{
    auto& rows = rows_[sheet];
    if (row >= rows.size())
        rows.resize(row + 1u);
    return rows[row];
}

void FormatTable::set(std::uint8_t sheet, std::uint16_t row, FormatRow entries)
{
    lists_.push_back(std::move(entries));
    place(sheet, row) = static_cast<std::uint32_t>(lists_.size() - 1);
}

void FormatTable::copy(std::uint8_t sheet, std::uint16_t row, std::uint16_t sourceRow,
                       std::uint8_t sourceSheet)
{
    const std::uint32_t source = number(sourceSheet, sourceRow);
    place(sheet, row) = source;
}

void FormatTable::take(const Record& record, std::uint32_t rows)
{
    const auto head = formatHead(record);
    if (!head || head->row >= rows)
        return;
    switch (static_cast<FormatRecordKind>(head->kind)) {
    case FormatRecordKind::Row:
        return set(head->sheet, head->row, readFormatRow(record));
    case FormatRecordKind::Copy:
        return copy(head->sheet, head->row, head->sourceRow, head->sourceSheet);
    case FormatRecordKind::SheetDefault:
        if (record.size() > 4)
            defaults_[head->sheet] = record.u8(4);
    }
}

const FormatRow& FormatTable::row(std::uint8_t sheet, std::uint16_t row) const
{
    return lists_[number(sheet, row)];
}

std::uint8_t FormatTable::formatIn(const FormatRow& row, std::uint8_t sheet,
                                   std::uint8_t column) const
{
    const FormatEntry* entry = entryAt(row, column);
    const std::uint8_t told = entry ? entry->format : kSheetDefault;
    if (!meansDefault(told))
        return told;
    const auto usual = defaults_.find(sheet);
    return usual == defaults_.end() || meansDefault(usual->second) ? kGeneral : usual->second;
}

}  // namespace velnor::lotus
