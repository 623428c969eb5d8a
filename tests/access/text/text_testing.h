// tests/access/text/text_testing.h - text files in memory, read and written through the driver.
#pragma once

#include "access/formats/text/text_driver.h"
#include "tests/access/support/store_testing.h"

namespace velnor::text_testing {

using namespace store_testing;

inline ByteSpan bytesOf(std::string_view content)
{
    return {reinterpret_cast<const std::uint8_t*>(content.data()), content.size()};
}

inline std::unique_ptr<Store> openStore(FileSystem& files, bool readOnly = false,
                                        std::string options = {}, std::string codePage = {})
{
    static const text::TextDriver driver;
    OpenRequest request;
    request.name = "C:\\";
    request.connectWord = "Text;";
    request.readOnly = readOnly;
    request.options = std::move(options);
    request.codePage = std::move(codePage);
    return driver.open(files, request);
}

inline std::string contentOf(const MemoryFileSystem& files, std::string_view path)
{
    const auto bytes = files.content(path);
    return {bytes.begin(), bytes.end()};
}

inline ValueView words(std::string_view t)
{
    return ValueView::text(t);
}

}  // namespace velnor::text_testing
