#include "access/formats/sheet/sheet_writer.h"

#include <cmath>

#include "access/formats/sheet/serial_date.h"
#include "access/value_text.h"

namespace velnor::sheet {
namespace {

constexpr double kCurrencyUnits = 10000;

[[noreturn]] void unfit(const FieldDef& field, const char* why)
{
    throw EngineError(EngineErrorNumber::TypeConversion, "The value of field " + field.name +
                                                             " cannot be stored in a cell: " + why +
                                                             ".");
}

double numberOf(ValueView value)
{
    switch (value.kind()) {
    case ValueKind::Integer:
        return static_cast<double>(value.asInteger());
    case ValueKind::Currency:
        return static_cast<double>(value.asCurrency()) / kCurrencyUnits;
    case ValueKind::Decimal:
        return decimalToReal(value);
    default:
        return value.asReal();
    }
}

bool sameValue(ValueView a, ValueView b)
{
    std::string left, right;
    appendText(left, a);
    appendText(right, b);
    return a.isNull() == b.isNull() && left == right;
}

}  // namespace

SheetWriter::SheetWriter(std::shared_ptr<SheetTable> table, SheetRules& rules)
    : table_(std::move(table)), rules_(rules)
{
}

Cell SheetWriter::cellOf(int field, ValueView value) const
{
    const FieldDef& def = table_->layout().fields[static_cast<std::size_t>(field)];
    Sheet& sheet = table_->sheet();
    const std::uint16_t column = table_->columnOf(field);
    switch (value.kind()) {
    case ValueKind::Null:
        return Cell::blank(column);
    case ValueKind::Boolean:
        return Cell::ofNumber(rules_.booleanKind(), column, value.asBoolean());
    case ValueKind::Date: {
        const auto serial = serialOfDate(value.asDate(), sheet.date1904);
        if (!serial)
            unfit(def, "its calendar has no such day");
        return Cell::ofNumber(CellKind::Date, column, *serial);
    }
    case ValueKind::Text: {
        const std::string_view text = value.asText();
        if (text.empty())
            return Cell::blank(column);
        if (text.size() > rules_.longestText() && textLength(text) > rules_.longestText())
            throw EngineError(EngineErrorNumber::ValueTooLong,
                              "The text is too long for a cell: field " + def.name + ".");
        rules_.checkText(text);
        return Cell::ofText(column, sheet.texts->intern(text));
    }
    case ValueKind::Bytes:
        unfit(def, "bytes");
    default:
        break;
    }
    const double number = numberOf(value);
    if (!std::isfinite(number))
        unfit(def, "not a number");
    return Cell::ofNumber(def.type == FieldType::Currency ? CellKind::Currency : CellKind::Number,
                          column, number);
}

std::uint32_t SheetWriter::nextRow() const
{
    const std::uint32_t row = table_->lastRow() + 1;
    if (row >= rules_.rows())
        throw EngineError(EngineErrorNumber::SpreadsheetFull,
                          "The sheet is full: " + table_->layout().name + ".");
    if (!table_->isRange())
        return row;
    for (int i = 0; i < static_cast<int>(table_->layout().fields.size()); ++i) {
        const Cell* cell = table_->sheet().cells.find(row, table_->columnOf(i));
        if (cell && cell->kind != CellKind::Blank)
            throw EngineError(EngineErrorNumber::RangeCannotGrow,
                              "The range " + table_->layout().name +
                                  " cannot grow: there is something in the row below it.");
    }
    return row;
}

RowId SheetWriter::insert(std::span<const ValueView> values)
{
    rules_.requireWriteable(*table_);
    const std::uint32_t row = nextRow();
    made_.clear();
    for (std::size_t i = 0; i < values.size(); ++i)
        made_.push_back(cellOf(static_cast<int>(i), values[i]));
    for (const Cell& cell : made_)
        if (cell.kind != CellKind::Blank)
            table_->sheet().cells.change(row, cell);
    table_->growTo(row);
    return row;
}

/// A formula's result is shown and cannot be set; setting what it shows is no change.
void SheetWriter::refuseFormula(std::uint32_t row, const FieldChange& change) const
{
    const Cell* cell = table_->sheet().cells.find(row, table_->columnOf(change.field));
    if (!cell || !cell->formula)
        return;
    std::string scratch;
    if (!sameValue(change.value, table_->valueOf(cell, change.field, scratch)))
        throw EngineError(EngineErrorNumber::NotSupported,
                          "The cell of field " +
                              table_->layout().fields[static_cast<std::size_t>(change.field)].name +
                              " holds a formula and cannot be changed.");
}

void SheetWriter::update(RowId row, std::span<const FieldChange> changes)
{
    rules_.requireWriteable(*table_);
    const auto place = static_cast<std::uint32_t>(row);
    made_.clear();
    for (const FieldChange& change : changes) {
        refuseFormula(place, change);
        made_.push_back(cellOf(change.field, change.value));
    }
    CellGrid& cells = table_->sheet().cells;
    for (Cell& cell : made_) {
        const Cell* old = cells.find(place, cell.column);
        if (old ? old->formula : cell.kind == CellKind::Blank)
            continue;
        cell.style = old ? old->style : 0;
        cells.change(place, cell);
    }
}

void SheetWriter::remove(RowId)
{
    throw EngineError(EngineErrorNumber::DeletesNotSupported,
                      "Records of a sheet cannot be deleted; their fields can be set to Null.");
}

}  // namespace velnor::sheet
