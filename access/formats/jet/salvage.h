// access/formats/jet/salvage.h - what a damaged file still holds: its tables, and the pages of
// each.
//
// Tables are those of the catalog whose definitions can be read, and definitions that the catalog
// does not know of but whose records are there. Pages are told by the owner they name, not by the
// maps. Only the memory's copy of the damaged file is changed here, never the file.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/catalog.h"
#include "access/formats/jet/jet_file.h"

namespace velnor::jet {

class Salvage {
public:
    Salvage(JetFile& file, const ProblemSink& report);

    struct Table {
        std::shared_ptr<JetTable> table;
        bool enlisted = true;  // the catalog knows of it
    };
    std::vector<Table>& tables() { return tables_; }
    /// Pages of a table's records, in ascending order.
    const std::vector<PageNumber>& pagesOf(PageNumber definition) const;

private:
    void mendSystemTables();
    void layDefinition(PageNumber page, TableDef def);
    std::string systemName(PageNumber page);
    void findPages();
    void openEnlisted();
    void openUnlisted();
    void mendRelations();
    std::shared_ptr<JetTable> tryOpen(PageNumber page, const std::string& name);
    void tell(const std::string& where, const std::string& text, bool harmless);

    JetFile& file_;
    const ProblemSink& report_;
    std::vector<Table> tables_;
    std::map<PageNumber, std::vector<PageNumber>> pages_;  // by owner
    std::vector<PageNumber> definitions_;                  // first pages of what looks like one
};

}  // namespace velnor::jet
