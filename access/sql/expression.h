// access/sql/expression.h - a part of a statement that has a value, as it is handed on.
#pragma once

#include <cstddef>
#include <string>

#include "access/layout.h"
#include "access/sql/plain_value.h"

namespace velnor::sql {

struct Expression {
    std::string sql;  ///< closed in itself: may stand beside any operator
    SqlType type = SqlType::Unknown;
    std::size_t at = 0;      ///< where it begins in the statement
    bool condition = false;  ///< gives 1, 0 or Null; as a value True is -1
    bool ordered = false;  ///< a column of a table: texts compare in the right order by themselves
    bool textConstant = false;
    std::string constant;             ///< the text of a text constant
    std::string exact;                ///< of a column: how its exact value is read; may be empty
    std::string name;                 ///< of a column: its name
    const FieldDef* field = nullptr;  ///< of a column of a table
    int table = -1;  ///< of a column of a table: which use of a table, and which field
    int position = -1;
};

}  // namespace velnor::sql
