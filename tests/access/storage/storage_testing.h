// tests/access/storage/storage_testing.h - short words for tests of files and their errors.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "access/engine_error.h"
#include "access/storage/page_file.h"
#include "platform/memory_file_system.h"

namespace velnor::testing {

using Bytes = std::vector<std::uint8_t>;

inline Bytes bytesOf(std::string_view text)
{
    return {text.begin(), text.end()};
}

inline std::string contentOf(const MemoryFileSystem& files, std::string_view path)
{
    const Bytes content = files.content(path);
    return {content.begin(), content.end()};
}

inline void write(PageFile& file, std::uint64_t offset, std::string_view text)
{
    file.writeAt(offset, bytesOf(text));
}

inline std::string read(PageFile& file, std::uint64_t offset, std::size_t count)
{
    Bytes out(count);
    out.resize(file.readAt(offset, out));
    return {out.begin(), out.end()};
}

inline PageFileOptions pagesOf(std::uint32_t size, std::size_t cacheBytes = 0)
{
    PageFileOptions options;
    options.pageSize = size;
    options.cacheBytes = cacheBytes;
    return options;
}

/// The engine's number that a piece of work ends with; 0 for none.
template <class Work> int engineNumberOf(Work work)
{
    try {
        work();
    } catch (const EngineError& error) {
        return error.number();
    }
    return 0;
}

}  // namespace velnor::testing
