#include "access/model/structure_checks.h"

#include <algorithm>
#include <string>

#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::model {
namespace {

bool plainName(std::string_view name, int most)
{
    if (name.empty() || name.front() == ' ' || textLength(name) > static_cast<std::size_t>(most))
        return false;
    return std::none_of(name.begin(), name.end(),
                        [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

bool known(FieldType type)
{
    return type == FieldType::Guid || (type >= FieldType::Boolean && type <= FieldType::Memo) ||
           (type >= FieldType::BigInt && type <= FieldType::TimeStamp);
}

const FieldDef* fieldNamed(const std::vector<FieldDef>& fields, std::string_view name)
{
    for (const FieldDef& field : fields)
        if (paths::sameName(field.name, name))
            return &field;
    return nullptr;
}

[[noreturn]] void invalidIndex(const IndexDef& index, const std::string& why)
{
    throw EngineError(EngineErrorNumber::InvalidIndex, "Index " + index.name + " " + why + ".");
}

}  // namespace

std::int32_t effectiveSize(FieldType type, std::int32_t size, const FormatTraits& traits)
{
    switch (type) {
    case FieldType::Boolean:
    case FieldType::Byte:
        return 1;
    case FieldType::Integer:
        return 2;
    case FieldType::Long:
    case FieldType::Single:
        return 4;
    case FieldType::Currency:
    case FieldType::Date:
    case FieldType::Time:
    case FieldType::TimeStamp:
    case FieldType::BigInt:
        return 8;
    case FieldType::Guid:
        return 16;
    case FieldType::Memo:
    case FieldType::LongBinary:
        return 0;
    case FieldType::Text:
    case FieldType::Char:
    case FieldType::Binary:
    case FieldType::VarBinary:
        return size == 0 ? std::min(255, traits.maxText) : size;
    default:  // Double and the decimals: some formats keep a width of their own
        return size == 0 && type == FieldType::Double ? 8 : size;
    }
}

void checkTableName(std::string_view name, const FormatTraits& traits)
{
    if (!plainName(name, traits.maxTableName))
        throw EngineError(EngineErrorNumber::InvalidTableName,
                          "Not a valid name of a table: \"" + std::string(name) + "\".");
}

void settleField(FieldDef& field, const FormatTraits& traits)
{
    if (traits.cutFieldNames)
        field.name = textPrefix(field.name, static_cast<std::size_t>(traits.maxFieldName));
    if (!plainName(field.name, traits.maxFieldName))
        throw EngineError(EngineErrorNumber::InvalidFieldName,
                          "Not a valid name of a field: \"" + field.name + "\".");
    if (!known(field.type))
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "Field " + field.name + " has no valid type.");
    field.size = effectiveSize(field.type, field.size, traits);
    const bool sized = valueKindOf(field.type) == ValueKind::Text &&
                       field.type != FieldType::Memo && field.type != FieldType::Guid;
    if (field.size < 0 || (sized && field.size > traits.maxText))
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "Field " + field.name + " has no valid size.");
}

void settleFields(std::vector<FieldDef>& fields, const FormatTraits& traits)
{
    if (fields.size() > static_cast<std::size_t>(traits.maxFields))
        throw EngineError(EngineErrorNumber::TooManyFields, "Too many fields.");
    for (std::size_t i = 0; i < fields.size(); ++i) {
        settleField(fields[i], traits);
        for (std::size_t j = 0; j < i; ++j)
            if (paths::sameName(fields[i].name, fields[j].name))
                throw EngineError(EngineErrorNumber::SameFieldNames,
                                  "There are two fields of the name " + fields[i].name + ".");
    }
}

void checkIndex(const IndexDef& index, const std::vector<FieldDef>& fields)
{
    if (index.name.empty() || index.fields.empty())
        invalidIndex(index, "has no name or no fields");
    for (std::size_t i = 0; i < index.fields.size(); ++i) {
        const FieldDef* field = fieldNamed(fields, index.fields[i].name);
        if (!field)
            invalidIndex(index, "names field " + index.fields[i].name + ", which is not there");
        if (field->type == FieldType::Memo || field->type == FieldType::LongBinary)
            invalidIndex(index, "cannot be on field " + field->name);
        for (std::size_t j = 0; j < i; ++j)
            if (paths::sameName(index.fields[i].name, index.fields[j].name))
                invalidIndex(index, "names field " + field->name + " twice");
    }
}

}  // namespace velnor::model
