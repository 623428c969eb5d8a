// access/formats/xbase/table_rewrite.h - a table written anew: fields come and go, deleted records
// go, memos close up.
//
// 1. The new files are written beside the old ones as siblings; the old table is untouched until
// all
//    of them are whole. Then table, memo file and indexes are exchanged together.
// 2. Record numbers stay, unless deleted records are left out.
// 3. The memo file is left alone while its memos stay where they are.
// 4. Every index is built from the new records. An index that nobody here can build refuses all.
#pragma once

#include <string>

#include "access/formats/driver.h"
#include "access/formats/xbase/dbf_table.h"
#include "access/formats/xbase/table_plan.h"

namespace velnor::xbase {

enum class RewriteKind {
    Fields,  ///< all records, the memo file as it is
    Pack,    ///< without deleted records; a memo file without gaps
    Repair,  ///< all records, memos that are there, indexes that can be built
};

/// 3800 when an index cannot be built anew, 3022 when two records have one key in an index that
/// refuses that; but a repair leaves such an index out, and reports what is lost. The caller closes
/// `table` afterwards: its files are others now.
void rewriteTable(DbfTable& table, const TablePlan& plan, RewriteKind kind,
                  const ProblemSink* report = nullptr);

}  // namespace velnor::xbase
