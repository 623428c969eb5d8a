#include "access/formats/sheet/sheet_table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "access/formats/sheet/serial_date.h"
#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::sheet {
namespace {

constexpr int kMostFields = 255;
constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLongestText = 255;  // of a Text field, characters
constexpr double kCurrencyUnits = 10000;
constexpr double kMostCurrency = 9.2e18;  // units in 64 bits

/// How many bytes at the start (or end) of a text are a blank, also one of those beyond ASCII.
std::size_t blankAt(std::string_view text, bool atEnd)
{
    static constexpr std::string_view kBlanks[] = {" ",
                                                   "\xC2\xA0",
                                                   "\xE3\x80\x80",
                                                   "\xE2\x80\x80",
                                                   "\xE2\x80\x81",
                                                   "\xE2\x80\x82",
                                                   "\xE2\x80\x83",
                                                   "\xE2\x80\x84",
                                                   "\xE2\x80\x85",
                                                   "\xE2\x80\x86",
                                                   "\xE2\x80\x87",
                                                   "\xE2\x80\x88",
                                                   "\xE2\x80\x89",
                                                   "\xE2\x80\x8A",
                                                   "\xE2\x80\xAF"};
    for (const std::string_view blank : kBlanks)
        if (atEnd ? text.ends_with(blank) : text.starts_with(blank))
            return blank.size();
    return 0;
}

std::string_view trimmed(std::string_view text)
{
    while (const std::size_t n = blankAt(text, false))
        text.remove_prefix(n);
    while (const std::size_t n = blankAt(text, true))
        text.remove_suffix(n);
    return text;
}

/// A header's text as the name of a field; see the rules at the top of the header.
std::string fieldName(std::string_view header)
{
    static constexpr std::string_view kNever = ".![]`", kInstead = "#$()'";
    std::string name;
    for (const char c : header) {
        if (static_cast<unsigned char>(c) >= ' ') {
            const std::size_t at = kNever.find(c);
            name += at == kNever.npos ? c : kInstead[at];
        } else if (name.empty() || name.back() != '\n') {
            name += '\n';  // stands for a run of control characters
        }
    }
    std::replace(name.begin(), name.end(), '\n', ' ');
    return std::string(trimmed(textPrefix(trimmed(name), kLongestName)));
}

FieldDef plainField(std::string name, FieldType type)
{
    FieldDef field;
    field.name = std::move(name);
    field.type = type;
    field.size = type == FieldType::Text      ? static_cast<int>(kLongestText)
                 : type == FieldType::Memo    ? 0
                 : type == FieldType::Boolean ? 1
                                              : 8;
    return field;
}

std::optional<std::int64_t> currencyUnits(double number)
{
    const double units = std::nearbyint(number * kCurrencyUnits);  // half to even
    if (!(std::fabs(units) < kMostCurrency))
        return std::nullopt;
    return static_cast<std::int64_t>(units);
}

/// What of the columns the types depend on beyond the first records.
struct WholeColumn {
    bool longText = false;
    bool anyValue = false;
};

}  // namespace

std::string columnName(std::uint16_t column)
{
    std::string name;
    for (unsigned n = column + 1u; n > 0; n = (n - 1) / 26)
        name.insert(name.begin(), static_cast<char>('A' + (n - 1) % 26));
    return name;
}

FieldDef keptField(const FieldDef& wanted)
{
    FieldDef kept = plainField(wanted.name, FieldType::Double);
    switch (valueKindOf(wanted.type)) {
    case ValueKind::Boolean:
        return plainField(wanted.name, FieldType::Boolean);
    case ValueKind::Currency:
        return plainField(wanted.name, FieldType::Currency);
    case ValueKind::Date:
        return plainField(wanted.name, FieldType::Date);
    case ValueKind::Text:
        if (wanted.type == FieldType::Memo)
            return plainField(wanted.name, FieldType::Memo);
        kept = plainField(wanted.name, FieldType::Text);
        if (wanted.type != FieldType::Guid && wanted.size > 0)
            kept.size = wanted.size;
        return kept;
    case ValueKind::Bytes:
        throw EngineError(EngineErrorNumber::NotSupported,
                          "A sheet cannot hold the bytes of field " + wanted.name + ".");
    default:
        return kept;
    }
}

void appendCellText(std::string& out, const Cell& cell, const Sheet& sheet)
{
    switch (cell.kind) {
    case CellKind::Blank:
    case CellKind::Error:
        return;
    case CellKind::Text:
        out += sheet.texts->text(cell.text);
        return;
    case CellKind::Boolean:
        out += cell.number != 0 ? "True" : "False";
        return;
    case CellKind::Date:
        if (const auto date = dateOfSerial(cell.number, sheet.date1904))
            return appendIsoDate(out, *date);
        [[fallthrough]];
    case CellKind::Number:
    case CellKind::Currency:
        appendReal(out, cell.number);
    }
}

SheetTable::SheetTable(std::string name, std::shared_ptr<Sheet> sheet, std::optional<Area> range,
                       const SheetOptions& options)
    : sheet_(std::move(sheet)), range_(range.has_value()),
      header_(options.header && !options.cells), numbersAsText_(options.cells)
{
    layout_.name = std::move(name);
    const auto area = range ? range : sheet_->cells.usedArea();
    empty_ = !area;
    if (empty_)
        return;
    area_ = *area;
    if (options.cells && !range_)
        area_.firstRow = area_.firstColumn = 0;
    if (!options.cells)
        area_.lastColumn = static_cast<std::uint16_t>(
            std::min<int>(area_.lastColumn, area_.firstColumn + kMostFields - 1));
    firstRecord_ = area_.firstRow + (header_ ? 1 : 0);
    readLayout(options);
}

SheetTable::SheetTable(TableLayout layout, std::shared_ptr<Sheet> sheet)
    : sheet_(std::move(sheet)), layout_(std::move(layout)), firstRecord_(1),
      numbersAsBooleans_(true)
{
    area_.lastColumn = static_cast<std::uint16_t>(layout_.fields.size() - 1);
}

std::uint32_t SheetTable::lastRow() const
{
    const auto used = range_ ? std::nullopt : sheet_->cells.usedArea();
    return used ? std::max(area_.lastRow, used->lastRow) : area_.lastRow;
}

std::int64_t SheetTable::recordCount() const
{
    return empty_ ? 0 : static_cast<std::int64_t>(lastRow()) + 1 - firstRecord_;
}

/// The kind of the most cells among the first records; Blank when there is no cell. `mixed` tells
/// that there are others.
CellKind SheetTable::commonKind(std::uint16_t column, int guessRows, bool& mixed) const
{
    static constexpr CellKind kInOrder[] = {CellKind::Number, CellKind::Currency, CellKind::Date,
                                            CellKind::Text, CellKind::Boolean};
    std::array<std::uint32_t, 7> votes{};
    std::uint32_t last = area_.lastRow;
    if (guessRows > 0)
        last = std::min<std::uint32_t>(last, firstRecord_ + static_cast<unsigned>(guessRows) - 1);
    for (std::uint32_t row = firstRecord_; row <= last; ++row)
        if (const Cell* cell = sheet_->cells.find(row, column))
            ++votes[static_cast<std::size_t>(cell->kind)];
    CellKind best = CellKind::Blank;
    std::uint32_t most = 0;
    int kinds = 0;
    for (const CellKind kind : kInOrder) {
        const std::uint32_t count = votes[static_cast<std::size_t>(kind)];
        kinds += count > 0;
        if (count > most) {
            most = count;
            best = kind;
        }
    }
    mixed = kinds > 1;
    return best;
}

FieldType SheetTable::typeOf(std::uint16_t column, const SheetOptions& options, bool anyValue,
                             bool longText) const
{
    bool mixed = false;
    const CellKind kind = commonKind(column, options.guessRows, mixed);
    if (options.cells || (mixed && options.mixedAsText))
        return longText ? FieldType::Memo : FieldType::Text;
    switch (kind) {
    case CellKind::Number:
        return FieldType::Double;
    case CellKind::Currency:
        return FieldType::Currency;
    case CellKind::Date:
        return FieldType::Date;
    case CellKind::Boolean:
        return FieldType::Boolean;
    default:
        break;
    }
    if (kind == CellKind::Blank && !anyValue && header_ && sheet_->blankType)
        if (const auto type = sheet_->blankType(firstRecord_, column))
            return *type;
    return longText ? FieldType::Memo : FieldType::Text;
}

void SheetTable::readLayout(const SheetOptions& options)
{
    numbersAsText_ = options.readOnly();
    const int count = area_.lastColumn - area_.firstColumn + 1;
    std::vector<WholeColumn> columns(static_cast<std::size_t>(count));
    for (std::uint32_t row = firstRecord_; row <= area_.lastRow; ++row)
        for (const Cell& cell : sheet_->cells.row(row)) {
            if (cell.column < area_.firstColumn || cell.column > area_.lastColumn ||
                cell.kind == CellKind::Blank)
                continue;
            WholeColumn& column =
                columns[static_cast<std::size_t>(cell.column - area_.firstColumn)];
            column.anyValue = true;
            if (cell.kind != CellKind::Text || column.longText)
                continue;
            const std::string_view text = sheet_->texts->text(cell.text);
            column.longText = text.size() > kLongestText && textLength(text) > kLongestText;
        }
    std::set<std::string> used;
    for (int i = 0; i < count; ++i) {
        const std::uint16_t column = columnOf(i);
        std::string name = options.cells ? columnName(column) : nameOf(column);
        if (name.empty() || used.contains(paths::foldName(name)))
            name = "F" + std::to_string(i + 1);
        while (!used.insert(paths::foldName(name)).second)
            name += '_';
        const WholeColumn& whole = columns[static_cast<std::size_t>(i)];
        layout_.fields.push_back(
            plainField(std::move(name), typeOf(column, options, whole.anyValue, whole.longText)));
    }
    if (options.readOnly()) {
        layout_.updatable = false;
        layout_.whyNotUpdatable = "The cells are shown as texts.";
    }
}

std::string SheetTable::nameOf(std::uint16_t column) const
{
    std::string text;
    const Cell* cell = header_ ? sheet_->cells.find(area_.firstRow, column) : nullptr;
    if (cell)
        appendCellText(text, *cell, *sheet_);
    return fieldName(text);
}

void SheetTable::growTo(std::uint32_t row)
{
    area_.lastRow = std::max(area_.lastRow, row);
}

ValueView SheetTable::valueOf(const Cell* cell, int field, std::string& scratch) const
{
    if (!cell)
        return {};
    const FieldType type = layout_.fields[static_cast<std::size_t>(field)].type;
    if (cell->kind == CellKind::Text) {
        if (type != FieldType::Text && type != FieldType::Memo)
            return {};
        const std::string_view text = sheet_->texts->text(cell->text);
        return text.empty() ? ValueView{} : ValueView::text(text);
    }
    switch (type) {
    case FieldType::Double:
        return cell->isNumber() ? ValueView::real(cell->number) : ValueView{};
    case FieldType::Currency:
        if (cell->isNumber())
            if (const auto units = currencyUnits(cell->number))
                return ValueView::currency(*units);
        return {};
    case FieldType::Date:
        if (cell->isNumber())
            if (const auto date = dateOfSerial(cell->number, sheet_->date1904))
                return ValueView::date(*date);
        return {};
    case FieldType::Boolean:
        return cell->kind == CellKind::Boolean || (numbersAsBooleans_ && cell->isNumber())
                   ? ValueView::boolean(cell->number != 0)
                   : ValueView{};
    default:
        if (!numbersAsText_)
            return {};
        scratch.clear();
        appendCellText(scratch, *cell, *sheet_);
        return scratch.empty() ? ValueView{} : ValueView::text(scratch);
    }
}

}  // namespace velnor::sheet
