// access/formats/jet/rebuild.h - a database written anew into an empty file: what compacting and
// repairing have in common.
//
// Tables come one after the other, each with its records, long values and indexes. The catalog and
// the rights are tables among them, in which the pages of definitions are others now. Queries,
// relationships, forms and all other objects are records of tables, and come with them.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/catalog.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/salvage.h"
#include "access/formats/jet/table_copy.h"

namespace velnor::jet {

class Rebuild {
public:
    /// `to` was opened on freshPages of `from`. Damage is 3197.
    Rebuild(JetFile& from, JetFile& to);
    /// Of a damaged file: whatever can be read.
    Rebuild(JetFile& from, JetFile& to, Salvage& salvage, const ProblemSink& report);

    /// The copy is safe on the disk when it returns.
    void run();
    /// The page of a definition in the copy; 0 when the table did not come over.
    PageNumber newPageOf(PageNumber old) const;

private:
    void givePages();
    void copy(JetTable& table);
    std::optional<NumberChange> numbersOf(const JetTable& table);
    bool takesObject(std::int32_t id, const RecordField& field);
    bool soundProperties(std::span<const std::uint8_t> block) const;
    void breathe();

    JetFile& from_;
    JetFile& to_;
    Salvage* salvage_ = nullptr;
    ProblemSink report_;
    std::vector<std::shared_ptr<JetTable>> tables_;
    std::map<PageNumber, PageNumber> newPages_;
    std::set<std::int32_t> objects_;  // salvage: taken so far
    MapRecords maps_;
};

}  // namespace velnor::jet
