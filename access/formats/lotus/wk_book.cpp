#include "access/formats/lotus/wk_book.h"

#include <algorithm>
#include <cmath>

#include "access/engine_error.h"
#include "access/formats/lotus/lmbcs.h"
#include "access/formats/lotus/wk_number.h"

namespace velnor::lotus {
namespace {

using sheet::Cell;
using sheet::CellKind;

constexpr std::size_t kOldBofBytes = 2, kBofBytes = 26;

[[noreturn]] void refuse(const std::string& path, const char* why)
{
    throw EngineError(EngineErrorNumber::UnexpectedFormat, path + " is " + why + ".");
}

WkVersion versionOf(const Record& bof, const std::string& path)
{
    if (bof.type == 0xFF)
        refuse(path, "a Works spreadsheet, which is not read");
    if (bof.type != wk::kBof || bof.size() < 2)
        refuse(path, "not a Lotus worksheet");
    const auto version = static_cast<WkVersion>(bof.u16(0));
    switch (version) {
    case WkVersion::Wks:
    case WkVersion::Symphony:
    case WkVersion::Wk1:
        if (bof.size() == kOldBofBytes)
            return version;
        break;
    case WkVersion::Wk3:
    case WkVersion::Wk4:
    case WkVersion::Lotus97:
    case WkVersion::Millennium:
        if (bof.size() == kBofBytes)
            return version;
        break;
    }
    refuse(path, bof.u16(0) == 0x8007 ? "a file of formats, not a worksheet"
                                      : "not a worksheet of a Lotus program");
}

/// Reads WK3, WK4 and 123 files. Formats are told by rows that may stand behind their cells, so
/// that the file is read twice: first all else, then the cells.
class Reader {
public:
    Reader(File& file, WkBook& book) : file_(file), book_(book) {}

    void structure();
    void cells();

private:
    void range(const Record& record);
    void sheetName(std::uint8_t number, std::string_view bytes);
    void cell(const Record& record);
    void formulaText(const Record& record);
    void number(const Record& record, double value, bool formula);
    void real(const Record& record, bool formula);
    void put(const Record& record, Cell cell);
    Cell textCell(const Record& record, std::string_view bytes);

    File& file_;
    WkBook& book_;
    std::string scratch_;
    std::size_t rangeRecords_ = 0;
    std::uint8_t styles_ = 0;
};

void Reader::range(const Record& record)
{
    const std::size_t number = rangeRecords_++;
    if (record.size() < 26 || record.u8(20) != record.u8(24))
        return;
    WkRange range;
    range.sheet = record.u8(20);
    range.area = {record.u16(18), record.u16(22), record.u8(21), record.u8(25)};
    range.record = number;
    const std::string_view name = textOf(record, 2).substr(0, 16);
    range.name = decodeLmbcs(name, book_.group, scratch_);
    const bool macro = !range.name.empty() && range.name.front() == '\\';
    if (!macro && !range.name.empty() && range.area.lastRow > range.area.firstRow &&
        range.area.lastRow < book_.rows() && range.area.lastColumn >= range.area.firstColumn)
        book_.ranges.push_back(std::move(range));
}

void Reader::sheetName(std::uint8_t number, std::string_view bytes)
{
    WkSheet& sheet = book_.sheet(number);
    sheet.name = decodeLmbcs(bytes, book_.group, scratch_);
    sheet.listed = true;
}

void Reader::structure()
{
    RecordStream records(file_);
    for (Record record; records.next(record); ++book_.records) {
        switch (record.type) {
        case wk::kPassword:
            throw EngineError(EngineErrorNumber::CannotDecrypt, "Could not decrypt file.");
        case wk::kUserRange:
            range(record);
            break;
        case wk::kFormat:
            if (book_.writeable())
                book_.formats.take(record, book_.rows());
            break;
        case wk::kExtended:
        case wk::kSheetName123:
            if (record.size() > 4 && record.u16(0) == wk::kSheetNameKind)
                sheetName(record.u8(2), textOf(record, 4));
            break;
        case wk::kStyleName123:
            if (record.size() > 10 && book_.sheet(styles_).name.empty())
                sheetName(styles_, textOf(record, 10));
            ++styles_;
            break;
        default:
            break;
        }
    }
    book_.complete = records.complete();
    book_.tailBytes = book_.bytes - records.position();
}

void Reader::put(const Record& record, Cell cell)
{
    const CellPlace place = placeOf(record);
    if (place.row >= book_.rows())
        return;
    WkSheet& sheet = book_.sheet(place.sheet);
    sheet.listed = true;
    cell.column = place.column;
    if (cell.isNumber()) {
        const std::uint8_t format = book_.formats.formatAt(place.sheet, place.row, place.column);
        cell.kind = kindOfFormat(format);
        cell.style = format;
    }
    sheet.cells->cells.put(place.row, cell);
}

void Reader::number(const Record& record, double value, bool formula)
{
    Cell cell = std::isfinite(value) ? Cell::ofNumber(CellKind::Number, 0, value)
                                     : Cell::ofNumber(CellKind::Error, 0, 0);
    cell.formula = formula;
    put(record, cell);
}

void Reader::real(const Record& record, bool formula)
{
    const WkNumber number = readReal80(record.data.subspan<4, 10>());
    Cell cell =
        number.kind == WkNumber::Kind::Number  ? Cell::ofNumber(CellKind::Number, 0, number.value)
        : number.kind == WkNumber::Kind::Error ? Cell::ofNumber(CellKind::Error, 0, 0)
                                               : Cell::blank(0);  // an empty text, or nothing
    cell.formula = formula;
    put(record, cell);
}

Cell Reader::textCell(const Record&, std::string_view bytes)
{
    const std::string_view text = decodeLmbcs(bytes, book_.group, scratch_);
    return text.empty() ? Cell::blank(0) : Cell::ofText(0, book_.texts.add(text));
}

void Reader::cell(const Record& record)
{
    const auto has = [&](std::size_t bytes) { return record.size() >= 4 + bytes; };
    if (!has(0))
        return;
    switch (record.type) {
    case wk::kErr:
    case wk::kNa:
        return put(record, Cell::ofNumber(CellKind::Error, 0, 0));
    case wk::kLabel:
        if (has(1))
            put(record, textCell(record, textOf(record, 5)));
        return;
    case wk::kNumber:
    case wk::kFormula:
        if (has(10))
            real(record, record.type == wk::kFormula);
        return;
    case wk::kSmallNumber:
        if (has(2))
            number(record, readSmallNumber(record.u16(4)), false);
        return;
    case wk::kPackedNumber:
        if (has(4))
            number(record, readPackedNumber(loadLE<std::uint32_t>(&record.data[4])), false);
        return;
    default:
        if (has(8))
            number(record, loadLE<double>(&record.data[4]), record.type == wk::kDoubleFormula);
    }
}

void Reader::formulaText(const Record& record)
{
    if (record.size() < 4)
        return;
    Cell cell = textCell(record, textOf(record, 4));
    cell.formula = true;
    put(record, cell);
}

void Reader::cells()
{
    RecordStream records(file_);
    for (Record record; records.next(record);) {
        if (isCell(record.type))
            cell(record);
        else if (record.type == wk::kFormulaText)
            formulaText(record);
    }
}

}  // namespace

std::string_view textOf(const Record& record, std::size_t from)
{
    if (from >= record.size())
        return {};
    return {reinterpret_cast<const char*>(record.data.data()) + from, record.size() - from};
}

const char* versionWords(WkVersion version)
{
    switch (version) {
    case WkVersion::Wks:
        return "Lotus 1-2-3 Release 1 (WKS)";
    case WkVersion::Symphony:
        return "Lotus Symphony (WRK)";
    case WkVersion::Wk1:
        return "Lotus 1-2-3 Release 2 (WK1)";
    case WkVersion::Wk3:
        return "Lotus 1-2-3 Release 3 (WK3)";
    case WkVersion::Wk4:
        return "Lotus 1-2-3 Release 4 and 5 (WK4)";
    case WkVersion::Lotus97:
        return "Lotus 1-2-3 97 (123)";
    case WkVersion::Millennium:
        return "Lotus 1-2-3 Millennium (123)";
    }
    return "";
}

WkSheet& WkBook::sheet(std::uint8_t number)
{
    WkSheet& sheet = sheets[number];
    if (!sheet.cells) {
        sheet.cells = std::make_shared<sheet::Sheet>();
        sheet.cells->texts = &texts;
    }
    return sheet;
}

std::string WkBook::tableName(std::uint8_t number) const
{
    const auto found = sheets.find(number);
    const bool named = found != sheets.end() && !found->second.name.empty();
    return (named ? found->second.name : sheet::columnName(number)) + ":";
}

std::unique_ptr<WkBook> readBook(File& file, const std::string& path)
{
    auto book = std::make_unique<WkBook>();
    book->bytes = file.size();
    Record bof;
    RecordStream records(file);
    if (!records.next(bof))
        refuse(path, "not a Lotus worksheet");
    book->version = versionOf(bof, path);
    book->sheet(0).listed = true;
    if (book->old()) {
        readOldBook(file, *book);
        return book;
    }
    book->group = bof.u8(16);
    Reader reader(file, *book);
    reader.structure();
    reader.cells();
    return book;
}

}  // namespace velnor::lotus
