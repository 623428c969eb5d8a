#include "access/formats/paradox/user_locks.h"

#include "access/engine_error.h"
#include "access/value_text.h"
#include "platform/host.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

constexpr double kMinutes = 5;

double dateValue(const LocalTime& t)
{
    return dateFromCivil({t.year, t.month, t.day, t.hour, t.minute, t.second, 0});
}

}  // namespace

void refuseForeignUsers(FileSystem& files, std::string_view tablePath)
{
    const auto lock = files.info(paths::join(paths::folder(tablePath), "PDOXUSRS.LCK"));
    if (!lock || lock->folder)
        return;
    const Clock& clock = *host().clock;
    const double age = dateValue(clock.now()) - dateValue(clock.local(lock->modified));
    if (age >= 0 && age * 24 * 60 < kMinutes)
        throw EngineError(EngineErrorNumber::FileInUse,
                          std::string(tablePath) +
                              " is in use: another program works in its folder (PDOXUSRS.LCK).");
}

}  // namespace velnor::paradox
