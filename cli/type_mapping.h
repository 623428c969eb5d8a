// cli/type_mapping.h - what the fields of a table become in another format, shown without writing.
#pragma once

#include <vector>

#include "cli/new_table.h"

namespace velnor::cli {

struct MappedFields {
    Recordset& rows;                 ///< of the source
    const std::vector<int>& fields;  ///< the source's field of each field of the new table
};

/// Makes the table on files in memory, reads back what came of it, and prints it. Gives the exit
/// code.
int showMapping(Context& context, const Target& target, const TableLayout& layout,
                const MappedFields& mapped, bool json);

}  // namespace velnor::cli
