// A DBF of any content, beside small memo files.
#include <vector>

#include "fuzz/xbase_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velnor;
    MemoryFileSystem files(64u << 20);
    std::vector<std::uint8_t> memo(2048, 'x');
    memo[0] = 4;
    memo[4] = memo[5] = memo[6] = memo[7] = 0;
    memo[700] = memo[1500] = 0x1A;
    files.put("C:\\T.DBT", memo);
    files.put("C:\\T.FPT", memo);
    files.put("C:\\T.DBF", {data, size});
    fuzzing::exerciseTable(files);
    return 0;
}
