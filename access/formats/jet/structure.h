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
    explicit MapRecords(JetFile& file) : file_(file) {}
    RowPointer add();

private:
    JetFile& file_;
    PageNumber page_ = 0;
};

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
    void releaseMap(RowPointer record);

    JetFile& file_;
    Catalog& catalog_;
    TableByPage tables_;
};

/// Now, as the catalog keeps it.
double catalogTime();

}  // namespace velnor::jet
