// access/formats/jet/table_def.h - the definition of a table: columns, indexes, maps.
//
// A definition is one logical string of bytes, spread over a chain of pages. `parseTableDef` and
// `buildTableDef` work on the string alone; `readTableChain` and `writeTableChain` move it from and
// to its pages. What a definition holds beyond the fields named here is kept in `raw` blocks and
// written back as it was found.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/jet/jet_format.h"
#include "access/formats/jet/page_space.h"
#include "access/storage/code_page.h"

namespace velnor::jet {

struct Column {
    std::string name;
    std::uint8_t type = 0;
    std::uint8_t flags = 0;
    std::uint8_t moreFlags = 0;
    std::uint8_t precision = 0, scale = 0;  // Decimal only
    std::uint16_t id = 0;
    std::uint16_t variableSlot = 0;
    std::uint16_t ordinal = 0;
    std::uint16_t columnWord = 0;  // Jet 3
    std::uint16_t codePage = 0;    // Jet 3
    std::uint16_t fixedOffset = 0;
    std::uint16_t length = 0;
    SortOrder order;
    std::array<std::uint8_t, 25> raw{};

    bool fixed() const { return (flags & column_flag::kFixed) != 0; }
    bool longValue() const { return type == column_type::kMemo || type == column_type::kOle; }
    /// The engine counts: a Long with the flag, or a GUID with its own.
    bool autonumber() const
    {
        return (type == column_type::kLong && (flags & column_flag::kAutonumber)) ||
               (type == column_type::kGuid && (flags & column_flag::kAutoGuid));
    }
};

struct IndexColumn {
    std::uint16_t id = 0;
    bool descending = false;
};

/// A tree of keys; several logical indexes may share it.
struct RealIndex {
    std::vector<IndexColumn> columns;
    RowPointer map;
    PageNumber root = 0;
    std::uint8_t flags = 0;
    std::uint32_t entries = 0, distinct = 0;  // hints of the last compaction
    std::array<std::uint8_t, 52> raw{};

    bool unique() const { return flags & index_flag::kUnique; }
    bool ignoreNulls() const { return flags & index_flag::kIgnoreNulls; }
    bool required() const { return flags & index_flag::kRequired; }
};

enum class RelationKind : std::uint8_t { None = 0, Parent = 1, Child = 2, ChildWithoutIndex = 3 };
enum class LogicalKind : std::uint8_t { Ordinary = 0, Primary = 1, Foreign = 2 };

/// An index as people know it, or one end of a relationship.
struct LogicalIndex {
    std::string name;
    std::uint32_t number = 0;
    std::uint32_t realIndex = 0;
    RelationKind relation = RelationKind::None;
    std::int32_t otherIndex = -1;
    PageNumber otherTable = 0;
    std::uint8_t updateRule = 4, deleteRule = 4;
    LogicalKind kind = LogicalKind::Ordinary;
    std::array<std::uint8_t, 28> raw{};
};

struct LongValueMaps {
    std::uint16_t column = 0;
    RowPointer owned, space;
};

struct TableDef {
    std::uint8_t kind = 'N';  // 'S' for system tables
    std::uint32_t recordCount = 0;
    std::int32_t lastAutonumber = 0;
    std::uint16_t maxColumns = 0;       // ids ever given
    std::uint16_t variableColumns = 0;  // slots ever given
    RowPointer ownedMap, spaceMap;
    std::vector<Column> columns;  // in the order of the descriptors
    std::vector<RealIndex> realIndexes;
    std::vector<LogicalIndex> logicalIndexes;
    std::vector<LongValueMaps> longValues;
    std::vector<PageNumber> chain;  // the pages of the definition
    std::array<std::uint8_t, 63> raw{};

    PageNumber page() const { return chain.empty() ? 0 : chain.front(); }
    const Column* columnById(std::uint16_t id) const;
    const LongValueMaps* mapsOf(std::uint16_t columnId) const;
    /// Places in `columns` in the order in which people see the fields.
    std::vector<int> fieldOrder() const;
};

/// Names in a file: UTF-16LE with a word in front, or bytes of the code page with a byte.
struct NameCoding {
    const JetFormat& format;
    const CodePage& codePage;  // Jet 3

    std::string decode(std::span<const std::uint8_t> bytes) const;
    void append(std::string& out, std::string_view name) const;
};

/// Reads a definition from its logical string; 3274 when its counts don't fit its bytes.
TableDef parseTableDef(std::span<const std::uint8_t> bytes, const NameCoding& names);
/// The logical string, with its length and, in Jet 4, the free bytes of a one-page definition.
std::string buildTableDef(const TableDef& table, const NameCoding& names);

/// Collects the pages of a chain and their bytes. 3274 for a page of another kind, a loop, or a
/// chain of unlikely length. The length field is not believed: the whole chain is handed over.
std::vector<std::uint8_t> readTableChain(PageSpace& space, PageNumber first,
                                         std::vector<PageNumber>& chain);
/// Writes the string over the chain's pages; pages are allocated or released as its length asks.
void writeTableChain(PageSpace& space, std::string_view bytes, std::vector<PageNumber>& chain);

}  // namespace velnor::jet
