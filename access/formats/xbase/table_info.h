// access/formats/xbase/table_info.h - facts about a table, for people.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "access/formats/xbase/dbf_table.h"

namespace velnor::xbase {

std::vector<std::pair<std::string, std::string>> tableInfo(DbfTable& table);

/// "dBASE III", "dBASE IV", "FoxPro": the words for a form of memo file.
std::string_view memoWords(MemoForm form);

}  // namespace velnor::xbase
