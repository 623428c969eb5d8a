#include "access/field_type_names.h"

namespace velnor {
namespace {

struct NamedType {
    short code;
    const char* name;
};

constexpr NamedType kNamedTypes[] = {
    {1, "Boolean"},     {2, "Byte"},     {3, "Integer"},  {4, "Long"},    {5, "Currency"},
    {6, "Single"},      {7, "Double"},   {8, "Date"},     {9, "Binary"},  {10, "Text"},
    {11, "LongBinary"}, {12, "Memo"},    {15, "GUID"},    {16, "BigInt"}, {17, "Binary"},
    {18, "Char"},       {19, "Numeric"}, {20, "Decimal"}, {21, "Float"},  {22, "Time"},
    {23, "TimeStamp"},
};

}  // namespace

QString FieldTypeName(short code)
{
    for (const NamedType& type : kNamedTypes) {
        if (type.code == code)
            return QString::fromLatin1(type.name);
    }
    return {};
}

short FieldTypeCode(const QString& name)
{
    for (const NamedType& type : kNamedTypes) {
        if (name == QLatin1String(type.name))
            return type.code;
    }
    return 0;
}

const std::array<const char*, 21> kFieldTypeChoices = {
    "BigInt",  "Binary",  "Boolean", "Byte", "Char",    "Currency",  "Date",
    "Decimal", "Double",  "Float",   "GUID", "Integer", "Long",      "LongBinary",
    "Memo",    "Numeric", "Single",  "Text", "Time",    "TimeStamp", "Binary",
};

}  // namespace velnor
