// platform/clock.h - date and time, as a seam for tests.
#pragma once

#include <cstdint>

namespace velnor {

/// Local civil time.
struct LocalTime {
    int year, month, day;      // 1..12, 1..31
    int hour, minute, second;  // 0..23
};

class Clock {
public:
    virtual ~Clock() = default;
    virtual LocalTime now() const = 0;
    /// A file's time stamp (seconds since 1970-01-01 UTC) in local time.
    virtual LocalTime local(std::int64_t secondsUtc) const = 0;
};

/// The system's clock.
const Clock& systemClock();

}  // namespace velnor
