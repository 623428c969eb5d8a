#include "access/formats/excel/style_book.h"

#include <algorithm>
#include <cmath>

#include "access/formats/excel/biff_text.h"

namespace velnor::excel {
namespace {

using sheet::Cell;
using sheet::CellKind;

constexpr std::size_t kDefaultCellXf = 15;
constexpr std::size_t kFormatAt = 2, kFlagsAt = 4;
constexpr std::uint8_t kStyleXf = 4, kOwnFormat = 4;
constexpr int kFirstOwnFormat = 164;
constexpr int kGeneral = 0, kBuiltInMoney = 7, kBuiltInDate = 14, kBuiltInMoment = 22;

constexpr const char* kDateText = "yyyy-mm-dd";
constexpr const char* kMomentText = "yyyy-mm-dd hh:mm:ss";
constexpr const char* kMoneyText = "\"$\"#,##0.00;\\-\"$\"#,##0.00";

/// Formats of blank cells that tell a field's type. They are spelled so that no other program
/// writes them by chance: in other workbooks a column without values is Text, whatever its formats.
/// A cell that gets a value loses them.
constexpr std::pair<const char*, FieldType> kMarks[] = {
    {"General;\\-General;General", FieldType::Double},   {"@;@;@;@", FieldType::Memo},
    {"\"True\";\"True\";\"False\"", FieldType::Boolean}, {"yyyy-mm-dd;General", FieldType::Date},
    {"\"$\"#,##0.00;General", FieldType::Currency},
};

std::optional<FieldType> typeOfMark(const std::string& format)
{
    for (const auto& [mark, type] : kMarks)
        if (format == mark)
            return type;
    return std::nullopt;
}

bool hasTime(const Cell& cell)
{
    return cell.number != std::floor(cell.number);
}

bool sameButFormat(Bytes a, Bytes b, std::size_t usedAt)
{
    if (a.size() != b.size() || a.size() <= usedAt)
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const auto mask = static_cast<std::uint8_t>(i == usedAt ? ~kOwnFormat : 0xFF);
        if (i != kFormatAt && i != kFormatAt + 1 && (a[i] & mask) != (b[i] & mask))
            return false;
    }
    return true;
}

}  // namespace

StyleBook::StyleBook(const Globals& globals) : globals_(globals)
{
    for (const Bytes xf : globals.xfs) {
        const auto text = globals.formatTexts.find(
            xf.size() >= kFlagsAt ? loadLE<std::uint16_t>(xf.data() + kFormatAt) : kGeneral);
        marks_.push_back(text != globals.formatTexts.end() && typeOfMark(text->second).has_value());
    }
    const auto isCell = [&](std::size_t i) {
        return globals_.xfs[i].size() > kFlagsAt && (globals_.xfs[i][kFlagsAt] & kStyleXf) == 0;
    };
    if (globals_.xfs.size() > kDefaultCellXf && isCell(kDefaultCellXf)) {
        plain_ = kDefaultCellXf;
        return;
    }
    for (std::size_t i = globals_.xfs.size(); i-- > 0;)
        if (isCell(i))
            plain_ = static_cast<std::uint16_t>(i);
}

Bytes StyleBook::xf(std::size_t index) const
{
    if (index < globals_.xfs.size())
        return globals_.xfs[index];
    index -= globals_.xfs.size();
    return index < newXfs_.size() ? Bytes(newXfs_[index]) : Bytes{};
}

FormatClass StyleBook::classOf(std::size_t index) const
{
    return index < globals_.xfs.size() || index - globals_.xfs.size() >= newClasses_.size()
               ? globals_.classOf(index)
               : newClasses_[index - globals_.xfs.size()];
}

FormatClass StyleBook::classOfFormatIndex(int format) const
{
    if (const auto found = globals_.formats.find(format); found != globals_.formats.end())
        return found->second;
    for (const NewFormat& made : newFormats_)
        if (made.index == format)
            return classOfFormat(made.text);
    return classOfBuiltInFormat(format);
}

int StyleBook::knownOr(const std::string& text, int builtIn) const
{
    for (const auto& [index, known] : globals_.formatTexts)
        if (known == text)
            return index;
    return builtIn;
}

int StyleBook::formatOf(const std::string& text)
{
    int next = kFirstOwnFormat;
    for (const auto& [index, known] : globals_.formatTexts) {
        if (known == text)
            return index;
        next = std::max(next, index + 1);
    }
    for (const NewFormat& made : newFormats_) {
        if (made.text == text)
            return made.index;
        next = std::max(next, made.index + 1);
    }
    newFormats_.push_back({next, text});
    return next;
}

int StyleBook::moneyFormat() const
{
    for (const auto& [index, format] : globals_.formats)
        if (format.kind == CellKind::Currency)
            return index;
    return kBuiltInMoney;
}

std::uint16_t StyleBook::withFormat(std::uint16_t base, int format)
{
    const auto [known, isNew] = made_.try_emplace({base, format}, base);
    if (!isNew)
        return known->second;
    const Bytes old = xf(base);
    if (old.size() < kFlagsAt)  // a workbook without formats: there is nothing to add one to
        return base;
    const std::size_t usedAt = globals_.form->version == 8 ? 9 : 7;
    const std::size_t count = globals_.xfs.size() + newXfs_.size();
    for (std::size_t i = 0; i < count; ++i)
        if (xf(i).size() >= kFlagsAt && loadLE<std::uint16_t>(xf(i).data() + kFormatAt) == format &&
            sameButFormat(xf(i), old, usedAt))
            return known->second = static_cast<std::uint16_t>(i);
    std::vector<std::uint8_t> made(old.begin(), old.end());
    storeLE(made.data() + kFormatAt, static_cast<std::uint16_t>(format));
    if (made.size() > usedAt)
        made[usedAt] |= kOwnFormat;
    newXfs_.push_back(std::move(made));
    newClasses_.push_back(classOfFormatIndex(format));
    marks_.push_back(std::any_of(newFormats_.begin(), newFormats_.end(), [&](const NewFormat& f) {
        return f.index == format && typeOfMark(f.text).has_value();
    }));
    return known->second = static_cast<std::uint16_t>(count);
}

std::uint16_t StyleBook::withoutMark(std::uint16_t base, const Cell& cell)
{
    switch (cell.kind) {
    case CellKind::Date:
        return withFormat(base, formatOf(hasTime(cell) ? kMomentText : kDateText));
    case CellKind::Currency:
        return withFormat(base, formatOf(kMoneyText));
    case CellKind::Blank:
        return base;
    default:
        return withFormat(base, kGeneral);
    }
}

std::uint16_t StyleBook::suited(std::uint16_t base, const Cell& cell)
{
    if (base < marks_.size() && marks_[base])
        return withoutMark(base, cell);
    const FormatClass shown = classOf(base);
    switch (cell.kind) {
    case CellKind::Date:
        if (shown.kind == CellKind::Date && (shown.time || !hasTime(cell)))
            return base;
        return withFormat(base, hasTime(cell) ? knownOr(kMomentText, kBuiltInMoment)
                                              : knownOr(kDateText, kBuiltInDate));
    case CellKind::Currency:
        return shown.kind == CellKind::Currency ? base : withFormat(base, moneyFormat());
    case CellKind::Number:
        return shown.kind == CellKind::Date ? withFormat(base, kGeneral) : base;
    default:
        return base;
    }
}

std::uint16_t StyleBook::blankOf(FieldType type)
{
    for (const auto& [mark, marked] : kMarks)
        if (marked == type)
            return withFormat(plain_, formatOf(mark));
    return plain_;
}

std::optional<FieldType> StyleBook::typeOfBlank(const Globals& globals, std::uint16_t xf)
{
    if (xf >= globals.xfs.size() || globals.xfs[xf].size() < kFlagsAt)
        return std::nullopt;
    const auto found =
        globals.formatTexts.find(loadLE<std::uint16_t>(globals.xfs[xf].data() + kFormatAt));
    return found == globals.formatTexts.end() ? std::nullopt : typeOfMark(found->second);
}

void StyleBook::addTo(RecordList& globals) const
{
    std::size_t xfAt = globals.behindLast(rec::kXf);
    if (xfAt == RecordList::npos)
        return;
    std::size_t formatAt = globals.behindLast(rec::kFormat);
    if (formatAt == RecordList::npos)
        formatAt = globals.find(rec::kXf);
    for (const NewFormat& format : newFormats_) {
        // Index, count of characters in two bytes (one before version 8), flags: narrow characters.
        const std::size_t head = globals_.form->version == 8 ? 5 : 3;
        std::vector<std::uint8_t> data(head + format.text.size());
        storeLE(data.data(), static_cast<std::uint16_t>(format.index));
        data[2] = static_cast<std::uint8_t>(format.text.size());
        std::copy(format.text.begin(), format.text.end(),
                  data.begin() + static_cast<std::ptrdiff_t>(head));
        globals.insert(formatAt++, RecordList::made(rec::kFormat, std::move(data)));
    }
    xfAt = globals.behindLast(rec::kXf);
    for (const std::vector<std::uint8_t>& made : newXfs_)
        globals.insert(xfAt++, RecordList::made(rec::kXf, made));
}

}  // namespace velnor::excel
