// access/formats/lotus/wk_check.h - what is wrong in a worksheet file, and facts about it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/lotus/wk_book.h"

namespace velnor::lotus {

/// Reads every record: a missing end, cells of a wrong size or outside the sheet, cells told twice,
/// texts without their formula, formats that copy what is not there, bounds that leave cells out.
void checkBook(File& file, const WkBook& book, const ProblemSink& report);

std::vector<std::pair<std::string, std::string>> bookInfo(const WkBook& book);

}  // namespace velnor::lotus
