// A MDX of any content, beside a small table.
#include "fuzz/xbase_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    velnor::MemoryFileSystem files(64u << 20);
    velnor::fuzzing::putIndexedTable(files, 0x03);
    files.put("C:\\T.MDX", {data, size});
    velnor::fuzzing::exerciseIndexes(files);
    return 0;
}
