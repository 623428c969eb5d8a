// access/formats/jet/rebuild.h - a database written anew into an empty file: what compacting and
// repairing have in common.
//
// Tables come in the order of the catalog, each with its records, long values and indexes; the
// catalog and the rights last of the work on them, since the pages of definitions are others now.
// Queries, relationships, forms and all other objects are records of tables, and come with them.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/catalog.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/table_copy.h"

namespace velnor::jet {

class Rebuild {
public:
    /// `to` was opened on freshPages of `from`. Without `salvage` damage is 3197.
    Rebuild(JetFile& from, JetFile& to, bool salvage, const ProblemSink& report);

    void run();

    /// "table" and index of those that could not be made; they stand empty in the new file.
    struct LostIndex {
        std::string table, index;
    };
    const std::vector<LostIndex>& lostIndexes() const { return lostIndexes_; }

private:
    struct Table {
        std::shared_ptr<JetTable> from;
        PageNumber to = 0;
    };
    void openTables();
    void givePages();
    void copy(const Table& table);
    std::optional<NumberChange> numbersOf(const JetTable& table) const;
    PageNumber newPageOf(PageNumber old) const;
    void breathe();

    JetFile& from_;
    JetFile& to_;
    bool salvage_;
    const ProblemSink& report_;
    Catalog catalog_;
    std::vector<Table> tables_;
    std::map<PageNumber, PageNumber> newPages_;
    MapRecords maps_;
    std::vector<LostIndex> lostIndexes_;
};

}  // namespace velnor::jet
