// A DBT of any content, beside tables of dBASE III and dBASE IV.
#include "fuzz/xbase_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velnor;
    for (const std::uint8_t version : {0x83, 0x8B}) {
        MemoryFileSystem files(64u << 20);
        fuzzing::putMemoTable(files, version);
        files.put("C:\\T.DBT", {data, size});
        fuzzing::exerciseTable(files);
    }
    return 0;
}
