#include "platform/clock.h"

#include <ctime>

namespace velnor {
namespace {

class SystemClock final : public Clock {
public:
    LocalTime now() const override { return local(std::time(nullptr)); }
    LocalTime local(std::int64_t secondsUtc) const override
    {
        const std::time_t seconds = secondsUtc;
        std::tm parts{};
        if (!localtime_r(&seconds, &parts))
            return {1970, 1, 1, 0, 0, 0};
        return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                parts.tm_hour,        parts.tm_min,     parts.tm_sec};
    }
};

}  // namespace

const Clock& systemClock()
{
    static const SystemClock clock;
    return clock;
}

}  // namespace velnor
