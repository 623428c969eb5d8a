// access/formats/lotus/cell_writer.h - cells as records of WK3 and WK4.
#pragma once

#include <string>

#include "access/formats/lotus/wk_book.h"
#include "access/formats/lotus/wk_records.h"

namespace velnor::lotus {

inline constexpr std::uint8_t kLeftAligned = '\'';

class CellWriter {
public:
    CellWriter(RecordSink& sink, const WkBook& book) : sink_(sink), book_(book) {}
    /// Nothing for a blank cell: it has no record. `alignment`: the mark in front of a label.
    void put(CellPlace place, const sheet::Cell& cell, std::uint8_t alignment = kLeftAligned);

private:
    void putText(CellPlace place, std::string_view text, std::uint8_t alignment);

    RecordSink& sink_;
    const WkBook& book_;
    std::string label_;
};

}  // namespace velnor::lotus
