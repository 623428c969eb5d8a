#include "access/formats/lotus/wk_check.h"

#include <map>
#include <set>

#include "platform/paths.h"

namespace velnor::lotus {
namespace {

constexpr int kMostReports = 200;

/// The size that the data of a cell must have, or have at least.
struct CellSize {
    std::size_t bytes;
    bool atLeast;
};
CellSize sizeOfCell(std::uint16_t type)
{
    switch (type) {
    case wk::kErr:
    case wk::kNa:
        return {4, false};
    case wk::kNumber:
        return {14, false};
    case wk::kSmallNumber:
        return {6, false};
    case wk::kPackedNumber:
        return {8, false};
    case wk::kDouble:
        return {12, false};
    case wk::kFormula:
        return {14, true};
    case wk::kDoubleFormula:
        return {12, true};
    default:
        return {5, true};
    }
}

class BookCheck {
public:
    BookCheck(const WkBook& book, const ProblemSink& report) : book_(book), sink_(report) {}
    void run(File& file);

private:
    void record(const Record& record);
    void cell(const Record& record);
    void format(const Record& record);
    void bounds();
    void say(std::string where, std::string text, bool harmless = false);
    static std::string words(CellPlace place);

    const WkBook& book_;
    const ProblemSink& sink_;
    std::set<CellPlace> cells_;
    std::set<std::pair<std::uint8_t, std::uint16_t>> rows_;
    std::map<std::pair<std::uint8_t, std::uint8_t>, std::pair<unsigned, unsigned>> columns_;
    unsigned lastRow_ = 0, lastSheet_ = 0, lastColumn_ = 0;
    int reports_ = 0;
};

std::string BookCheck::words(CellPlace place)
{
    return sheet::columnName(place.sheet) + ":" + sheet::columnName(place.column) +
           std::to_string(place.row + 1);
}

void BookCheck::say(std::string where, std::string text, bool harmless)
{
    if (++reports_ < kMostReports)
        sink_({std::move(where), std::move(text), harmless});
    else if (reports_ == kMostReports)
        sink_({"file", "there is more, which is not listed", harmless});
}

void BookCheck::cell(const Record& record)
{
    const CellSize size = sizeOfCell(record.type);
    const std::string at = "byte " + std::to_string(record.at);
    if (record.size() < size.bytes || (!size.atLeast && record.size() != size.bytes))
        return say(at, "a cell of " + std::to_string(record.size()) + " bytes");
    const CellPlace place = placeOf(record);
    if (place.row >= book_.rows())
        say("cell " + words(place), "the row is outside the sheet");
    if (!cells_.insert(place).second)
        say("cell " + words(place), "it is there twice; the last one counts");
    if (record.type == wk::kLabel && textOf(record, 4).find('\0') == std::string_view::npos)
        say("cell " + words(place), "the text has no end", true);
}

void BookCheck::format(const Record& record)
{
    const auto head = formatHead(record);
    if (!head || head->kind > static_cast<std::uint8_t>(FormatRecordKind::Copy))
        return say("byte " + std::to_string(record.at), "a format that cannot be read");
    if (head->kind == static_cast<std::uint8_t>(FormatRecordKind::SheetDefault))
        return;
    const std::string row = "formats of row " + std::to_string(head->row + 1);
    if (head->kind == static_cast<std::uint8_t>(FormatRecordKind::Copy) &&
        !rows_.contains({head->sourceSheet, head->sourceRow}))
        say(row, "they copy row " + std::to_string(head->sourceRow + 1) + ", which has none");
    if (!rows_.insert({head->sheet, head->row}).second)
        say(row, "they are there twice");
}

void BookCheck::record(const Record& record)
{
    if (isCell(record.type))
        return cell(record);
    switch (record.type) {
    case wk::kBof:
        if (record.at != 0)
            return say("byte " + std::to_string(record.at), "a second beginning of the file");
        lastRow_ = record.u16(8);
        lastSheet_ = record.u8(10);
        lastColumn_ = record.u8(11);
        return;
    case wk::kFormulaText:
        if (record.size() < 4 || !cells_.contains(placeOf(record)))
            say("byte " + std::to_string(record.at), "a formula's text without its formula");
        return;
    case wk::kFormat:
        return book_.writeable() ? format(record) : void();
    case wk::kColumnBounds:
        if (record.size() == 8)
            columns_[{record.u8(0), record.u8(1)}] = {record.u16(4), record.u16(6)};
        return;
    default:
        return;
    }
}

/// Programs may size a sheet by what the file says of it.
void BookCheck::bounds()
{
    for (const CellPlace& place : cells_) {
        if (place.row > lastRow_ || place.sheet > lastSheet_ || place.column > lastColumn_)
            return say("cell " + words(place), "it is outside the area that the file tells", true);
        if (columns_.empty())
            continue;
        const auto column = columns_.find({place.sheet, place.column});
        if (column == columns_.end() || place.row < column->second.first ||
            place.row > column->second.second)
            return say("cell " + words(place), "it is outside the bounds of its column", true);
    }
}

void BookCheck::run(File& file)
{
    if (!book_.complete)
        say("file", "its end is missing");
    if (book_.old())
        return;
    RecordStream records(file);
    for (Record next; records.next(next);)
        record(next);
    if (book_.writeable())
        bounds();
}

}  // namespace

void checkBook(File& file, const WkBook& book, const ProblemSink& report)
{
    BookCheck(book, report).run(file);
}

std::vector<std::pair<std::string, std::string>> bookInfo(const WkBook& book)
{
    std::size_t sheets = 0;
    for (const auto& [number, sheet] : book.sheets)
        sheets += sheet.listed;
    return {{"Format", versionWords(book.version)},
            {"Characters", "LMBCS group " + std::to_string(book.group)},
            {"Sheets", std::to_string(sheets)},
            {"Named ranges", std::to_string(book.ranges.size())},
            {"Records in the file", std::to_string(book.records)},
            {"Bytes behind the end", std::to_string(book.tailBytes)},
            {"File size", std::to_string(book.bytes) + " bytes"}};
}

}  // namespace velnor::lotus
