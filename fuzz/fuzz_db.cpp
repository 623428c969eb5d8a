// A DB file of any content, with the MB and PX files of another table beside it.
#include "fuzz/paradox_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velnor;
    static const auto family = [] {
        MemoryFileSystem files;
        fuzzing::putParadoxFamily(files);
        return std::pair{files.content("C:\\T.MB"), files.content("C:\\T.PX")};
    }();
    MemoryFileSystem files(64u << 20);
    files.put("C:\\T.MB", family.first);
    files.put("C:\\T.PX", family.second);
    files.put("C:\\T.DB", {data, size});
    fuzzing::exerciseParadox(files, size % 8 == 0);
    return 0;
}
