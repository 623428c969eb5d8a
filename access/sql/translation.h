// access/sql/translation.h - a SELECT statement in people's words, checked and turned into what the
// statement machine runs.
//
// The dialect: [names in brackets], `*` `?` `#` `[a-z]` in LIKE, `&`, #m/d/yyyy#, True and False,
// TOP, DISTINCTROW, joins, GROUP BY, UNION, subqueries, and the functions of functions.h. Names are
// found and constants checked here, so that errors are told with their place:
// 3075 syntax, 3131 syntax in FROM, 3061 unknown field, 3078 unknown table, 3079 a field of more
// than one table, 3464 values of different types, 3085 unknown function, 3122 a field outside the
// groups, 3096 an aggregate in WHERE, 3307 UNION of different widths.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/sql/grouping.h"
#include "access/sql/source_table.h"

namespace velnor::sql {

struct OutputColumn {
    FieldDef field;
    bool exact = false;  ///< comes in the form of exactValue()
};

struct Translation {
    /// Table n of `tables` is called v<n>, its fields c0, c1 ...
    std::string sql;
    std::vector<std::shared_ptr<SourceTable>> tables;
    std::vector<OutputColumn> columns;

    /// TOP with ORDER BY: the records that follow while their last `tieColumns` values equal those
    /// of record number `top` belong to the answer.
    std::optional<std::int64_t> top;
    std::optional<double> topPercent;
    std::string countSql;  ///< with topPercent: counts the records
    int tieColumns = 0;

    /// Fields of one table as they are: the same statement for the names of its records alone, and
    /// the field of each column.
    std::string recordsSql;
    std::vector<int> fieldOfColumn;

    /// Groups of one table: the same statement for a table that gives groups in place of records.
    std::optional<Grouping> grouping;
};

bool isSelect(std::string_view source);
Translation translate(std::string_view statement, Tables& tables);

}  // namespace velnor::sql
