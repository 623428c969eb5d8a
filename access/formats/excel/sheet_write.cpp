#include "access/formats/excel/sheet_write.h"

#include <array>
#include <bit>
#include <cmath>

#include "access/formats/excel/cell_records.h"

namespace velnor::excel {
namespace {

using sheet::Cell;
using sheet::CellKind;
using sheet::Place;

constexpr std::uint16_t kNoStyle = 0xFFFF;
constexpr std::uint32_t kRows = 65536, kColumns = 256;
constexpr std::uint8_t kRowHasStyle = 0x80;

std::uint16_t u16(Bytes data, std::size_t at)
{
    return at + 2 <= data.size() ? loadLE<std::uint16_t>(data.data() + at) : 0;
}

bool isCell(std::uint16_t type)
{
    switch (type) {
    case rec::kBlank:
    case rec::kNumber:
    case rec::kLabel:
    case rec::kBoolErr:
    case rec::kFormula:
    case rec::kLabelSst:
    case rec::kRString:
    case rec::kRk:
    case rec::kRk3:
    case rec::kMulRk:
    case rec::kMulBlank:
        return true;
    default:
        return false;
    }
}

/// Belongs to the cell record in front of it.
bool followsCell(std::uint16_t type)
{
    return type == rec::kContinue || type == rec::kString || type == rec::kShrFmla ||
           type == rec::kArray || type == rec::kTable;
}

bool before(const Place& place, std::uint32_t row, std::uint32_t column)
{
    return place.row < row || (place.row == row && place.column < column);
}

class SheetSplicer {
public:
    SheetSplicer(Bytes old, SheetEdit& edit, const Globals& globals, StyleBook& styles,
                 const TextNumbers& texts, StreamSink& sink, std::uint32_t& references)
        : old_(old), edit_(edit), globals_(globals), styles_(styles),
          encoder_(globals, texts, sink), sink_(sink), references_(references)
    {
        places_ = edit.cells->changes();
        if (!edit.blankTypes.empty())
            addBlanks();
        above_.fill(kNoStyle);
        columnStyle_.fill(kNoStyle);
    }

    void write()
    {
        survey();
        Record record;
        RecordReader reader(old_);
        int depth = 0;
        while (reader.next(record)) {
            const bool outer = depth == 1 && record.type != rec::kEof;
            depth += isBof(record.type) ? 1 : 0;
            depth -= record.type == rec::kEof ? 1 : 0;
            if (outer && !isBof(record.type))
                take(record, reader);
            else
                copy(record);
            if (depth == 1 && reader.at() >= cellsEnd_)
                flush(kRows, 0);
            if (depth == 0)
                return;
        }
    }

private:
    void addBlanks()
    {
        for (const auto& [column, type] : edit_.blankTypes)
            places_.push_back({edit_.blankRow, column});
        std::sort(places_.begin(), places_.end(),
                  [](const Place& a, const Place& b) { return before(a, b.row, b.column); });
        places_.erase(std::unique(places_.begin(), places_.end(),
                                  [](const Place& a, const Place& b) {
                                      return a.row == b.row && a.column == b.column;
                                  }),
                      places_.end());
    }

    /// Where the cells end, which rows have ROW records, how far the cells reach.
    void survey()
    {
        Record record;
        RecordReader reader(old_);
        int depth = 0;
        bool inCell = false;
        std::size_t dimensionsEnd = 0, firstEnd = 0;
        rowRecord_.resize(kRows);
        while (reader.next(record)) {
            depth += isBof(record.type) ? 1 : 0;
            depth -= record.type == rec::kEof ? 1 : 0;
            if (firstEnd == 0)
                firstEnd = record.end();
            if (depth != 1)
                continue;
            inCell = isCell(record.type) || (inCell && followsCell(record.type));
            if (record.type == rec::kRow)
                rowRecord_[u16(record.data, 0)] = true;
            if (record.type == rec::kDimensions)
                dimensionsEnd = record.end();
            hasRows_ = hasRows_ || record.type == rec::kRow;
            hasCells_ = hasCells_ || isCell(record.type);
            if (inCell || record.type == rec::kRow || record.type == rec::kDbCell)
                cellsEnd_ = record.end();
        }
        makesRows_ = hasRows_ || !hasCells_;
        if (cellsEnd_ == 0)
            cellsEnd_ = dimensionsEnd ? dimensionsEnd : firstEnd;
    }

    void copy(const Record& record)
    {
        references_ += record.type == rec::kLabelSst;
        sink_.record(record.type, record.data);
    }

    void take(const Record& record, RecordReader& reader)
    {
        switch (record.type) {
        case rec::kIndex:
        case rec::kDbCell:
            return;
        case rec::kDimensions:
            return takeDimensions(record);
        case rec::kColInfo:
            for (std::uint32_t c = u16(record.data, 0); c <= u16(record.data, 2) && c < kColumns;
                 ++c)
                columnStyle_[c] = u16(record.data, 6);
            return copy(record);
        case rec::kRow:
            return takeRow(record);
        case rec::kMulRk:
        case rec::kMulBlank:
            return takeMany(record);
        default:
            if (isCell(record.type))
                return takeCell(record, reader);
            copy(record);
        }
    }

    // Places of changes

    bool pending(std::uint32_t row, std::uint32_t column) const
    {
        return next_ < places_.size() && places_[next_].row == row &&
               places_[next_].column == column;
    }
    Cell cellAt(const Place& place) const
    {
        const Cell* cell = edit_.cells->find(place.row, place.column);
        return cell ? *cell : Cell::blank(place.column);
    }
    bool hasBlankType(const Place& place) const
    {
        return place.row == edit_.blankRow && edit_.blankTypes.contains(place.column);
    }
    /// A change that leaves something in the file even where nothing was.
    bool leavesCell(const Place& place) const
    {
        return cellAt(place).kind != CellKind::Blank || hasBlankType(place);
    }

    /// The columns of the new cells in a row: first and behind the last; empty when there are none.
    std::pair<std::uint16_t, std::uint16_t> newColumns(std::uint32_t row) const
    {
        std::uint16_t first = 0xFFFF, end = 0;
        auto at = places_.begin() + static_cast<std::ptrdiff_t>(next_);
        if (at == places_.end() || at->row != row)
            at = std::lower_bound(at, places_.end(), row,
                                  [](const Place& p, std::uint32_t r) { return p.row < r; });
        for (; at != places_.end() && at->row == row; ++at)
            if (leavesCell(*at)) {
                first = std::min(first, at->column);
                end = static_cast<std::uint16_t>(at->column + 1);
            }
        return {first, end};
    }

    // Rows

    void makeRow(std::uint32_t row)
    {
        if (!makesRows_ || rowRecord_[row])
            return;
        const auto [first, end] = newColumns(row);
        if (end == 0)
            return;
        rowRecord_[row] = true;
        std::array<std::uint8_t, 16> data{};
        storeLE(data.data(), static_cast<std::uint16_t>(row));
        storeLE(data.data() + 2, first);
        storeLE(data.data() + 4, end);
        storeLE(data.data() + 6, std::uint16_t{0x00FF});
        storeLE(data.data() + 12, std::uint16_t{0x0100});
        storeLE(data.data() + 14, styles_.plain());
        sink_.record(rec::kRow, data);
    }

    void takeRow(const Record& record)
    {
        const std::uint32_t row = u16(record.data, 0);
        if (afterCell_)  // a new block of rows begins
            flush(row, 0);
        afterCell_ = false;
        for (std::size_t i = std::max(next_, madeRows_); i < places_.size() && places_[i].row < row;
             madeRows_ = ++i)
            makeRow(places_[i].row);
        if (record.data.size() >= 16 && (record.data[12] & kRowHasStyle))
            rowStyle_[row] = u16(record.data, 14);
        const auto [first, end] = newColumns(row);
        if (end == 0 || record.data.size() < 6)
            return copy(record);
        std::vector<std::uint8_t> data(record.data.begin(), record.data.end());
        const std::uint16_t oldFirst = u16(data, 2), oldEnd = u16(data, 4);
        storeLE(data.data() + 2, oldEnd == 0 ? first : std::min(oldFirst, first));
        storeLE(data.data() + 4, std::max(oldEnd, end));
        sink_.record(rec::kRow, data);
    }

    void takeDimensions(const Record& record)
    {
        std::vector<std::uint8_t> data(record.data.begin(), record.data.end());
        const bool wide = globals_.form->version == 8;
        if (data.size() < (wide ? 12u : 8u))
            return copy(record);
        const std::size_t columnAt = wide ? 8 : 4;
        const auto row = [&](std::size_t n) {
            return wide ? loadLE<std::uint32_t>(data.data() + 4 * n) : u16(data, 2 * n);
        };
        const auto storeRow = [&](std::size_t n, std::uint32_t value) {
            if (wide)
                storeLE(data.data() + 4 * n, value);
            else
                storeLE(data.data() + 2 * n, static_cast<std::uint16_t>(value));
        };
        std::uint32_t firstRow = row(0), endRow = row(1);
        std::uint16_t firstColumn = u16(data, columnAt), endColumn = u16(data, columnAt + 2);
        bool none = endRow == 0 || endColumn == 0;
        for (const Place& place : places_) {
            if (!leavesCell(place))
                continue;
            firstRow = none ? place.row : std::min(firstRow, place.row);
            endRow = none ? place.row + 1 : std::max(endRow, place.row + 1);
            firstColumn = none ? place.column : std::min(firstColumn, place.column);
            endColumn = std::max<std::uint16_t>(none ? 0 : endColumn,
                                                static_cast<std::uint16_t>(place.column + 1));
            none = false;
        }
        storeRow(0, firstRow);
        storeRow(1, endRow);
        storeLE(data.data() + columnAt, firstColumn);
        storeLE(data.data() + columnAt + 2, endColumn);
        sink_.record(rec::kDimensions, data);
    }

    // Cells

    void note(std::uint32_t row, std::uint32_t column, std::uint16_t style)
    {
        if (column < kColumns && !edit_.headers.contains(row))
            above_[column] = style;
    }

    std::uint16_t styleOfNew(const Place& place, const Cell& cell)
    {
        std::uint16_t style = kNoStyle;
        if (hasBlankType(place))
            style = styles_.blankOf(edit_.blankTypes.at(place.column));
        if (style == kNoStyle && place.column < kColumns)
            style = above_[place.column];
        if (style == kNoStyle)
            if (const auto found = rowStyle_.find(place.row); found != rowStyle_.end())
                style = found->second;
        if (style == kNoStyle && place.column < kColumns && !edit_.headers.contains(place.row))
            style = columnStyle_[place.column];
        return styles_.suited(style == kNoStyle ? styles_.plain() : style, cell);
    }

    void put(const Place& place, const Cell& cell, std::uint16_t style)
    {
        encoder_.write(place.row, cell, style);
        references_ += cell.kind == CellKind::Text;
        note(place.row, place.column, style);
        afterCell_ = true;
    }

    /// Writes the new cells in front of a place, with the rows that they need.
    void flush(std::uint32_t row, std::uint32_t column)
    {
        for (; next_ < places_.size() && before(places_[next_], row, column); ++next_) {
            const Place& place = places_[next_];
            const Cell cell = cellAt(place);
            if (cell.kind == CellKind::Blank && !hasBlankType(place))
                continue;
            makeRow(place.row);
            put(place, cell, styleOfNew(place, cell));
        }
    }

    void replace(std::uint32_t row, std::uint16_t column, std::uint16_t style)
    {
        const Place place{row, column};
        const Cell cell = cellAt(place);
        ++next_;
        if (cell.kind == CellKind::Blank && style == styles_.plain() && !hasBlankType(place))
            return;
        put(place, cell, styles_.suited(style, cell));
    }

    void takeCell(const Record& record, RecordReader& reader)
    {
        const std::uint32_t row = u16(record.data, 0);
        const std::uint16_t column = u16(record.data, 2), style = u16(record.data, 4);
        flush(row, column);
        if (!pending(row, column) || record.type == rec::kFormula) {
            if (pending(row, column))
                ++next_;
            copy(record);
            note(row, column, style);
            afterCell_ = true;
            return;
        }
        replace(row, column, style);
        while (reader.peek() == rec::kContinue) {
            Record more;
            if (!reader.next(more))
                break;
        }
    }

    void takeMany(const Record& record)
    {
        const std::uint32_t row = u16(record.data, 0);
        const std::uint16_t first = u16(record.data, 2);
        const bool numbers = record.type == rec::kMulRk;
        const std::size_t step = numbers ? 6 : 2;
        const std::size_t count = record.data.size() < 6 ? 0 : (record.data.size() - 6) / step;
        flush(row, first);
        afterCell_ = true;
        const bool touched = next_ < places_.size() && places_[next_].row == row &&
                             places_[next_].column < first + count;
        if (!touched) {
            copy(record);
            for (std::size_t i = 0; i < count; ++i)
                note(row, static_cast<std::uint32_t>(first + i), u16(record.data, 4 + step * i));
            return;
        }
        std::size_t from = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const auto column = static_cast<std::uint16_t>(first + i);
            const std::uint16_t style = u16(record.data, 4 + step * i);
            note(row, column, style);
            if (!pending(row, column))
                continue;
            part(record, from, i, step);
            replace(row, column, style);
            from = i + 1;
        }
        part(record, from, count, step);
    }

    /// The cells `from` up to `end` of a MULRK or MULBLANK record.
    void part(const Record& record, std::size_t from, std::size_t end, std::size_t step)
    {
        if (from >= end)
            return;
        const auto column = [&](std::size_t i) {
            return static_cast<std::uint16_t>(u16(record.data, 2) + i);
        };
        const Bytes cells = record.data.subspan(4 + step * from, step * (end - from));
        std::vector<std::uint8_t> data(4);
        storeLE(data.data(), u16(record.data, 0));
        storeLE(data.data() + 2, column(from));
        data.insert(data.end(), cells.begin(), cells.end());
        const bool numbers = step == 6;
        if (end - from == 1)
            return sink_.record(numbers ? rec::kRk : rec::kBlank, data);
        const std::uint16_t last = column(end - 1);
        data.push_back(static_cast<std::uint8_t>(last & 0xFF));
        data.push_back(static_cast<std::uint8_t>(last >> 8));
        sink_.record(record.type, data);
    }

    Bytes old_;
    SheetEdit& edit_;
    const Globals& globals_;
    StyleBook& styles_;
    CellEncoder encoder_;
    StreamSink& sink_;
    std::uint32_t& references_;
    std::vector<Place> places_;
    std::size_t next_ = 0;      // the first change that is not written
    std::size_t madeRows_ = 0;  // the rows of changes in front of it are made
    std::array<std::uint16_t, kColumns> above_;
    std::array<std::uint16_t, kColumns> columnStyle_;
    std::map<std::uint32_t, std::uint16_t> rowStyle_;
    std::vector<bool> rowRecord_;
    std::size_t cellsEnd_ = 0;
    bool hasRows_ = false, hasCells_ = false, makesRows_ = false;
    bool afterCell_ = false;
};

}  // namespace

void writeClearedSheet(Bytes old, StreamSink& sink)
{
    Record record;
    RecordReader reader(old);
    int depth = 0;
    bool inCell = false;
    while (reader.next(record)) {
        const bool outer = depth == 1;
        depth += isBof(record.type) ? 1 : 0;
        depth -= record.type == rec::kEof ? 1 : 0;
        inCell = outer && (isCell(record.type) || (inCell && followsCell(record.type)));
        if (outer && (inCell || record.type == rec::kRow || record.type == rec::kIndex ||
                      record.type == rec::kDbCell))
            continue;
        if (outer && record.type == rec::kDimensions)
            sink.record(record.type, std::vector<std::uint8_t>(record.data.size()));
        else
            sink.record(record.type, record.data);
    }
}

void writeSheet(Bytes old, SheetEdit* edit, const Globals& globals, StyleBook& styles,
                const TextNumbers& texts, StreamSink& sink, std::uint32_t& references)
{
    if (edit)
        return SheetSplicer(old, *edit, globals, styles, texts, sink, references).write();
    Record record;
    RecordReader reader(old);
    std::size_t from = 0;
    while (reader.next(record)) {
        references += record.type == rec::kLabelSst;
        if (record.type != rec::kIndex && record.type != rec::kDbCell)
            continue;
        sink.put(old.subspan(from, record.at - from));
        from = record.end();
    }
    sink.put(old.subspan(from));
}

}  // namespace velnor::excel
