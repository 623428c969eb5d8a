// access/formats/paradox/field_type.h - the field types of the format and what the engine makes of
// them.
#pragma once

#include <cstdint>
#include <string>

#include "access/layout.h"

namespace velnor::paradox {

/// The type byte of a field.
enum class FieldCode : std::uint8_t {
    Alpha = 0x01,
    Date = 0x02,
    Short = 0x03,
    Long = 0x04,
    Money = 0x05,
    Number = 0x06,
    Logical = 0x09,
    Memo = 0x0C,
    Binary = 0x0D,
    Formatted = 0x0E,
    Ole = 0x0F,
    Graphic = 0x10,
    Time = 0x14,
    TimeStamp = 0x15,
    Autonumber = 0x16,
    Bcd = 0x17,
    Bytes = 0x18,
};

struct TypeInfo {
    FieldCode code;
    char letter;
    std::uint8_t length;   ///< bytes in a record; 0 when the field says its own
    std::uint8_t version;  ///< the lowest version byte that has the type
    FieldType type;        ///< what callers see
    bool mayBeKey;
    bool isLong;  ///< a value beside the records, in the MB file
};

/// Null for a byte that is no type.
const TypeInfo* typeInfo(std::uint8_t code);
const TypeInfo& typeInfo(FieldCode code);

/// One field as a header has it.
struct StoredField {
    FieldCode code = FieldCode::Alpha;
    std::uint8_t sizeByte = 0;  ///< of a BCD: its decimals
    std::uint16_t length = 0;   ///< bytes in the record
    std::uint16_t offset = 0;   ///< in the record
    std::uint16_t number = 0;   ///< a table: the permanent id; an index: see `SecondaryIndex`
    std::string stored;         ///< the name in the table's code page
    std::string name;           ///< the same in UTF-8

    bool isLong() const { return typeInfo(code).isLong; }
    bool isText() const { return code == FieldCode::Alpha; }
    /// Bytes in front of the pointer of a long value, which repeat its beginning.
    std::size_t leader() const { return length - 10u; }
    bool sameKind(const StoredField& other) const
    {
        return code == other.code && sizeByte == other.sizeByte;
    }
};

/// Bytes in a record of a field with this size byte; 0 when the size does not fit the type.
std::uint16_t recordLength(const TypeInfo& info, std::uint8_t sizeByte);

FieldDef fieldDefOf(const StoredField& field);

/// The stored form of a new field for tables of this version byte, without name and place.
/// 3251 when they have no such type, 3001 for a size that they cannot have.
StoredField storedFieldFor(const FieldDef& def, std::uint8_t version);

}  // namespace velnor::paradox
