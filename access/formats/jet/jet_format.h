// access/formats/jet/jet_format.h - every offset and limit that differs between Jet 3 and Jet 4, as
// data.
//
// Code takes a `const JetFormat&` and never asks which version it works on; where the two differ in
// more than a number, a field here says how (`wideText`, `wideRows`). Offsets count from the start
// of the page or block named; -1 marks what a version does not have.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace velnor::jet {

using PageNumber = std::uint32_t;

/// Type bytes of pages (byte 0).
namespace page_type {
inline constexpr std::uint8_t kHeader = 0, kData = 1, kTableDef = 2, kIndexNode = 3, kIndexLeaf = 4,
                              kMap = 5, kFreedTableDef = 8, kFreed = 9;
}

/// Type codes of columns.
namespace column_type {
inline constexpr std::uint8_t kBoolean = 1, kByte = 2, kInteger = 3, kLong = 4, kCurrency = 5,
                              kSingle = 6, kDouble = 7, kDate = 8, kBinary = 9, kText = 10,
                              kOle = 11, kMemo = 12, kGuid = 15, kDecimal = 16;
}

/// Flags of columns.
namespace column_flag {
inline constexpr std::uint8_t kFixed = 0x01, kAlwaysSet = 0x02, kAutonumber = 0x04, kSystem = 0x10,
                              kOwner = 0x20, kAutoGuid = 0x40, kHyperlink = 0x80;
inline constexpr std::uint8_t kCompressed = 0x01;  // in the second flag byte
}  // namespace column_flag

/// Flags of real indexes.
namespace index_flag {
inline constexpr std::uint8_t kUnique = 0x01, kIgnoreNulls = 0x02, kRequired = 0x08, kJet4 = 0x80;
}

/// Bits of an entry of a data page's row table.
namespace row_flag {
inline constexpr std::uint16_t kHidden = 0x8000;  // deleted, or the target of a move
inline constexpr std::uint16_t kMoved = 0x4000;   // the row holds a pointer to its new place
inline constexpr std::uint16_t kDeleted = 0xC000;
inline constexpr std::uint16_t kOffset = 0x1FFF;
}  // namespace row_flag

/// Page 0. What stands from `maskedFrom` on, `maskedBytes` long, is masked (page_codec.h).
struct HeaderLayout {
    std::uint8_t versionByte;  // at 0x14
    int maskedFrom, maskedBytes;
    int globalMap, releasedMap;  // row pointers
    int systemPages;             // four page numbers
    int columnWord;              // Jet 3: the word that columns repeat at +7; -1
    int lcid, sortId, sortVersion;
    int codePage;
    int key;
    int password, passwordBytes;
    int build;
    int created;         // double, -1 in Jet 3
    int commitCounters;  // 256 words
};

struct DataPageLayout {
    int freeBytes, owner, longValueStamp /* -1 in Jet 3 */, rowCount, rowTable;
};

/// The definition of a table; offsets in the logical string.
struct TableDefLayout {
    int pageFree;  // Jet 4: free bytes of the first page; Jet 3: "VC"
    int nextPage, length;
    int magic;  // 1625, -1 in Jet 3
    int recordCount, lastAutonumber, increment /* -1 */;
    int kind;  // 'N' or 'S'
    int maxColumns, variableColumns, columns, logicalIndexes, realIndexes;
    int ownedMap, spaceMap;
    int statistics, statisticBytes;  // one item a real index
    int chainHeader;                 // bytes in front of the data of each further page
};

/// One column descriptor; offsets in it.
struct ColumnLayout {
    int bytes;
    int type, magic /* -1 */, id, variableSlot, ordinal;
    int columnWord;                 // Jet 3; -1
    int lcid, sortId, sortVersion;  // the last two -1 in Jet 3
    int codePage;                   // Jet 3; -1
    int precision, scale;
    int flags, moreFlags /* -1 */;
    int fixedOffset, length;
};

/// One real index; offsets in its block.
struct RealIndexLayout {
    int bytes;
    int magic;    // 1923, -1 in Jet 3
    int columns;  // ten times id word and direction byte
    int map, root, flags, flagBytes;
    std::uint8_t alwaysFlags;
};

/// One logical index; offsets in its block.
struct LogicalIndexLayout {
    int bytes;
    int magic;  // 1625, -1 in Jet 3
    int number, realIndex, relationKind, otherIndex, otherTable, updateRule, deleteRule, kind;
};

struct IndexPageLayout {
    int freeBytes, owner, previous, next, tail;
    int prefix, prefixBytes;  // 1 in Jet 3
    int level;
    int mask, maskBytes;
    int entries, entryBytes;  // the entry area
};

struct RowLayout {
    bool wide;     // words for the column count, the slot count and the offsets, else bytes with a
                   // jump table
    int maxBytes;  // of a row
};

struct LongValueLayout {
    int maxInline;      // bytes kept in the row
    int maxSingle;      // bytes of a value that has a row of its own
    int chunk;          // bytes of data in one row of a chain
    int maxCompressed;  // plain bytes up to which a Memo is compressed (Jet 4)
};

struct MapLayout {
    int inlineBytes;         // bitmap of a new inline map
    int references;          // page pointers of a reference map
    std::uint32_t pageBits;  // pages that one map page covers
};

struct JetFormat {
    int version;  // 3 or 4, for people
    std::uint32_t pageSize;
    std::uint64_t maxFileBytes;
    bool wideText;  // UTF-16LE, names counted by a word; else code page bytes, counted by a byte
    int maxBinary;  // bytes of a Binary field
    std::array<char, 4> propertySignature;
    HeaderLayout header;
    DataPageLayout data;
    TableDefLayout table;
    ColumnLayout column;
    RealIndexLayout realIndex;
    LogicalIndexLayout logicalIndex;
    IndexPageLayout indexPage;
    RowLayout row;
    LongValueLayout longValue;
    MapLayout map;
};

extern const JetFormat kJet3;
extern const JetFormat kJet4;

inline constexpr int kMaxColumns = 255;
inline constexpr int kMaxIndexes = 32;
inline constexpr int kMaxIndexColumns = 10;
inline constexpr int kMaxRowsPerPage = 255;
inline constexpr std::uint32_t kMaxLongValue = 0x3FFFFFFF;
inline constexpr std::uint32_t kTableMagic = 1625;
inline constexpr std::uint32_t kIndexMagic = 1923;
/// Owner field of long-value pages: "LVAL".
inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;
inline constexpr PageNumber kCatalogPage = 2;

/// A row's address: page and slot. In files: slot in the low byte, page above it.
struct RowPointer {
    PageNumber page = 0;
    std::uint8_t slot = 0;

    static constexpr RowPointer fromWord(std::uint32_t word)
    {
        return {word >> 8, static_cast<std::uint8_t>(word)};
    }
    constexpr std::uint32_t word() const { return page << 8 | slot; }
    constexpr bool isNull() const { return page == 0; }
    friend constexpr bool operator==(RowPointer, RowPointer) = default;
};

/// The sort order of a text column.
struct SortOrder {
    std::uint16_t lcid = 1033;
    std::uint8_t id = 0;
    std::uint8_t version = 0;
    friend constexpr bool operator==(const SortOrder&, const SortOrder&) = default;
};

}  // namespace velnor::jet
