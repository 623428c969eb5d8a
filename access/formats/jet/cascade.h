// access/formats/jet/cascade.h - changes of related records that follow from one record's change.
//
// 1. Everything that follows is found first, in all tables, and may still refuse the whole.
// 2. Then it is made, the last found first: so that no record is without its parent.
// 3. When making it fails, whoever asked for it undoes all of it (whole_change.h).
#pragma once

#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "access/formats/jet/relations.h"

namespace velnor::jet {

class JetWriter;

class Cascade {
public:
    explicit Cascade(TableByPage tables);
    ~Cascade();

    /// Finds what follows from changes of a record of `table`, which is changed itself by others.
    void plan(PageNumber table, RowPointer self, std::vector<LinkedChange> first);
    /// The tables that it changes.
    void addTables(std::vector<JetTable*>& tables) const;
    /// Makes the changes.
    void run();

private:
    JetWriter& writerOf(PageNumber table);
    void apply(const LinkedChange& change);

    TableByPage tables_;
    std::map<PageNumber, std::unique_ptr<JetWriter>> writers_;
    std::set<std::pair<PageNumber, std::uint32_t>> removed_;
    std::set<std::tuple<PageNumber, std::int32_t, std::uint32_t>> changed_;  // by end
    std::vector<LinkedChange> steps_;
};

}  // namespace velnor::jet
