// access/formats/jet/row_filler.h - puts the records of a new table on its pages, one behind the
// other, every page as full as it goes.
#pragma once

#include <cstdint>
#include <span>

#include "access/formats/jet/jet_table.h"

namespace velnor::jet {

class RowFiller {
public:
    /// The table has no pages yet.
    explicit RowFiller(JetTable& table) : table_(table) {}

    RowPointer add(std::span<const std::uint8_t> bytes);
    /// To be called behind the last record: its page may take more.
    void finish();

private:
    void newPage();

    JetTable& table_;
    PageRef page_;
};

}  // namespace velnor::jet
