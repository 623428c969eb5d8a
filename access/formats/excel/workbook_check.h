// access/formats/excel/workbook_check.h - what is wrong with a workbook, and facts about it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/excel/workbook.h"

namespace velnor::excel {

/// Reads the container and every sheet and reports what does not fit. Changes nothing.
void checkWorkbook(Workbook& workbook, const ProblemSink& report);
/// Version, container, code page, date system, sheets, texts: for people.
std::vector<std::pair<std::string, std::string>> workbookInfo(Workbook& workbook);

}  // namespace velnor::excel
