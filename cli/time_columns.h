// cli/time_columns.h - fields that hold a time of day without a day: shown as HH:MM:SS, not as a
// moment of the day that dates count from.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "access/engine.h"

namespace velnor::cli {

class TimeColumns {
public:
    explicit TimeColumns(Recordset& rows);
    /// Puts texts in the place of times. They are good until the next call.
    void show(std::span<ValueView> values);

private:
    std::vector<std::size_t> columns_;
    std::vector<std::string> texts_;
};

}  // namespace velnor::cli
