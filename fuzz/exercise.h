// fuzz/exercise.h - what the fuzzers share: values looked at to their last byte, refusals passed
// over.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "access/engine_error.h"
#include "access/value.h"
#include "platform/run_error.h"

namespace velnor::fuzzing {

inline volatile std::uint64_t seen;  // keeps the compiler from leaving the reading out

/// Reads a whole piece of memory by copies, which the address sanitizer looks at in one go: a loop
/// over the bytes took half of the time that the fuzzers of memos have.
inline std::uint64_t readAll(const void* start, std::size_t size)
{
    std::array<unsigned char, 4096> scratch{};
    std::uint64_t sum = size;
    for (std::size_t at = 0; at < size; at += scratch.size()) {
        std::memcpy(scratch.data(), static_cast<const char*>(start) + at,
                    std::min(size - at, scratch.size()));
        sum = sum * 31 + scratch[0];
    }
    return sum;
}

/// Touches the whole content of a value, so that a view of freed or foreign bytes is found.
inline std::uint64_t touch(ValueView v)
{
    if (v.kind() == ValueKind::Text)
        return readAll(v.asText().data(), v.asText().size());
    if (v.kind() == ValueKind::Bytes)
        return readAll(v.asBytes().data(), v.asBytes().size());
    return static_cast<std::uint64_t>(v.kind());
}

/// Damaged files are refused by errors; all else is a finding.
template <class Work> void attempt(Work work)
{
    try {
        work();
    } catch (const EngineError&) {
    } catch (const RunError&) {
    }
}

}  // namespace velnor::fuzzing
