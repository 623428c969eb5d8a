// access/sql/grouping.h - a statement over one table whose fields are those of its groups and
// functions over them, in the form in which the table gives groups in place of records.
//
// The table has further columns then, behind those of its fields: k0, k1 ... the keys in their
// plain form, x0, x1 ... in the exact one, g0, g1 ... the functions. The statement names no other
// columns but in WHERE, and the table must settle WHERE by itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velnor::sql {

enum class Aggregate : std::uint8_t {
    Count,
    Sum,
    Average,
    StDev,
    StDevP,
    Var,
    VarP,
    Min,
    Max,
    First,
    Last,
};

struct GroupFunction {
    static constexpr int kRecords = -1;
    Aggregate kind;
    int field = kRecords;  ///< of the table; Count alone may have none
    bool operator==(const GroupFunction&) const = default;
};

struct Grouping {
    std::vector<int> keys;  ///< fields; none: all records are one group
    std::vector<GroupFunction> functions;
    std::string sql;
};

}  // namespace velnor::sql
