#include "access/formats/lotus/wk_write.h"

#include <algorithm>
#include <set>

#include "access/formats/lotus/cell_writer.h"
#include "access/formats/lotus/sheet_records.h"
#include "access/formats/lotus/wk_survey.h"

namespace velnor::lotus {
namespace {

using sheet::Cell;
using sheet::CellKind;

constexpr std::size_t kCopyBytes = 64u << 10;

FormatEntry usualEntry(const Cell& cell)
{
    FormatEntry entry;
    entry.format = cell.kind == CellKind::Currency      ? kMoney
                   : cell.kind != CellKind::Date        ? kGeneral
                   : cell.number > 0 && cell.number < 1 ? kTimeOfDay
                                                        : kShortDate;
    return entry;
}

std::vector<FormatNeed> neededFormats(WkBook& book, const WkChanges& changes)
{
    std::vector<FormatNeed> needs = changes.emptyCells;
    for (const CellPlace& place : changedCells(book)) {
        const Cell* cell = book.sheet(place.sheet).cells->cells.find(place.row, place.column);
        if (cell && cell->isNumber())
            needs.push_back({place, cell->kind, usualEntry(*cell), false});
    }
    std::sort(needs.begin(), needs.end(),
              [](const FormatNeed& a, const FormatNeed& b) { return a.place < b.place; });
    return needs;
}

class Rewrite {
public:
    Rewrite(File& from, File& to, WkBook& book, const WkChanges& changes)
        : from_(from), sink_(to), cells_(sink_, book), book_(book), changes_(changes),
          plan_(
              neededFormats(book, changes), book.formats,
              [this](std::uint8_t sheet, std::uint16_t row) { return hasOldCells(sheet, row); },
              book.rows()),
          survey_(surveyBook(from, book, changes, plan_))
    {
        findSheetThatGoes();
        findGrowth();
    }
    void run();

private:
    bool hasOldCells(std::uint8_t sheet, std::uint16_t row);
    void findSheetThatGoes();
    void findGrowth();
    void record(const Record& record);
    void bof(const Record& record);
    void cell(const Record& record);
    void columnBounds(const Record& record);
    void newColumnBounds();
    void range(const Record& record);
    void format(const Record& record);
    void newFormats(std::uint64_t behind);
    void newSheetRecords(std::uint64_t behind);
    void inFront(const Record& record);
    void newCellsBefore(CellPlace place);
    void restOfNewCells();
    void putNew(std::size_t i);
    void copyTail(std::uint64_t from);
    bool dropped(std::uint8_t sheet) const
    {
        return changes_.droppedSheet && *changes_.droppedSheet == sheet;
    }
    const Cell* cellAt(CellPlace place)
    {
        return book_.sheet(place.sheet).cells->cells.find(place.row, place.column);
    }

    File& from_;
    RecordSink sink_;
    CellWriter cells_;
    WkBook& book_;
    const WkChanges& changes_;
    FormatPlan plan_;
    WkSurvey survey_;
    /// First and last row written in a column of a sheet.
    std::map<std::pair<std::uint8_t, std::uint8_t>, std::pair<std::uint16_t, std::uint16_t>> grown_;
    std::vector<bool> written_;
    std::size_t nextNew_ = 0;
    std::size_t ranges_ = 0;
    bool sheetGoes_ = false;
    bool bodyBegun_ = false;
};

/// Cells of a row that were not written just now. Asked of few rows.
bool Rewrite::hasOldCells(std::uint8_t sheet, std::uint16_t row)
{
    const auto found = book_.sheets.find(sheet);
    if (found == book_.sheets.end())
        return false;
    auto& grid = found->second.cells->cells;
    const auto& changes = grid.changes();
    for (const Cell& cell : grid.row(row)) {
        if (cell.kind == CellKind::Blank && !cell.formula)
            continue;
        const sheet::Place place{row, cell.column};
        const auto at =
            std::lower_bound(changes.begin(), changes.end(), place,
                             [](const sheet::Place& a, const sheet::Place& b) {
                                 return a.row != b.row ? a.row < b.row : a.column < b.column;
                             });
        if (at == changes.end() || at->row != row || at->column != cell.column)
            return true;
    }
    return false;
}

/// The records of a dropped sheet go only when no other sheet's number would have to change and
/// nothing points to it.
void Rewrite::findSheetThatGoes()
{
    sheetGoes_ = changes_.droppedSheet && *changes_.droppedSheet > 0 &&
                 *changes_.droppedSheet == survey_.lastSheet && !survey_.anyFormula &&
                 !survey_.rangesOnDropped;
}

void Rewrite::findGrowth()
{
    for (const CellPlace& place : survey_.changed) {
        const Cell* cell = cellAt(place);
        if (!cell || cell->kind == CellKind::Blank)
            continue;
        const auto [at, first] =
            grown_.insert({{place.sheet, place.column}, {place.row, place.row}});
        at->second.second = place.row;  // they come in the order of their rows
    }
}

void Rewrite::bof(const Record& record)
{
    Bytes data(record.data.begin(), record.data.end());
    auto row = loadLE<std::uint16_t>(&data[8]);
    for (const auto& [column, rows] : grown_) {
        row = std::max(row, rows.second);
        data[10] = std::max(data[10], column.first);
        data[11] = std::max(data[11], column.second);
    }
    if (changes_.newSheet)
        data[10] = std::max(data[10], *changes_.newSheet);
    if (sheetGoes_ && data[10] == *changes_.droppedSheet)
        --data[10];
    storeLE(&data[8], row);
    sink_.put(record.type, data);
}

void Rewrite::putNew(std::size_t i)
{
    written_[i] = true;
    const CellPlace place = survey_.changed[i];
    const Cell* cell = cellAt(place);
    if (cell)
        cells_.put(place, *cell);
}

void Rewrite::newCellsBefore(CellPlace place)
{
    for (; nextNew_ < survey_.changed.size() && survey_.changed[nextNew_] < place; ++nextNew_)
        if (!survey_.exists[nextNew_] && !written_[nextNew_])
            putNew(nextNew_);
}

void Rewrite::restOfNewCells()
{
    for (; nextNew_ < survey_.changed.size(); ++nextNew_)
        if (!survey_.exists[nextNew_] && !written_[nextNew_])
            putNew(nextNew_);
}

void Rewrite::cell(const Record& record)
{
    if (record.size() < 4)
        return sink_.put(record);
    const CellPlace place = placeOf(record);
    newCellsBefore(place);
    if (dropped(place.sheet))
        return;
    const std::size_t i = survey_.find(place);
    if (i == survey_.changed.size())
        return sink_.put(record);
    if (written_[i])
        return;  // an older record of the same cell
    written_[i] = true;
    const Cell* cell = cellAt(place);
    const bool label = record.type == wk::kLabel && record.size() > 4;
    if (cell)
        cells_.put(place, *cell, label ? record.u8(4) : kLeftAligned);
}

void Rewrite::columnBounds(const Record& record)
{
    if (record.size() != 8)
        return sink_.put(record);
    const std::uint8_t sheet = record.u8(0), column = record.u8(1);
    if (dropped(sheet))
        return;
    Bytes data(record.data.begin(), record.data.end());
    if (const auto grown = grown_.find({sheet, column}); grown != grown_.end()) {
        storeLE(&data[4], std::min(loadLE<std::uint16_t>(&data[4]), grown->second.first));
        storeLE(&data[6], std::max(loadLE<std::uint16_t>(&data[6]), grown->second.second));
    }
    sink_.put(record.type, data);
}

/// For columns that have their first cells now.
void Rewrite::newColumnBounds()
{
    for (const auto& [column, rows] : grown_) {
        if (survey_.bounds.contains(column))
            continue;
        std::uint8_t data[8] = {column.first, column.second, 1};
        storeLE(data + 4, rows.first);
        storeLE(data + 6, rows.second);
        sink_.put(wk::kColumnBounds, data);
    }
}

void Rewrite::range(const Record& record)
{
    const auto end = changes_.rangeEnds.find(ranges_++);
    if (end == changes_.rangeEnds.end())
        return sink_.put(record);
    Bytes data(record.data.begin(), record.data.end());
    storeLE(&data[22], end->second);
    sink_.put(record.type, data);
}

void Rewrite::format(const Record& record)
{
    const auto head = formatHead(record);
    const bool usual =
        head && head->kind == static_cast<std::uint8_t>(FormatRecordKind::SheetDefault);
    if (head && dropped(head->sheet) && (!usual || sheetGoes_))
        return;
    if (const Bytes* instead = plan_.replacement(record.at))
        sink_.put(wk::kFormat, *instead);
    else
        sink_.put(record);
}

/// The new rows of every sheet whose last FORMAT record this is; `behind` 0: of the sheets that had
/// none.
void Rewrite::newFormats(std::uint64_t behind)
{
    for (const auto& [sheet, records] : plan_.inserted()) {
        const auto last = survey_.lastFormat.find(sheet);
        if ((last == survey_.lastFormat.end() ? 0 : last->second) == behind)
            for (const Bytes& data : records)
                sink_.put(wk::kFormat, data);
    }
}

/// The records of a new or newly named sheet that belong behind this place.
void Rewrite::newSheetRecords(std::uint64_t behind)
{
    const auto lacks = [&](const std::set<std::uint8_t>& sheets) {
        return changes_.newSheet && !sheets.contains(*changes_.newSheet);
    };
    if (survey_.sheetCells == behind && lacks(survey_.withCell))
        sink_.put(wk::kSheetCell, sheetCellRecord(*changes_.newSheet));
    if (survey_.sheetLayouts == behind && lacks(survey_.withLayout))
        sink_.put(wk::kSheetLayout, sheetLayoutRecord(*changes_.newSheet));
    if (changes_.namedSheet && survey_.sheetNames == behind)
        sink_.put(wk::kExtended, sheetNameRecord(*changes_.namedSheet, book_));
    if (behind == 0)
        newFormats(0);
    if (survey_.defaults == behind && lacks(survey_.withDefault))
        sink_.put(wk::kFormat, sheetDefaultRecord(*changes_.newSheet));
}

/// Once, in front of the first format or cell: what has no other place.
void Rewrite::inFront(const Record& record)
{
    if (bodyBegun_ || record.at != survey_.body)
        return;
    bodyBegun_ = true;
    newSheetRecords(0);
}

void Rewrite::record(const Record& record)
{
    inFront(record);
    if (isCell(record.type))
        return cell(record);
    switch (record.type) {
    case wk::kBof:
        return record.at == 0 ? bof(record) : sink_.put(record);
    case wk::kEof:
        restOfNewCells();
        return sink_.put(record);
    case wk::kColumnBounds:
        return columnBounds(record);
    case wk::kUserRange:
        return range(record);
    case wk::kFormat:
        return format(record);
    case wk::kFormulaText:
        if (record.size() >= 4 && dropped(record.u8(2)))
            return;
        return sink_.put(record);
    case wk::kExtended:
        if (record.size() > 4 && record.u16(0) == wk::kSheetNameKind && dropped(record.u8(2)))
            return;
        return sink_.put(record);
    case wk::kSheetCell:
    case wk::kSheetLayout:
        if (sheetGoes_ && record.size() > 0 && dropped(record.u8(0)))
            return;
        return sink_.put(record);
    default:
        sink_.put(record);
    }
}

void Rewrite::copyTail(std::uint64_t from)
{
    Bytes block(kCopyBytes);
    while (const std::size_t bytes = from_.readAt(from, block)) {
        sink_.raw(std::span(block).first(bytes));
        from += bytes;
    }
}

void Rewrite::run()
{
    written_.resize(survey_.changed.size());
    RecordStream records(from_);
    const std::uint64_t boundsAnchor = survey_.lastBounds ? survey_.lastBounds
                                       : survey_.anyCell  ? 0
                                                          : survey_.calcSet;
    for (Record next; records.next(next);) {
        const std::uint64_t behind = next.behind();
        record(next);
        if (behind == boundsAnchor)
            newColumnBounds();
        newSheetRecords(behind);
        newFormats(behind);
        if (behind == survey_.lastCell)
            restOfNewCells();
    }
    copyTail(records.position());
    sink_.flush();
    book_.formats = plan_.formats();
}

}  // namespace

void rewriteBook(File& from, File& to, WkBook& book, const WkChanges& changes)
{
    Rewrite(from, to, book, changes).run();
}

}  // namespace velnor::lotus
