// access/formats/jet/check_rows.h - the check of a table's data pages, records and long values.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "access/formats/jet/check_context.h"
#include "access/formats/jet/jet_table.h"

namespace velnor::jet {

/// What the records of a table say about other parts of the file.
struct RowFacts {
    std::int64_t records = 0;
    std::vector<std::int64_t> entries;  ///< by real index: records that belong in it
};

/// Claims the table's data and long-value pages and reads every record.
RowFacts checkRows(CheckContext& context, JetTable& table, const std::string& where);

}  // namespace velnor::jet
