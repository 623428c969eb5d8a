// access/formats/xbase/dbf_header.h - the head of a DBF file: lengths, marks and fields.
//
// Reading forgives what real files do: no 0x0D behind the fields, rubbish behind names and in
// unused bytes, a record length without the flag byte. What it got around is kept in `oddities`.
// What cannot be read at all is EngineError 3274.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "access/formats/xbase/dbf_format.h"
#include "access/layout.h"
#include "access/storage/code_page.h"

namespace velnor::xbase {

/// How the bytes of a field are read and written.
enum class Coding : std::uint8_t {
    Character,  ///< padded with blanks
    Number,     ///< decimal text, right-justified
    Logical,
    Day,  ///< YYYYMMDD
    MemoText,
    MemoBytes,
    RealLE,     ///< Visual FoxPro B
    IntegerLE,  ///< Visual FoxPro I
    MoneyLE,    ///< Visual FoxPro Y
    MomentLE,   ///< Visual FoxPro T: Julian day, milliseconds
    Varchar,
    Varbinary,
    Integer7,  ///< level 7 I and +
    Real7,     ///< level 7 O
    Moment7,   ///< level 7 @: milliseconds since the day before 0001-01-01
    Raw,       ///< anything else: its bytes, never written
};

struct DbfField {
    std::string name;  ///< UTF-8; two fields may have the same
    char letter = 'C';
    Coding coding = Coding::Character;
    std::uint8_t decimals = 0;
    std::uint8_t flags = 0;
    bool autonumber = false;
    std::uint8_t step = 1;     ///< of the autonumber
    std::uint32_t offset = 0;  ///< in the record
    std::uint32_t length = 0;
    std::int32_t nullBit = -1;       ///< in the null flags; -1: cannot be Null by flag
    std::int32_t lengthBit = -1;     ///< of Varchar and Varbinary
    std::uint32_t nextNumber = 0;    ///< of an autonumber
    std::uint32_t nextNumberAt = 0;  ///< where it stands in the header
    std::uint32_t descriptorAt = 0;  ///< where its descriptor stands in the header

    bool isMemo() const { return coding == Coding::MemoText || coding == Coding::MemoBytes; }
    std::string nativeType() const;  ///< "N(12,2)", "M"
};

/// Something in a file that is not as it should be, and was got around.
struct Oddity {
    std::string text;
    bool harmless = false;
};

struct DbfHeader {
    const DbfFormat* format = nullptr;
    const CodePage* codePage = nullptr;
    std::uint8_t version = 0;
    std::uint8_t tableFlags = 0;
    std::uint8_t languageMark = 0;
    std::string languageName;          ///< level 7
    int year = 0, month = 0, day = 0;  ///< of the last update; year 0: the bytes are no date
    std::uint32_t statedRecords = 0;
    std::uint32_t headerLength = 0;
    std::uint32_t recordLength = 0;
    std::uint32_t endOfFields = 0;  ///< where the mark behind the last field stands, or should
    std::vector<DbfField> fields;   ///< those that are shown, in the order of the record
    std::vector<DbfField> hidden;   ///< system columns but the null flags; their bytes are kept
    std::uint32_t nullFlagsOffset = 0;
    std::uint32_t nullFlagsLength = 0;  ///< 0: no such column
    std::vector<Oddity> oddities;

    bool hasMemoField() const;
    bool saysProductionIndex() const { return tableFlags & 1; }
    /// Where records from number `records` on would stand.
    std::uint64_t offsetOf(std::uint64_t recordNumber) const
    {
        return headerLength + (recordNumber - 1) * recordLength;
    }
};

/// The length of a header by its first 32 bytes; 3274 when it cannot be one.
std::uint32_t headerLengthOf(std::span<const std::uint8_t> first, std::uint64_t fileBytes);

/// `bytes`: the whole header. `codePage`: what the user asked for, may be empty.
DbfHeader readHeader(std::span<const std::uint8_t> bytes, std::uint64_t fileBytes,
                     const std::string& codePage);

/// What the engine says of a field.
FieldDef fieldDefOf(const DbfField& field);

}  // namespace velnor::xbase
