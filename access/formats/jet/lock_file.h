// access/formats/jet/lock_file.h - the file NAME.LDB that programs of Access keep beside a database
// which they have open.
//
// Such a program holds locks in it far behind its end, one byte for itself at least. A file without
// locks is left over from a crash. We make none: between our own programs the lock on the database
// itself counts, and theirs must see that we do not write what they have open.
#pragma once

#include <string_view>

#include "platform/file_system.h"

namespace velnor::jet {

/// Whether another program has this database open.
bool openElsewhere(FileSystem& files, std::string_view database);

}  // namespace velnor::jet
