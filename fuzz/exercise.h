// fuzz/exercise.h - what the fuzzers share: values looked at to their last byte, refusals passed
// over.
#pragma once

#include <cstdint>

#include "access/engine_error.h"
#include "access/value.h"
#include "platform/run_error.h"

namespace velnor::fuzzing {

inline volatile std::uint64_t seen;  // keeps the compiler from leaving the reading out

/// Touches the whole content of a value, so that a view of freed or foreign bytes is found.
inline std::uint64_t touch(ValueView v)
{
    std::uint64_t sum = static_cast<std::uint64_t>(v.kind());
    if (v.kind() == ValueKind::Text)
        for (const char c : v.asText())
            sum = sum * 31 + static_cast<unsigned char>(c);
    if (v.kind() == ValueKind::Bytes)
        for (const std::uint8_t c : v.asBytes())
            sum = sum * 31 + c;
    return sum;
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
