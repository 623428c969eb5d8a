// An MB file of any content in the place of that of a sound table, whose records point into it.
#include <vector>

#include "fuzz/paradox_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velnor;
    static const auto family = [] {
        MemoryFileSystem files;
        fuzzing::putParadoxFamily(files);
        return std::pair{files.content("C:\\T.DB"), files.content("C:\\T.PX")};
    }();
    MemoryFileSystem files(64u << 20);
    files.put("C:\\T.DB", family.first);
    files.put("C:\\T.PX", family.second);
    files.put("C:\\T.MB", {data, size});
    fuzzing::exerciseParadox(files, size % 8 == 0);
    return 0;
}
