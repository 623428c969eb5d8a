// access/model/query_source.h - a Recordset's records from a SELECT statement: for reading only.
#pragma once

#include <memory>

#include "access/model/query_result.h"
#include "access/model/query_tables.h"
#include "access/model/record_source.h"

namespace velnor::model {

/// A snapshot of a whole table: which records it has is settled, their names are kept and no
/// copies; 3078 when there is no such table.
std::unique_ptr<RecordSource> openSnapshot(DatabaseState& database, std::string_view table);

/// The statement is checked, and runs as far as its first record.
std::unique_ptr<RecordSource> openQuery(DatabaseState& database, std::string_view statement,
                                        RecordsetType type);

}  // namespace velnor::model
