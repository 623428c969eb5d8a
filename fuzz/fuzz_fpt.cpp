// An FPT of any content, beside tables of FoxPro 2 and Visual FoxPro.
#include "fuzz/xbase_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velnor;
    for (const std::uint8_t version : {0xF5, 0x30}) {
        MemoryFileSystem files(64u << 20);
        fuzzing::putMemoTable(files, version);
        files.put("C:\\T.FPT", {data, size});
        fuzzing::exerciseTable(files);
    }
    return 0;
}
