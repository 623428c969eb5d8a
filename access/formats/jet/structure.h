// access/formats/jet/structure.h - making and deleting tables: pages, maps, the catalog and its
// rights.
#pragma once

#include <string>
#include <vector>

#include "access/formats/jet/catalog.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/relations.h"
#include "access/layout.h"

namespace velnor::jet {

/// Gives records for new maps, on pages of map records.
class MapRecords {
public:
    /// `page` is tried first: the one of the table's other maps.
    explicit MapRecords(JetFile& file, PageNumber page = 0) : file_(file), page_(page) {}
    RowPointer add();

private:
    JetFile& file_;
    PageNumber page_;
};

/// Deletes a map's record and frees the pages that the map itself uses.
void releaseMap(JetFile& file, RowPointer record);

/// Gives an index of the table `owner` its map and an empty tree.
void layIndex(JetFile& file, MapRecords& maps, PageNumber owner, RealIndex& index);

class Structure {
public:
    Structure(JetFile& file, Catalog& catalog, TableByPage tables)
        : file_(file), catalog_(catalog), tables_(std::move(tables))
    {
    }

    void createTable(const TableLayout& layout);
    /// 3251 for system tables and ends of relationships.
    void dropTable(const CatalogEntry& entry, JetTable& table);

private:
    /// Whose a new object is, as bytes of the catalog's Owner and SID fields.
    struct Accounts {
        std::string owner, admin, users;
    };
    PageNumber writeDefinition(const TableLayout& layout);
    void addObject(const TableLayout& layout, PageNumber page, const Accounts& accounts);
    void addRights(PageNumber page, const Accounts& accounts);
    Accounts accounts();
    std::vector<RowId> rightsOf(std::int32_t object);
    std::string bytesOf(JetTable& table, RowId row, const char* field);

    JetFile& file_;
    Catalog& catalog_;
    TableByPage tables_;
};

/// Now, as the catalog keeps it.
double catalogTime();

}  // namespace velnor::jet
