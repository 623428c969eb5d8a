// access/sql/plain_walk.h - statements for which the machine does nothing with a record but give
// its columns: their records can be taken from the table's road without it.
//
// The machine's own program says so, not the statement: conditions and orders that the road does
// not keep by itself would be steps in the program's loop.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;

namespace velnor::sql {

struct PlainWalk {
    static constexpr int kRecordName = -1;
    std::vector<int> columns;  ///< of the table as it was declared, in the order of the answer
    std::int64_t most = -1;    ///< records that are given at most; -1: all
};

/// The walk that `sql` over one table is; nothing when it is more, or not understood.
std::optional<PlainWalk> plainWalkOf(sqlite3* db, const std::string& sql);
/// Whether the machine asks a table for a column in front of `bound`.
bool asksColumnsBelow(sqlite3* db, const std::string& sql, int bound);

}  // namespace velnor::sql
