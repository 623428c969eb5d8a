// access/formats/paradox/file_header.h - the header that all files of a table begin with: the table
// (DB), its primary index (PX), its secondary indexes (X) and their indexes (Y).
//
// Numbers in headers are little-endian. Data files (DB and X) of version 5 and later have a second
// header behind the first. What a header says about blocks and records is a hint after a crash; see
// RecordChain.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/paradox/field_type.h"
#include "access/storage/code_page.h"
#include "access/storage/page_file.h"

namespace velnor::paradox {

inline constexpr std::uint32_t kMostBlocks = 0xFFFF;
inline constexpr std::size_t kFirstHeader = 0x58;

enum class FileKind : std::uint8_t {
    KeyedTable = 0,
    PrimaryTree = 1,  ///< PX
    PlainTable = 2,   ///< no primary key
    LooseSingle = 3,  ///< Xnn that nobody keeps right
    SingleTree = 4,   ///< Ynn
    KeptSingle = 5,   ///< Xnn
    LooseGroup = 6,   ///< XGn that nobody keeps right
    GroupTree = 7,    ///< YGn
    KeptGroup = 8,    ///< XGn
};

/// Options of a secondary index, header byte 55.
inline constexpr std::uint8_t kBlindToCase = 0x01, kDescending = 0x10, kUnique = 0x20;
/// Added to the number of a field that sorts descending.
inline constexpr std::uint16_t kFieldDescends = 0x8000;

struct FileHeader {
    FileKind kind = FileKind::PlainTable;
    std::uint8_t version = 0x0B;  ///< 3, 4: level 3; 5 to 9: 4; A, B: 5; C: 7
    std::uint16_t recordSize = 0;
    std::uint16_t headerSize = 0;  ///< bytes; the blocks follow
    std::uint16_t realSize = 0;    ///< bytes really used in the header
    std::uint32_t blockBytes = 2048;
    std::uint32_t records = 0;  ///< trees: the entries of all levels
    std::uint16_t usedBlocks = 0;
    std::uint16_t fileBlocks = 0;  ///< used and free ones
    std::uint16_t firstBlock = 0;
    std::uint16_t lastBlock = 0;  ///< its number
    std::uint16_t firstFree = 0;
    std::uint16_t serial = 3;
    std::uint8_t writing = 0;     ///< not 0: a writer died
    std::uint8_t indexField = 0;  ///< X: ordinal of the first indexed field
    std::uint16_t root = 0;
    std::uint8_t levels = 0;
    std::uint16_t keyFields = 0;
    std::uint32_t cipherKey = 0;  ///< 0: plain
    /// 40: of tables with a password, an address in a program of the past. The one behind it is as
    /// many bytes further as the table has fields.
    std::uint32_t cipherAddress = 0;
    std::uint8_t sortByte = 0;
    std::uint8_t link = 0;            ///< 2C: trees: ties them to their data file; X: FF
    std::uint8_t dataStamp = 0;       ///< 2D: changes with the records
    std::uint8_t structureStamp = 0;  ///< 2E: changes with the fields
    std::uint8_t parentLink = 0;      ///< 2F: X: ties it to the table
    bool writeProtected = false;
    std::uint16_t statedMostBlocks = 0;
    std::uint8_t auxPasswords = 0;
    std::uint32_t lastNumber = 0;  ///< the last autonumber given out
    std::uint8_t options = 0;      ///< 55
    std::uint16_t nextFieldId = 0;
    std::uint16_t codePageNumber = 0;  ///< as stored; 0 when the file has none
    std::uint16_t childMark = 0x0101;  ///< 6C
    std::string storedTableName;
    std::string sortName;  ///< of the sort order; empty before version 5
    std::string label;     ///< of an XG: the name of the index
    std::vector<StoredField> fields;
    const CodePage* codePage = nullptr;
    std::vector<std::string> oddities;  ///< for check and info

    bool isTable() const { return kind == FileKind::KeyedTable || kind == FileKind::PlainTable; }
    bool isTree() const
    {
        return kind == FileKind::PrimaryTree || kind == FileKind::SingleTree ||
               kind == FileKind::GroupTree;
    }
    bool isGroup() const { return kind == FileKind::KeptGroup || kind == FileKind::LooseGroup; }
    bool isKept() const { return kind == FileKind::KeptSingle || kind == FileKind::KeptGroup; }
    bool hasSecondHeader() const { return !isTree() && version >= 5; }
    bool hasLongFields() const;
    /// Bytes of the key at the start of a record: of the key fields, or of a tree's fields.
    std::size_t keyLength() const;
    bool hasTextKey() const;
    std::size_t recordsPerBlock() const { return (blockBytes - 6) / recordSize; }
};

/// The longest name of a table that a header of this version stores, its closing zero included.
constexpr std::size_t storedNameBytes(std::uint8_t version)
{
    return version >= 0x0C ? 261 : 79;
}

/// Reads and tests the header of a file of `fileSize` bytes; 3274 when it is none. `codePage`
/// overrides what the file says; 3001 when there is no such page.
FileHeader readHeader(PageFile& file, std::string_view codePage);

/// Lays out the variable part: sets the places of the fields, realSize and headerSize. 3047 when a
/// record or the header would be too large.
void layOutHeader(FileHeader& header);
/// The whole header of a new file.
std::vector<std::uint8_t> headerBytes(const FileHeader& header);
/// Writes what changes with the records: counts, blocks, stamps, tree, autonumber.
void storeCounters(const FileHeader& header, PageFile& file);

/// The stamp that an index has when it is as old as its data file. `stamp`: of the data file.
std::uint8_t linkOf(std::uint8_t stamp, std::uint8_t sortByte);
/// The next of a stamp's values 1 to 255.
constexpr std::uint8_t nextStamp(std::uint8_t stamp)
{
    return stamp == 255 ? 1 : static_cast<std::uint8_t>(stamp + 1);
}

/// The size of the blocks of a new table: the smallest in which three records fit.
std::uint32_t blockBytesFor(std::size_t recordSize);
/// The code page by number with the format's own numbers; null when we do not know it.
const CodePage* codePageNumbered(int number);

}  // namespace velnor::paradox
