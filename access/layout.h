// access/layout.h - the structure of a table as plain data, shared by the engine and its formats.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velnor {

/// The engine's Field.Type numbers.
enum class FieldType : std::int16_t {
    None = 0,
    Boolean = 1,
    Byte = 2,
    Integer = 3,     ///< 16 bits
    Long = 4,        ///< 32 bits
    Currency = 5,
    Single = 6,
    Double = 7,
    Date = 8,
    Binary = 9,
    Text = 10,
    LongBinary = 11,
    Memo = 12,
    Guid = 15,       ///< value: Text "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", upper case
    BigInt = 16,
    VarBinary = 17,
    Char = 18,
    Numeric = 19,
    Decimal = 20,
    Float = 21,
    Time = 22,
    TimeStamp = 23,
};

struct FieldDef {
    std::string name;
    FieldType type = FieldType::Text;
    std::int32_t size = 0;        ///< characters of Text, bytes of Binary, the width of fixed types; 0 for Memo
    bool required = false;
    bool allowZeroLength = true;
    bool autonumber = false;      ///< the format gives the value when it is left Null
    std::uint8_t precision = 0;   ///< Decimal: digits in all
    std::uint8_t scale = 0;       ///< Decimal and fixed-width numbers: digits behind the point
    std::string defaultValue;     ///< as the file has it, an expression
    std::string description;
    std::string validationRule;
    std::string validationText;
    std::string nativeType;       ///< the format's own word, for `info`: "C", "N(12,2)", ...
};

struct IndexFieldDef {
    std::string name;
    bool descending = false;
};

struct IndexDef {
    std::string name;
    std::vector<IndexFieldDef> fields;
    bool primary = false;
    bool unique = false;
    bool required = false;
    bool ignoreNulls = false;
    bool foreign = false;      ///< belongs to a relationship
    std::string expression;    ///< of xBase indexes, as the file has it
    std::string condition;     ///< FOR of xBase indexes
    std::string cannotKeep;    ///< why this index cannot be kept right on writing; empty when it can
};

/// Bits of TableDef.Attributes; 0 is a plain local table.
inline constexpr std::uint32_t kSystemTableBits = 0x80000002u;
inline constexpr std::uint32_t kHiddenTableBit = 0x00000001u;
inline constexpr std::uint32_t kLinkedTableBit = 0x40000000u;
inline constexpr std::uint32_t kLinkedOdbcTableBit = 0x20000000u;

struct TableEntry {
    std::string name;
    std::uint32_t attributes = 0;
};

struct TableLayout {
    std::string name;
    std::uint32_t attributes = 0;
    std::vector<FieldDef> fields;
    std::vector<IndexDef> indexes;
    double dateCreated = 0;        ///< Date value, 0 when the format has none
    double lastUpdated = 0;
    std::string sourceTableName;   ///< of linked tables
    std::string validationRule;
    std::string validationText;
    std::string description;
    bool updatable = true;
    std::string whyNotUpdatable;   ///< words for people when `updatable` is false
};

}  // namespace velnor
