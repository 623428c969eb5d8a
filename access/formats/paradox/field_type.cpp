#include "access/formats/paradox/field_type.h"

#include <algorithm>
#include <array>

#include "access/engine_error.h"

namespace velnor::paradox {
namespace {

constexpr std::uint8_t kLevel3 = 3, kLevel4 = 5, kLevel5 = 10;

constexpr std::array kTypes{
    TypeInfo{FieldCode::Alpha, 'A', 0, kLevel3, FieldType::Text, true, false},
    TypeInfo{FieldCode::Date, 'D', 4, kLevel3, FieldType::Date, true, false},
    TypeInfo{FieldCode::Short, 'S', 2, kLevel3, FieldType::Integer, true, false},
    TypeInfo{FieldCode::Long, 'I', 4, kLevel5, FieldType::Long, true, false},
    TypeInfo{FieldCode::Money, '$', 8, kLevel3, FieldType::Currency, true, false},
    TypeInfo{FieldCode::Number, 'N', 8, kLevel3, FieldType::Double, true, false},
    TypeInfo{FieldCode::Logical, 'L', 1, kLevel5, FieldType::Boolean, false, false},
    TypeInfo{FieldCode::Memo, 'M', 0, kLevel4, FieldType::Memo, false, true},
    TypeInfo{FieldCode::Binary, 'B', 0, kLevel4, FieldType::LongBinary, false, true},
    TypeInfo{FieldCode::Formatted, 'F', 0, kLevel5, FieldType::LongBinary, false, true},
    TypeInfo{FieldCode::Ole, 'O', 0, kLevel5, FieldType::LongBinary, false, true},
    TypeInfo{FieldCode::Graphic, 'G', 0, kLevel5, FieldType::LongBinary, false, true},
    TypeInfo{FieldCode::Time, 'T', 4, kLevel5, FieldType::Time, true, false},
    TypeInfo{FieldCode::TimeStamp, '@', 8, kLevel5, FieldType::Date, true, false},
    TypeInfo{FieldCode::Autonumber, '+', 4, kLevel5, FieldType::Long, true, false},
    TypeInfo{FieldCode::Bcd, '#', 17, kLevel5, FieldType::Double, true, false},
    TypeInfo{FieldCode::Bytes, 'Y', 0, kLevel5, FieldType::Binary, true, false},
};

/// The leader of new long fields: short texts stay in the record, and it still is a short one.
constexpr std::uint8_t kNewLongSize = 10 + 10;

[[noreturn]] void noType(const FieldDef& def)
{
    throw EngineError(EngineErrorNumber::NotSupported,
                      "Tables of this kind have no type for the field " + def.name + ".");
}

[[noreturn]] void noSize(const FieldDef& def)
{
    throw EngineError(EngineErrorNumber::InvalidArgument,
                      "The field " + def.name + " cannot have the size " +
                          std::to_string(def.size) + " in a table of this kind.");
}

FieldCode codeFor(const FieldDef& def, std::uint8_t version)
{
    const bool five = version >= kLevel5;
    switch (def.type) {
    case FieldType::Text:
    case FieldType::Char:
        return FieldCode::Alpha;
    case FieldType::Byte:
    case FieldType::Integer:
        return FieldCode::Short;
    case FieldType::Long:
        return !five ? FieldCode::Number : def.autonumber ? FieldCode::Autonumber : FieldCode::Long;
    case FieldType::BigInt:
    case FieldType::Decimal:
    case FieldType::Numeric:
        return five ? FieldCode::Bcd : FieldCode::Number;
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::Float:
        return FieldCode::Number;
    case FieldType::Currency:
        return FieldCode::Money;
    case FieldType::Boolean:
        return five ? FieldCode::Logical : FieldCode::Short;
    case FieldType::Date:
    case FieldType::TimeStamp:
        return five ? FieldCode::TimeStamp : FieldCode::Date;
    case FieldType::Time:
        return five ? FieldCode::Time : FieldCode::Alpha;
    case FieldType::Memo:
        return FieldCode::Memo;
    case FieldType::LongBinary:
        return FieldCode::Binary;
    case FieldType::Binary:
    case FieldType::VarBinary:
        return FieldCode::Bytes;
    case FieldType::Guid:
    case FieldType::None:
        break;
    }
    noType(def);
}

std::uint8_t sizeByteFor(const FieldDef& def, const TypeInfo& info)
{
    if (info.code == FieldCode::Bcd)
        return static_cast<std::uint8_t>(std::min<int>(def.scale, 32));
    if (info.length)
        return info.length;
    if (info.isLong)
        return kNewLongSize;
    if (def.type == FieldType::Time)
        return 8;
    if (def.size < 1 || def.size > 255)
        noSize(def);
    return static_cast<std::uint8_t>(def.size);
}

std::string nativeWord(const StoredField& field, const TypeInfo& info)
{
    std::string word(1, info.letter);
    if (info.length == 0 || field.code == FieldCode::Bcd)
        word += "(" + std::to_string(field.sizeByte) + ")";
    return word;
}

}  // namespace

const TypeInfo* typeInfo(std::uint8_t code)
{
    const auto found = std::find_if(kTypes.begin(), kTypes.end(), [&](const TypeInfo& info) {
        return static_cast<std::uint8_t>(info.code) == code;
    });
    return found == kTypes.end() ? nullptr : &*found;
}

const TypeInfo& typeInfo(FieldCode code)
{
    return *typeInfo(static_cast<std::uint8_t>(code));
}

std::uint16_t recordLength(const TypeInfo& info, std::uint8_t sizeByte)
{
    if (info.code == FieldCode::Bcd)
        return sizeByte <= 32 ? 17 : 0;
    if (info.length)
        return sizeByte == info.length ? info.length : 0;
    if (info.isLong)
        return sizeByte >= 10 ? sizeByte : 0;
    return sizeByte;
}

FieldDef fieldDefOf(const StoredField& field)
{
    const TypeInfo& info = typeInfo(field.code);
    FieldDef def;
    def.name = field.name;
    def.type = info.type;
    def.size = info.isLong ? 0 : field.length;
    if (info.type == FieldType::Double || info.type == FieldType::Date ||
        info.type == FieldType::Time)
        def.size = 8;
    def.autonumber = field.code == FieldCode::Autonumber;
    if (field.code == FieldCode::Bcd)
        def.scale = field.sizeByte;
    def.nativeType = nativeWord(field, info);
    return def;
}

StoredField storedFieldFor(const FieldDef& def, std::uint8_t version)
{
    StoredField field;
    field.code = codeFor(def, version);
    const TypeInfo& info = typeInfo(field.code);
    if (info.version > version)
        noType(def);
    field.sizeByte = sizeByteFor(def, info);
    field.length = recordLength(info, field.sizeByte);
    return field;
}

}  // namespace velnor::paradox
