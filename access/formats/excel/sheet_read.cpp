#include "access/formats/excel/sheet_read.h"

#include <bit>
#include <cmath>

#include "access/formats/excel/biff_text.h"

namespace velnor::excel {
namespace {

using sheet::Cell;
using sheet::CellKind;

constexpr std::size_t kMostBlanks = 4096;
constexpr std::size_t kMostFaults = 20;

class SheetReader {
public:
    SheetReader(Bytes stream, std::size_t position, const Globals& globals, SheetContent& content)
        : reader_(stream, position), globals_(globals), content_(content),
          version_(globals.form->version)
    {
    }

    void read()
    {
        Record record;
        int depth = 0;
        while (reader_.next(record)) {
            if (isBof(record.type)) {
                ++depth;
            } else if (record.type == rec::kEof) {
                if (--depth <= 0)
                    return;
            } else if (depth == 1) {
                take(record);
            }
        }
        fault(reader_.cutOff() ? "a record passes the end of the stream" : "the sheet has no end");
    }

private:
    void fault(std::string text)
    {
        if (content_.faults.size() < kMostFaults)
            content_.faults.push_back(std::move(text));
    }

    std::uint16_t u16(std::size_t at) const { return loadLE<std::uint16_t>(data_.data() + at); }

    /// A cell's head is row, column and format; before version 3 the format is three bytes.
    bool head(std::size_t more)
    {
        const std::size_t size = old_ ? 7 : 6;
        if (data_.size() < size + more) {
            fault("a cell's record is too short");
            return false;
        }
        row_ = u16(0);
        column_ = u16(2);
        xf_ = old_ ? 0 : u16(4);
        body_ = size;
        return true;
    }

    FormatClass formatOf(std::uint16_t xf) const
    {
        if (!old_)
            return globals_.classOf(xf);
        const auto found = globals_.formats.find(data_[5] & 0x3F);
        return found == globals_.formats.end() ? FormatClass{} : found->second;
    }

    void put(Cell cell)
    {
        cell.formula = formula_;
        cell.style = xf_;
        content_.cells->put(row_, cell);
    }

    void number(double value)
    {
        put(std::isfinite(value) ? Cell::ofNumber(formatOf(xf_).kind, column_, value)
                                 : Cell::ofNumber(CellKind::Error, column_, 0));
    }

    void text(std::string_view text)
    {
        if (text.empty())
            return blank();
        put(Cell::ofText(column_, content_.texts->add(text)));
    }

    void blank()
    {
        Cell cell = Cell::blank(column_);
        cell.formula = formula_;
        content_.cells->put(row_, cell);
        if (!formula_ && content_.blanks.size() < kMostBlanks)
            content_.blanks.push_back({row_, column_, xf_});
    }

    void booleanOrError(std::uint8_t value, bool error)
    {
        put(Cell::ofNumber(error ? CellKind::Error : CellKind::Boolean, column_, value != 0));
    }

    void take(const Record& record)
    {
        data_ = record.data;
        old_ = record.type < 8 && (record.type != rec::kFormula || version_ == 2);
        formula_ = false;
        switch (record.type) {
        case rec::kLabelSst:
            if (head(4))
                sharedText(loadLE<std::uint32_t>(data_.data() + body_));
            return;
        case rec::kNumber:
        case rec::kNumber2:
            if (head(8))
                number(loadLE<double>(data_.data() + body_));
            return;
        case rec::kRk:
        case rec::kRk3:
            if (head(4))
                number(numberOfRk(loadLE<std::uint32_t>(data_.data() + body_)));
            return;
        case rec::kMulRk:
            return takeMulRk();
        case rec::kBlank:
        case rec::kBlank2:
            if (head(0))
                blank();
            return;
        case rec::kMulBlank:
            return takeMulBlank();
        case rec::kInteger2:
            if (head(2))
                number(u16(body_));
            return;
        case rec::kBoolErr:
        case rec::kBoolErr2:
            if (head(2))
                booleanOrError(data_[body_], data_[body_ + 1] != 0);
            return;
        case rec::kLabel:
        case rec::kLabel2:
        case rec::kRString:
            if (head(1))
                text(recordText());
            return;
        case rec::kFormula:
        case rec::kFormula3:
        case rec::kFormula4:
            if (head(8))
                takeFormula();
            return;
        default:
            return;
        }
    }

    void sharedText(std::uint32_t index)
    {
        if (content_.texts->text(index).empty())
            return blank();
        put(Cell::ofText(column_, index));
    }

    void takeMulRk()
    {
        if (!head(0))
            return;
        const std::size_t count = (data_.size() - 6) / 6;
        for (std::size_t i = 0; i < count; ++i, ++column_) {
            xf_ = u16(4 + 6 * i);
            number(numberOfRk(loadLE<std::uint32_t>(data_.data() + 6 + 6 * i)));
        }
    }

    void takeMulBlank()
    {
        if (!head(0))
            return;
        const std::size_t count = (data_.size() - 6) / 2;
        for (std::size_t i = 0; i < count; ++i, ++column_) {
            xf_ = u16(4 + 2 * i);
            blank();
        }
    }

    /// The text behind `body_`, which may go on in CONTINUE records.
    std::string_view recordText()
    {
        if (version_ < 8) {
            std::size_t at = body_;
            text_ = textAt(data_, at, version_ == 2 ? 1 : 2, *globals_.form, *globals_.page);
            return text_;
        }
        std::vector<Bytes> parts{data_};
        for (Record more; reader_.peek() == rec::kContinue && reader_.next(more);)
            parts.push_back(more.data);
        UnicodeReader unicode(std::move(parts), body_);
        std::string_view found;
        if (!unicode.next(found)) {
            fault("a text is cut off");
            return {};
        }
        text_ = found;
        return text_;
    }

    void takeFormula()
    {
        formula_ = true;
        const Bytes value = data_.subspan(body_, 8);
        if (value[6] != 0xFF || value[7] != 0xFF)
            return number(loadLE<double>(value.data()));
        switch (value[0]) {
        case 0:
            return textResult();
        case 1:
            return booleanOrError(value[2], false);
        case 3:
            return blank();
        default:
            return booleanOrError(0, true);
        }
    }

    /// The text of a formula is in a STRING record behind it, and behind what a formula shared by
    /// several cells has in between.
    void textResult()
    {
        for (;;) {
            switch (reader_.peek()) {
            case rec::kShrFmla:
            case rec::kArray:
            case rec::kTable:
            case rec::kContinue: {
                Record between;
                reader_.next(between);
                continue;
            }
            case rec::kString:
            case rec::kString2: {
                Record record;
                if (!reader_.next(record))
                    return blank();
                data_ = record.data;
                body_ = 0;
                return text(recordText());
            }
            default:
                return blank();
            }
        }
    }

    RecordReader reader_;
    const Globals& globals_;
    SheetContent& content_;
    const int version_;
    Bytes data_;
    std::size_t body_ = 0;
    std::uint32_t row_ = 0;
    std::uint16_t column_ = 0, xf_ = 0;
    bool old_ = false;
    bool formula_ = false;
    std::string text_;
};

}  // namespace

double numberOfRk(std::uint32_t rk)
{
    const double value = rk & 2 ? static_cast<double>(static_cast<std::int32_t>(rk) >> 2)
                                : std::bit_cast<double>(std::uint64_t{rk & 0xFFFFFFFC} << 32);
    return rk & 1 ? value / 100 : value;
}

void readSheet(Bytes stream, std::size_t position, const Globals& globals, SheetContent& content)
{
    SheetReader(stream, position, globals, content).read();
}

}  // namespace velnor::excel
