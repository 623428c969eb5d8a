// platform/system_error.h - the system's error numbers as RunError.
#pragma once

#include <string_view>

#include "platform/run_error.h"

namespace velnor {

/// What `number` (errno) is for people; `missing` is what "no such file" means to the caller: 53
/// or 76.
RunError systemError(int number, std::string_view path,
                     RunErrorNumber missing = RunErrorNumber::FileNotFound);

}  // namespace velnor
