// The records of a workbook, without a container.
#include "fuzz/excel_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    velnor::fuzzing::exerciseWorkbook({data, size});
    return 0;
}
