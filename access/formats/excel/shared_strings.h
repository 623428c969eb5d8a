// access/formats/excel/shared_strings.h - the table of texts that cells of version 8 refer to
// (SST).
#pragma once

#include <span>
#include <vector>

#include "access/formats/excel/record_list.h"
#include "access/formats/sheet/text_pool.h"

namespace velnor::excel {

struct SharedStrings {
    std::uint32_t count = 0;  ///< texts that are there; what the file says counts for nothing
    std::vector<bool> rich;   ///< has formatting or phonetic text: not to be used for plain texts
    bool cutOff = false;      ///< the last one is broken: nothing can be added behind it
};

/// Adds the texts of the SST (its record and CONTINUEs) to an empty pool, in order.
SharedStrings readSharedStrings(const std::vector<Bytes>& parts, sheet::TextPool& texts);

/// The records of a table with `added` behind the old texts; every old byte stays but the counts.
/// `references` is the number of cells with such texts.
std::vector<RecordList::Entry> extendSharedStrings(const std::vector<Bytes>& parts,
                                                   std::uint32_t count, std::uint32_t references,
                                                   std::span<const std::string_view> added);

}  // namespace velnor::excel
