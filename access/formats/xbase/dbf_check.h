// access/formats/xbase/dbf_check.h - reads a whole table and reports what is wrong with it.
#pragma once

#include "access/formats/driver.h"
#include "access/formats/xbase/dbf_table.h"

namespace velnor::xbase {

void checkTable(DbfTable& table, const ProblemSink& report);

}  // namespace velnor::xbase
