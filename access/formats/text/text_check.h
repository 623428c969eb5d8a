// access/formats/text/text_check.h - what is wrong in a text file, and facts about it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/text/text_table.h"

namespace velnor::text {

/// Open quotes, values that do not read as the type told for their column, lines with more fields
/// than are shown, lines with fewer or more fields than the first (harmless).
void checkText(TextTable& table, const ProblemSink& report);

std::vector<std::pair<std::string, std::string>> textInfo(TextTable& table);

}  // namespace velnor::text
