#include "access/formats/jet/table_layout.h"

#include <algorithm>

namespace velnor::jet {
namespace {

struct TypeRow {
    std::uint8_t column;
    FieldType field;
    int size;  // of the fixed types
    const char* word;
};

constexpr TypeRow kTypes[] = {
    {column_type::kBoolean, FieldType::Boolean, 1, "Boolean"},
    {column_type::kByte, FieldType::Byte, 1, "Byte"},
    {column_type::kInteger, FieldType::Integer, 2, "Integer"},
    {column_type::kLong, FieldType::Long, 4, "Long"},
    {column_type::kCurrency, FieldType::Currency, 8, "Currency"},
    {column_type::kSingle, FieldType::Single, 4, "Single"},
    {column_type::kDouble, FieldType::Double, 8, "Double"},
    {column_type::kDate, FieldType::Date, 8, "Date"},
    {column_type::kBinary, FieldType::Binary, 0, "Binary"},
    {column_type::kText, FieldType::Text, 0, "Text"},
    {column_type::kOle, FieldType::LongBinary, 0, "OLE"},
    {column_type::kMemo, FieldType::Memo, 0, "Memo"},
    {column_type::kGuid, FieldType::Guid, 16, "GUID"},
    {column_type::kDecimal, FieldType::Decimal, 16, "Decimal"},
};

const TypeRow* rowOf(std::uint8_t columnType)
{
    for (const TypeRow& row : kTypes)
        if (row.column == columnType)
            return &row;
    return nullptr;
}

int sizeOf(const JetFormat& format, const Column& c, const TypeRow* type)
{
    if (c.type == column_type::kText)
        return format.wideText ? c.length / 2 : c.length;
    if (c.type == column_type::kBinary || !type)
        return c.length;
    return type->size;
}

std::string nativeWord(const Column& c, const TypeRow* type)
{
    if (!type)
        return "type " + std::to_string(c.type);
    std::string word = type->word;
    if (c.type == column_type::kDecimal)
        word += "(" + std::to_string(c.precision) + "," + std::to_string(c.scale) + ")";
    else if (c.autonumber())
        word += " autonumber";
    else if (c.type == column_type::kText && c.fixed())
        word += " fixed";
    return word;
}

FieldDef fieldOf(const JetFormat& format, const Column& c, const PropertyBlock& properties)
{
    const TypeRow* type = rowOf(c.type);
    FieldDef field;
    field.name = c.name;
    field.type = fieldTypeOf(c.type);
    field.size = sizeOf(format, c, type);
    field.autonumber = c.autonumber();
    if (c.type == column_type::kDecimal) {
        field.precision = c.precision;
        field.scale = c.scale;
    }
    field.required = properties.required(c.name);
    field.allowZeroLength = properties.allowZeroLength(c.name);
    field.defaultValue = properties.defaultValue(c.name);
    field.description = properties.description(c.name);
    field.validationRule = properties.validationRule(c.name);
    field.validationText = properties.validationText(c.name);
    field.nativeType = nativeWord(c, type);
    return field;
}

/// Why keys of an index cannot be written: the order of one of its text columns is not known at
/// all.
std::string whyNotKept(JetTable& table, int real)
{
    OpenIndex& index = table.index(real);
    KeyBuilder keys(!table.file().format().wideText, &table.file().codePage(), index.keyColumns);
    for (std::size_t i = 0; i < index.keyColumns.size(); ++i) {
        const KeyColumn& column = index.keyColumns[i];
        const bool text = column.type == column_type::kText || column.type == column_type::kMemo;
        if (text && !keys.canEncode(static_cast<int>(i), ValueView::text("x")))
            return "its sort order (language " + std::to_string(column.order.lcid) +
                   ") is not supported for writing";
    }
    return {};
}

IndexDef indexOf(JetTable& table, const LogicalIndex& logical)
{
    const TableDef& def = table.def();
    const RealIndex& real = def.realIndexes[logical.realIndex];
    IndexDef index;
    index.name = logical.name;
    index.primary = logical.kind == LogicalKind::Primary;
    index.foreign = logical.kind == LogicalKind::Foreign;
    index.unique = real.unique() || index.primary;
    index.required = real.required();
    index.ignoreNulls = real.ignoreNulls();
    for (const IndexColumn& column : real.columns) {
        const Column* c = def.columnById(column.id);
        index.fields.push_back({c ? c->name : std::string("?"), column.descending});
    }
    index.cannotKeep = whyNotKept(table, static_cast<int>(logical.realIndex));
    return index;
}

}  // namespace

FieldType fieldTypeOf(std::uint8_t columnType)
{
    const TypeRow* row = rowOf(columnType);
    return row ? row->field : FieldType::Binary;
}

std::uint8_t columnTypeOf(FieldType type)
{
    switch (type) {
    case FieldType::VarBinary:
        return column_type::kBinary;
    case FieldType::Char:
        return column_type::kText;
    case FieldType::Numeric:
        return column_type::kDecimal;
    case FieldType::Float:
        return column_type::kDouble;
    case FieldType::Time:
    case FieldType::TimeStamp:
        return column_type::kDate;
    default:
        break;
    }
    for (const TypeRow& row : kTypes)
        if (row.field == type)
            return row.column;
    return 0;
}

void describe(JetTable& table, const PropertyBlock& properties, TableLayout& layout)
{
    const TableDef& def = table.def();
    for (const FieldPlan& plan : table.plan().fields)
        layout.fields.push_back(
            fieldOf(table.file().format(), def.columns[plan.column], properties));
    for (const LogicalIndex& logical : def.logicalIndexes)
        if (logical.realIndex < def.realIndexes.size())
            layout.indexes.push_back(indexOf(table, logical));
    layout.validationRule = properties.validationRule("");
    layout.validationText = properties.validationText("");
    layout.description = properties.description("");
    layout.whyNotUpdatable = table.whyReadOnly();
    layout.updatable = layout.whyNotUpdatable.empty();
}

}  // namespace velnor::jet
