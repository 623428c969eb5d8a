// An index file of any content in the place of one of a sound table: byte 4 says which.
#include <map>
#include <string>
#include <vector>

#include "fuzz/paradox_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velnor;
    static const auto family = [] {
        MemoryFileSystem files;
        fuzzing::putParadoxFamily(files);
        std::map<std::string, std::vector<std::uint8_t>> all;
        for (const FileInfo& file : files.list("C:\\"))
            all["C:\\" + file.name] = files.content("C:\\" + file.name);
        return all;
    }();
    if (size < 5)
        return 0;
    static constexpr const char* kPlaces[] = {"C:\\T.PX",  "C:\\T.PX",  "C:\\T.X02",
                                              "C:\\T.X02", "C:\\T.Y02", "C:\\T.X02",
                                              "C:\\T.XG0", "C:\\T.YG0", "C:\\T.XG0"};
    MemoryFileSystem files(64u << 20);
    for (const auto& [path, content] : family)
        files.put(path, content);
    files.put(kPlaces[data[4] % 9], {data, size});
    fuzzing::exerciseParadox(files, size % 8 == 0);
    return 0;
}
