// access/formats/jet/cascade.h - changes of related records that follow from one record's change.
//
// 1. Everything that follows is found first, in all tables, and may still refuse the whole.
// 2. Then it is made, the last found first: so that no record is without its parent.
// 3. When making it fails, the records changed so far get their old values back. (A record that was
//    deleted comes back only with the rollback of a commit that fails; deleting fails for nothing
//    but damage.)
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
    bool empty() const { return steps_.empty(); }
    /// Makes the changes.
    void run();
    /// Gives changed records their old values back.
    void undo() noexcept;

private:
    struct Step {
        LinkedChange change;
        std::vector<std::pair<int, Value>> before;
        bool done = false;
    };
    JetWriter& writerOf(PageNumber table);
    void apply(Step& step, const std::vector<std::pair<int, Value>>& fields);

    TableByPage tables_;
    std::map<PageNumber, std::unique_ptr<JetWriter>> writers_;
    std::set<std::pair<PageNumber, std::uint32_t>> removed_;
    std::set<std::tuple<PageNumber, std::int32_t, std::uint32_t>> changed_;  // by end
    std::vector<Step> steps_;
};

}  // namespace velnor::jet
