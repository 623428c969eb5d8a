// access/formats/jet/index_rules.h - what an index says of a record's key: whether it takes the
// key, leaves the record out, or refuses it. The same for a record that is written and for an index
// that is made over records.
#pragma once

#include <string>
#include <vector>

#include "access/formats/jet/index_keys.h"
#include "access/formats/jet/row_codec.h"
#include "access/formats/jet/table_def.h"

namespace velnor::jet {

/// The columns of an index, as fields of the table's rows and as parts of a key.
struct IndexPlan {
    std::vector<int> fields;  // of the row plan, in key order; -1 for a column that is not there
    std::vector<KeyColumn> keyColumns;

    IndexPlan() = default;
    IndexPlan(const TableDef& table, const RowPlan& rows, const RealIndex& index);
};

/// Whether a record has an entry under the key that was built last: one of Nulls alone may be left
/// out.
inline bool takesKey(const RealIndex& index, const KeyBuilder& keys)
{
    return !(index.ignoreNulls() && keys.allNull());
}

/// Refuses the key that was built last: 3058 for a Null where none may be, 3251 for a key that is
/// not known for sure although it would be written.
void requireKey(const RealIndex& index, const KeyBuilder& keys, const std::string& table);

/// 3022.
[[noreturn]] void refuseDuplicateKey(const std::string& table);

}  // namespace velnor::jet
