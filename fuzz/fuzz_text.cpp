// A text file of any content. An input that begins with "[T.TXT]" is its schema.ini up to a line
// "--", and the text behind it.
#include <string_view>

#include "access/formats/text/text_driver.h"
#include "fuzz/store_exercise.h"
#include "platform/memory_file_system.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velnor;
    using namespace velnor::fuzzing;
    static constexpr std::string_view kMark = "\n--\n";
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t mark = input.find(kMark);
    const bool schema = input.starts_with("[T.TXT]") && mark != input.npos;
    const std::size_t start = schema ? mark + kMark.size() : 0;
    MemoryFileSystem files(64u << 20);
    if (schema)
        files.put("C:\\schema.ini", {data, mark});
    files.put("C:\\T.TXT", {data + start, size - start});
    OpenRequest request;
    request.name = "C:\\";
    request.connectWord = "Text;";
    for (const char* options : {"", "HDR=No"})
        attempt([&] {
            request.options = options;
            request.readOnly = false;
            const auto store = text::TextDriver().open(files, request);
            exerciseTable(*store, "T.TXT");
        });
    return 0;
}
