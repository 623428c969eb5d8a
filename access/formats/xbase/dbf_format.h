// access/formats/xbase/dbf_format.h - what differs between the versions of a DBF file, as data.
//
// The version byte picks one DbfFormat for reading; the connect word picks one NewTableForm for
// making.
#pragma once

#include <cstdint>
#include <string_view>

namespace velnor::xbase {

enum class MemoForm : std::uint8_t {
    None,
    DbtIII,   ///< blocks of 512 bytes, a memo ends at 0x1A
    DbtIV,    ///< block size in the header, length in front of each memo
    Fpt,      ///< numbers big-endian, type and length in front of each memo
    Unknown,  ///< kinds whose memo file nobody here reads: memo fields are Null
};

/// Where things stand in the header of one family of versions.
struct HeaderShape {
    std::uint16_t firstDescriptor;
    std::uint8_t descriptorSize;
    std::uint8_t nameSize;
    std::uint8_t typeAt, lengthAt, decimalsAt;  ///< in a descriptor
    std::uint8_t flagsAt;                       ///< 0: the family has no field flags
    std::uint8_t autonumberAt;                  ///< 0: none; a 4-byte number
    std::uint8_t stepAt;                        ///< 0: always 1
    std::uint16_t languageNameAt;               ///< 0: none; 32 bytes
    std::uint8_t productionIndexAt;             ///< 0: none; in a descriptor
    bool wideTexts;                             ///< decimals of C are the high byte of its length
};

/// One family of version bytes.
struct DbfFormat {
    std::string_view words;  ///< for people
    const HeaderShape* shape;
    MemoForm memo;   ///< of a table with memo fields
    bool fox;        ///< a FoxPro kind: refused by the dBASE words
    bool visualFox;  ///< B is a double, I little-endian, field flags count
    bool level7;     ///< I big-endian with its sign bit turned
    bool two;        ///< dBASE II: another head, read only
    int fallbackCodePage;
};

/// The format of a version byte; null when no kind of table has it.
const DbfFormat* formatOfVersion(std::uint8_t version);

/// How a connect word makes new tables.
struct NewTableForm {
    std::string_view connectWord;
    std::uint8_t plainVersion, memoVersion, autonumberVersion;
    MemoForm memo;
    bool fox;  ///< the word opens and makes FoxPro kinds
    bool visualFox;
    bool binaryFields;  ///< G fields are known
    std::uint8_t languageMark;
    int codePage;
    int maxFields;
    int maxRecordBytes;
    int maxNumberWidth;
};

/// The form of a connect word ("dBASE 5.0;"); null when it is none of ours.
const NewTableForm* formOfConnectWord(std::string_view word);

}  // namespace velnor::xbase
