// fuzz/excel_exercise.h - a workbook of any content: opened, read, changed, written, given a table
// and robbed of one.
#pragma once

#include <cstdint>
#include <span>

namespace velnor::fuzzing {

void exerciseWorkbook(std::span<const std::uint8_t> bytes);

}  // namespace velnor::fuzzing
