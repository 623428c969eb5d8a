// access/formats/jet/check_index.h - the check of one index: its tree, and its entries against the
// records.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "access/formats/jet/check_context.h"
#include "access/formats/jet/jet_table.h"

namespace velnor::jet {

/// Claims the pages of a real index and compares each entry with the key that its record gives.
/// `records` is how many records belong in it: as many entries prove that none is missing.
void checkIndex(CheckContext& context, std::shared_ptr<JetTable> table, int real,
                std::int64_t records, const std::string& where);

}  // namespace velnor::jet
