#include "access/formats/lotus/wk_survey.h"

#include <algorithm>

namespace velnor::lotus {
namespace {

constexpr std::uint16_t kSystemRange = 0x0A;

class Surveyor {
public:
    Surveyor(WkBook& book, const WkChanges& changes, FormatPlan& plan)
        : changes_(changes), plan_(plan)
    {
        found_.changed = changedCells(book);
        found_.exists.resize(found_.changed.size());
    }

    WkSurvey run(File& file)
    {
        RecordStream records(file);
        for (Record record; records.next(record);)
            look(record);
        return std::move(found_);
    }

private:
    void look(const Record& record);
    void cell(const Record& record);
    void format(const Record& record);
    void body(const Record& record)
    {
        if (found_.body == 0)
            found_.body = record.at;
    }
    void sheetRecord(const Record& record, std::set<std::uint8_t>& sheets)
    {
        if (record.size() == 0)
            return;
        sheets.insert(record.u8(0));
        sheetSeen(record.u8(0));
    }
    void sheetSeen(std::uint8_t sheet) { found_.lastSheet = std::max(found_.lastSheet, sheet); }

    const WkChanges& changes_;
    FormatPlan& plan_;
    WkSurvey found_;
};

void Surveyor::cell(const Record& record)
{
    body(record);
    if (record.size() < 4)
        return;
    const CellPlace place = placeOf(record);
    found_.anyCell = true;
    found_.anyFormula = found_.anyFormula || record.type == wk::kFormula;
    found_.lastCell = record.behind();
    sheetSeen(place.sheet);
    if (const std::size_t i = found_.find(place); i < found_.changed.size())
        found_.exists[i] = true;
}

void Surveyor::format(const Record& record)
{
    body(record);
    const auto head = formatHead(record);
    if (!head)
        return;
    if (head->kind == static_cast<std::uint8_t>(FormatRecordKind::SheetDefault)) {
        found_.defaults = record.behind();
        found_.withDefault.insert(head->sheet);
    } else {
        found_.lastFormat[head->sheet] = record.behind();
    }
    sheetSeen(head->sheet);
    if (!changes_.droppedSheet || head->sheet != *changes_.droppedSheet)
        plan_.take(record);
}

void Surveyor::look(const Record& record)
{
    if (isCell(record.type))
        return cell(record);
    switch (record.type) {
    case wk::kFormulaText:
        if (record.size() >= 4)
            found_.lastCell = record.behind();
        return;
    case wk::kFormat:
        return format(record);
    case wk::kEof:
        return body(record);
    case wk::kCalcSet:
        found_.calcSet = record.behind();
        return;
    case wk::kColumnBounds:
        found_.lastBounds = record.behind();
        if (record.size() == 8)
            found_.bounds.insert({record.u8(0), record.u8(1)});
        return;
    case wk::kSheetCell:
        found_.sheetCells = record.behind();
        return sheetRecord(record, found_.withCell);
    case wk::kSheetLayout:
        found_.sheetLayouts = record.behind();
        return sheetRecord(record, found_.withLayout);
    case wk::kExtended:
        if (record.size() > 4 && record.u16(0) == wk::kSheetNameKind) {
            found_.sheetNames = record.behind();
            sheetSeen(record.u8(2));
        }
        return;
    case wk::kUserRange:
    case kSystemRange:
        if (changes_.droppedSheet && record.size() >= 26)
            found_.rangesOnDropped = found_.rangesOnDropped ||
                                     record.u8(20) == *changes_.droppedSheet ||
                                     record.u8(24) == *changes_.droppedSheet;
        return;
    default:
        return;
    }
}

}  // namespace

std::size_t WkSurvey::find(CellPlace place) const
{
    const auto at = std::lower_bound(changed.begin(), changed.end(), place);
    return at != changed.end() && *at == place ? static_cast<std::size_t>(at - changed.begin())
                                               : changed.size();
}

std::vector<CellPlace> changedCells(WkBook& book)
{
    std::vector<CellPlace> places;
    for (auto& [number, sheet] : book.sheets)
        for (const sheet::Place& place : sheet.cells->cells.changes())
            places.push_back({number, static_cast<std::uint16_t>(place.row),
                              static_cast<std::uint8_t>(place.column)});
    return places;
}

WkSurvey surveyBook(File& file, WkBook& book, const WkChanges& changes, FormatPlan& plan)
{
    WkSurvey survey = Surveyor(book, changes, plan).run(file);
    plan.finish();
    return survey;
}

}  // namespace velnor::lotus
