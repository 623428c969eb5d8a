// platform/temporary_file.h - a file without a name, gone when it is closed.
#pragma once

#include <memory>

#include "platform/file_system.h"

namespace velnor {

/// In the folder that the system gives for such files (TMPDIR, else /var/tmp, where large ones
/// belong). 61 or 75 when none can be made.
std::unique_ptr<File> openTemporaryFile();

}  // namespace velnor
