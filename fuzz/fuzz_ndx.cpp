// An NDX of any content, beside a small table.
#include "fuzz/xbase_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static constexpr std::string_view kInf = "[dBASE III]\r\nNDX1=T.NDX\r\n";
    velnor::MemoryFileSystem files(64u << 20);
    velnor::fuzzing::putIndexedTable(files, 0x03);
    files.put("C:\\T.INF", {reinterpret_cast<const std::uint8_t*>(kInf.data()), kInf.size()});
    files.put("C:\\T.NDX", {data, size});
    velnor::fuzzing::exerciseIndexes(files);
    return 0;
}
