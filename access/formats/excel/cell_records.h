// access/formats/excel/cell_records.h - cells as records, for versions 5 and 8.
#pragma once

#include <optional>
#include <vector>

#include "access/formats/excel/biff_text.h"
#include "access/formats/excel/globals.h"
#include "access/formats/excel/stream_sink.h"
#include "access/formats/sheet/cell.h"
#include "access/formats/sheet/text_pool.h"

namespace velnor::excel {

/// The numbers that texts have in the shared table of the file. Before version 8 there is none:
/// texts stand in the cells themselves.
struct TextNumbers {
    const sheet::TextPool* texts = nullptr;
    const std::vector<std::uint32_t>* numbers = nullptr;  ///< by number in the pool
};

class CellEncoder {
public:
    CellEncoder(const Globals& globals, const TextNumbers& texts, StreamSink& sink)
        : globals_(globals), texts_(texts), sink_(sink)
    {
    }
    /// Writes a cell with the format `xf`; a Blank one as BLANK.
    void write(std::uint32_t row, const sheet::Cell& cell, std::uint16_t xf);

private:
    void writeText(std::uint32_t text);

    const Globals& globals_;
    TextNumbers texts_;
    StreamSink& sink_;
    std::vector<std::uint8_t> data_;
    std::string bytes_;
};

/// A number as an RK, when that holds it exactly: an integer of 30 bits, the upper half of a
/// double, or one of these and divided by 100.
std::optional<std::uint32_t> rkOfNumber(double number);

}  // namespace velnor::excel
