// access/formats/paradox/user_locks.h - the lock files that other programs leave in a folder.
//
// PDOXUSRS.LCK lists who works in the folder. Programs that crashed leave it behind, so only one
// that changed in the last minutes keeps us from writing. We make none: the lock that tells our own
// programs apart is on the DB file.
#pragma once

#include <string_view>

#include "platform/file_system.h"

namespace velnor::paradox {

/// 3045 when somebody seems to work in the table's folder right now.
void refuseForeignUsers(FileSystem& files, std::string_view tablePath);

}  // namespace velnor::paradox
