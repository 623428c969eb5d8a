// access/formats/jet/whole_change.h - a change of records, in one table or several, that is made as a
// whole or not at all.
//
// What fails half way, for damage or for want of room, is undone page by page, and what tables
// remember of their pages is forgotten. So nothing that it needs to undo can fail in its turn.
#pragma once

#include <memory>
#include <vector>

#include "access/formats/jet/jet_table.h"

namespace velnor::jet {

class WholeChange {
public:
    /// Of records of these tables, all of the same file.
    explicit WholeChange(std::vector<JetTable*> tables);

    template <class Change> void make(Change change)
    {
        try {
            change();
        } catch (...) {
            undo();
            throw;
        }
    }

private:
    struct Included {
        JetTable* table;
        JetTable::Numbers numbers;
    };
    static std::vector<Included> settled(const std::vector<JetTable*>& tables);
    void undo();

    JetFile& file_;
    std::vector<Included> tables_;
    FileSet::Savepoint savepoint_;
};

}  // namespace velnor::jet
