// The older worksheets, WKS and WK1: one sheet, cells with their format in front.
#include <cmath>

#include "access/engine_error.h"
#include "access/formats/lotus/lmbcs.h"
#include "access/formats/lotus/wk_book.h"

namespace velnor::lotus {
namespace {

using sheet::Cell;
using sheet::CellKind;

constexpr std::size_t kHead = 5;  // format u8, column u16, row u16
constexpr unsigned kColumns = 256, kFormatBits = 0x7F, kDefaultFormat = 0x7F;

class OldReader {
public:
    OldReader(File& file, WkBook& book) : file_(file), book_(book), sheet_(book.sheet(0)) {}
    void run();

private:
    void cell(const Record& record);
    void put(const Record& record, Cell cell);
    void number(const Record& record, double value, bool formula);
    void text(const Record& record, std::size_t from, bool formula);
    void range(const Record& record);

    File& file_;
    WkBook& book_;
    WkSheet& sheet_;
    std::string scratch_;
    std::uint8_t usual_ = kGeneral;
};

void OldReader::put(const Record& record, Cell cell)
{
    const unsigned column = record.u16(1), row = record.u16(3);
    if (column >= kColumns || row >= book_.rows())
        return;
    cell.column = static_cast<std::uint16_t>(column);
    if (cell.isNumber()) {
        const unsigned format = record.u8(0) & kFormatBits;
        cell.kind =
            kindOfFormat(format == kDefaultFormat ? usual_ : static_cast<std::uint8_t>(format));
    }
    sheet_.cells->cells.put(row, cell);
}

void OldReader::number(const Record& record, double value, bool formula)
{
    Cell cell = std::isfinite(value) ? Cell::ofNumber(CellKind::Number, 0, value)
                                     : Cell::ofNumber(CellKind::Error, 0, 0);
    cell.formula = formula;
    put(record, cell);
}

void OldReader::text(const Record& record, std::size_t from, bool formula)
{
    const std::string_view text = decodeLmbcs(textOf(record, from), book_.group, scratch_);
    Cell cell = text.empty() ? Cell::blank(0) : Cell::ofText(0, book_.texts.add(text));
    cell.formula = formula;
    put(record, cell);
}

void OldReader::cell(const Record& record)
{
    const auto has = [&](std::size_t bytes) { return record.size() >= kHead + bytes; };
    switch (record.type) {
    case wk1::kInteger:
        if (has(2))
            number(record, static_cast<std::int16_t>(record.u16(kHead)), false);
        return;
    case wk1::kNumber:
    case wk1::kFormula:
        if (has(8))
            number(record, loadLE<double>(&record.data[kHead]), record.type == wk1::kFormula);
        return;
    case wk1::kLabel:
        if (has(1))
            text(record, kHead + 1, false);  // behind the mark of its alignment
        return;
    case wk1::kText:
        if (has(0))
            text(record, kHead, true);
        return;
    default:
        return;
    }
}

void OldReader::range(const Record& record)
{
    if (record.size() < 24)
        return;
    WkRange range;
    range.area = {record.u16(18), record.u16(22), record.u16(16), record.u16(20)};
    range.name = decodeLmbcs(textOf(record, 0).substr(0, 16), book_.group, scratch_);
    const sheet::Area& area = range.area;
    if (!range.name.empty() && range.name.front() != '\\' && area.lastRow > area.firstRow &&
        area.lastRow < book_.rows() && area.lastColumn >= area.firstColumn &&
        area.lastColumn < kColumns)
        book_.ranges.push_back(std::move(range));
}

void OldReader::run()
{
    RecordStream records(file_);
    for (Record record; records.next(record); ++book_.records) {
        switch (record.type) {
        case wk1::kPassword:
            throw EngineError(EngineErrorNumber::CannotDecrypt, "Could not decrypt file.");
        case wk1::kWindow:
            if (record.size() > 4)
                usual_ = record.u8(4) & kFormatBits;
            break;
        case wk1::kName:
        case wk1::kLongName:
            range(record);
            break;
        default:
            cell(record);
        }
    }
    book_.complete = records.complete();
    book_.tailBytes = book_.bytes - records.position();
}

}  // namespace

void readOldBook(File& file, WkBook& book)
{
    OldReader(file, book).run();
}

}  // namespace velnor::lotus
