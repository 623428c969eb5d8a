// access/formats/jet/catalog.h - the objects of a database: the rows of MSysObjects, with their
// rights in MSysACEs.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/jet/jet_cursor.h"
#include "access/formats/jet/jet_table.h"
#include "access/formats/jet/properties.h"

namespace velnor::jet {

namespace object_type {
inline constexpr int kTable = 1, kDatabase = 2, kContainer = 3, kOdbcLink = 4, kQuery = 5,
                     kLink = 6, kRelationship = 8;
}

inline constexpr std::int32_t kTablesContainer = 0x0F000001;
inline constexpr std::int32_t kDatabasesContainer = 0x0F000002;
inline constexpr std::int32_t kRelationshipsContainer = 0x0F000003;
inline constexpr std::int32_t kRootContainer = 0x0F000000;
inline constexpr std::int32_t kDatabaseObject = 0x10000000;

/// One row of MSysObjects.
struct CatalogEntry {
    std::string name;
    std::int32_t id = 0;  // tables: page of the definition
    std::int32_t parent = 0;
    int type = 0;
    std::uint32_t flags = 0;
    double created = 0, updated = 0;
    std::string foreignName, database;  // of links: the table's name there, and the file
    RowId row = 0;

    bool table() const { return type == object_type::kTable; }
    bool link() const { return type == object_type::kLink || type == object_type::kOdbcLink; }
    /// Bits of TableDef.Attributes.
    std::uint32_t attributes() const;
};

class Catalog {
public:
    /// 3343 when the table of objects cannot be read.
    explicit Catalog(JetFile& file);

    /// Tables and links in the order of their names.
    std::vector<const CatalogEntry*> tables();
    /// A table or link by its name, blind to case; null when there is none.
    const CatalogEntry* find(std::string_view name);
    /// Every object of the file, in the order of the rows.
    const std::vector<CatalogEntry>& objects();
    /// The property block of an object; an empty one when it has none or it is damaged.
    PropertyBlock properties(const CatalogEntry& entry);
    /// The table of objects itself.
    std::shared_ptr<JetTable> objectTable() { return objects_; }
    /// A system table by its catalog name; 3343 when it is missing.
    std::shared_ptr<JetTable> systemTable(std::string_view name);

    /// The rows changed: they are read anew when asked for.
    void forget() { known_ = false; }
    void reload();
    void saveCounts();

private:
    void read();
    int field(std::string_view name) const;

    JetFile& file_;
    std::shared_ptr<JetTable> objects_;
    std::map<std::string, std::shared_ptr<JetTable>, std::less<>> systemTables_;
    bool known_ = false;
    std::vector<CatalogEntry> rows_;
    std::map<std::string, std::size_t, std::less<>> byName_;  // folded
};

/// The field of a table by its name, blind to case; -1 when there is none.
int fieldNamed(const JetTable& table, std::string_view name);

}  // namespace velnor::jet
