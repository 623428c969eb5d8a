// access/formats/xbase/record_mover.h - a record of one table as a record of another that was
// planned from it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "access/formats/xbase/dbf_header.h"

namespace velnor::xbase {

class RecordMover {
public:
    /// `sources`: see TablePlan. The headers outlive the mover.
    RecordMover(const DbfHeader& from, const DbfHeader& to, const std::vector<int>& sources);

    /// `out` becomes the record; it is number `number` there. Memo fields keep their blocks.
    void move(const std::uint8_t* record, std::uint32_t number, std::uint8_t* out);

private:
    struct Pair {
        const DbfField* from;  ///< null: a new field
        const DbfField* to;
    };

    void copyField(const Pair& pair, const std::uint8_t* record, std::uint8_t* out);
    void stretch(const Pair& pair, const std::uint8_t* record, std::uint8_t* out);

    const DbfHeader& from_;
    const DbfHeader& to_;
    std::vector<Pair> pairs_;
    std::vector<std::uint8_t> blank_;
    std::string text_, scratch_;
};

}  // namespace velnor::xbase
