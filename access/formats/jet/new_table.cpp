#include "access/formats/jet/new_table.h"

#include <algorithm>

#include "access/formats/jet/column_width.h"
#include "access/formats/jet/table_layout.h"
#include "access/formats/jet/text_collation.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

constexpr int kTextCharacters = 255;
constexpr std::uint8_t kDecimalPrecision = 18, kMaxPrecision = 28;

std::uint16_t lengthOf(const ColumnDefaults& defaults, const FieldDef& field, std::uint8_t type)
{
    switch (type) {
    case column_type::kText: {
        const int size = field.size > 0 ? std::min(field.size, kTextCharacters) : kTextCharacters;
        return static_cast<std::uint16_t>(defaults.format.wideText ? 2 * size : size);
    }
    case column_type::kBinary:
        return static_cast<std::uint16_t>(field.size > 0
                                              ? std::min<int>(field.size, defaults.format.maxBinary)
                                              : defaults.format.maxBinary);
    default:
        return static_cast<std::uint16_t>(describedWidth(type));
    }
}

bool isVariable(std::uint8_t type)
{
    return type == column_type::kText || type == column_type::kBinary ||
           type == column_type::kMemo || type == column_type::kOle;
}

[[noreturn]] void badIndex(const std::string& index, const char* why)
{
    throw EngineError(EngineErrorNumber::InvalidIndex,
                      "The index \"" + index + "\" cannot be made: " + why);
}

/// Slots in the order of ids, long values behind all others; fixed offsets in the order of ids.
void placeColumns(TableDef& def)
{
    std::uint16_t offset = 0, slot = 0;
    for (Column& c : def.columns) {
        if (c.fixed()) {
            c.fixedOffset = offset;
            c.variableSlot = slot;  // variable columns in front of it
            offset = static_cast<std::uint16_t>(offset +
                                                (c.type == column_type::kBoolean ? 0 : c.length));
        } else if (!c.longValue()) {
            c.variableSlot = slot++;
        }
    }
    for (Column& c : def.columns)
        if (c.longValue())
            c.variableSlot = slot++;
    def.variableColumns = slot;
}

}  // namespace

bool allowedName(std::string_view name)
{
    return !name.empty() && name.front() != ' ' &&
           name.find_first_of(".![]`") == std::string_view::npos;
}

Column newColumn(const ColumnDefaults& defaults, const FieldDef& field)
{
    if (!allowedName(field.name))
        throw EngineError(EngineErrorNumber::InvalidFieldName,
                          "\"" + field.name +
                              "\" is not a valid field name: it must not begin with a blank or "
                              "have . ! [ ] ` in it.");
    Column c;
    c.name = field.name;
    c.type = columnTypeOf(field.type);
    if (c.type == 0 || (c.type == column_type::kDecimal && defaults.format.version == 3))
        throw EngineError(EngineErrorNumber::NotSupported,
                          "The field \"" + field.name +
                              "\" has a type that this version of Access "
                              "files does not have.");
    c.length = lengthOf(defaults, field, c.type);
    c.flags = column_flag::kAlwaysSet;
    if (!isVariable(c.type))
        c.flags |= column_flag::kFixed;
    if (field.autonumber && c.type == column_type::kLong)
        c.flags |= column_flag::kAutonumber;
    if (field.autonumber && c.type == column_type::kGuid)
        c.flags |= column_flag::kAutoGuid;
    const bool text = c.type == column_type::kText || c.type == column_type::kMemo;
    if (text && defaults.format.column.moreFlags >= 0)
        c.moreFlags = column_flag::kCompressed;
    c.order = defaults.order;
    c.codePage = defaults.codePage;
    c.columnWord = defaults.columnWord;
    if (c.type == column_type::kDecimal) {
        c.precision =
            field.precision ? std::min(field.precision, kMaxPrecision) : kDecimalPrecision;
        c.scale = std::min(field.scale, c.precision);
    }
    return c;
}

RealIndex newRealIndex(const TableDef& def, const IndexDef& index, const JetFormat& format)
{
    RealIndex real;
    if (index.fields.empty())
        badIndex(index.name, "it has no fields.");
    if (index.fields.size() > kMaxIndexColumns)
        badIndex(index.name, "it has more than ten fields.");
    for (const IndexFieldDef& field : index.fields) {
        const auto column =
            std::find_if(def.columns.begin(), def.columns.end(),
                         [&](const Column& c) { return paths::sameName(c.name, field.name); });
        if (column == def.columns.end())
            badIndex(index.name, "one of its fields is not in the table.");
        if (column->type == column_type::kOle)
            badIndex(index.name, "a field of this type cannot be indexed.");
        real.columns.push_back({column->id, field.descending});
    }
    real.flags = format.realIndex.alwaysFlags;
    if (index.unique || index.primary)
        real.flags |= index_flag::kUnique;
    if (index.required || index.primary)
        real.flags |= index_flag::kRequired;
    if (index.ignoreNulls)
        real.flags |= index_flag::kIgnoreNulls;
    return real;
}

void addLogicalIndex(const JetFile& file, TableDef& table, const IndexDef& index)
{
    if (table.logicalIndexes.size() >= kMaxIndexes)
        badIndex(index.name, "a table has at most 32 indexes.");
    LogicalIndex logical;
    logical.name = index.name;
    logical.realIndex = static_cast<std::uint32_t>(table.realIndexes.size() - 1);
    logical.kind = index.primary ? LogicalKind::Primary : LogicalKind::Ordinary;
    for (const LogicalIndex& other : table.logicalIndexes)
        logical.number = std::max(logical.number, other.number + 1);
    TextCollation collation(!file.format().wideText, file.header().order, &file.codePage());
    const auto keyOf = [&](const std::string& name) {
        KeyBytes key;
        collation.append(name, false, key);
        return key;
    };
    const KeyBytes key = keyOf(index.name);
    const auto place =
        std::find_if(table.logicalIndexes.begin(), table.logicalIndexes.end(),
                     [&](const LogicalIndex& other) { return keyOf(other.name) > key; });
    table.logicalIndexes.insert(place, std::move(logical));
}

TableDef newTableDef(const ColumnDefaults& defaults, const TableLayout& layout)
{
    if (layout.fields.size() > kMaxColumns)
        throw EngineError(EngineErrorNumber::TooManyFields, "Too many fields defined.");
    if (layout.fields.empty())
        throw EngineError(EngineErrorNumber::InvalidArgument, "A table must have a field.");
    TableDef def;
    for (const FieldDef& field : layout.fields) {
        Column c = newColumn(defaults, field);
        c.id = static_cast<std::uint16_t>(def.columns.size());
        c.ordinal = c.id;
        def.columns.push_back(std::move(c));
    }
    def.maxColumns = static_cast<std::uint16_t>(def.columns.size());
    placeColumns(def);
    return def;
}

namespace {

void setRules(PropertyBlock& block, const std::string& owner, const std::string& rule,
              const std::string& words, const std::string& description)
{
    block.setText(owner, "ValidationRule", PropertyType::Memo, rule);
    block.setText(owner, "ValidationText", PropertyType::Text, words);
    block.setText(owner, "Description", PropertyType::Text, description);
}

}  // namespace

void setFieldProperties(PropertyBlock& block, const FieldDef& field)
{
    if (field.required)
        block.setFlag(field.name, "Required", true);
    if (!field.allowZeroLength && valueKindOf(field.type) == ValueKind::Text)
        block.setFlag(field.name, "AllowZeroLength", false);
    block.setText(field.name, "DefaultValue", PropertyType::Memo, field.defaultValue);
    setRules(block, field.name, field.validationRule, field.validationText, field.description);
}

PropertyBlock newProperties(const TableLayout& layout, PropertyText text)
{
    PropertyBlock block(text);
    setRules(block, "", layout.validationRule, layout.validationText, layout.description);
    for (const FieldDef& field : layout.fields)
        setFieldProperties(block, field);
    return block;
}

}  // namespace velnor::jet
