// A workbook in its container: header, tables of sectors, directory.
#include "fuzz/excel_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    velnor::fuzzing::exerciseWorkbook({data, size});
    return 0;
}
