#include "access/formats/jet/lock_file.h"

#include <memory>
#include <string>

#include "platform/paths.h"

namespace velnor::jet {

bool openElsewhere(FileSystem& files, std::string_view database)
{
    const std::string path = paths::withExtension(database, "LDB");
    try {
        if (!files.fileExists(path))
            return false;
        std::unique_ptr<File> file;
        try {
            file = files.open(path, OpenMode::ReadWrite);
        } catch (const RunError&) {
            // One that may only be read can be asked all the same: their locks shut out readers.
            return !files.open(path, OpenMode::Read)->tryLock(LockKind::Shared);
        }
        return !file->tryLock(LockKind::Exclusive);
    } catch (const RunError& error) {
        // It went just now; or nobody may look at it, and then it is taken for held.
        return error.code() != RunErrorNumber::FileNotFound;
    }
}

}  // namespace velnor::jet
