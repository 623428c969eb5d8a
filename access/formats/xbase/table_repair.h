// access/formats/xbase/table_repair.h - puts a damaged table right: what can be read of it is
// written anew, with its indexes. The damaged files are kept beside it as "NAME-damaged.DBF" and so
// on.
#pragma once

#include "access/formats/driver.h"
#include "access/formats/xbase/dbf_format.h"

namespace velnor::xbase {

/// `path`: the table's DBF. What is lost is reported as a problem, all else as harmless.
/// 3045 when somebody else has it, 3274 when nothing of it can be read, 3027 for dBASE II.
void repairTable(FileSystem& files, const std::string& path, const NewTableForm& form,
                 const std::string& codePage, const ProblemSink& report);

}  // namespace velnor::xbase
