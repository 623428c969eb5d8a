#include "platform/system_error.h"

#include <cerrno>

#include "platform/path_parts.h"

namespace velnor {
namespace {

RunErrorNumber runNumber(int number, RunErrorNumber missing)
{
    switch (number) {
    case ENOENT:
        return missing;
    case ENOTDIR:
        return RunErrorNumber::PathNotFound;
    case EEXIST:
        return RunErrorNumber::FileExists;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return RunErrorNumber::DiskFull;
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
        return RunErrorNumber::PermissionDenied;
    case ENOMEM:
        return RunErrorNumber::OutOfMemory;
    case EINVAL:
    case ENAMETOOLONG:
    case EILSEQ:
        return RunErrorNumber::BadFileName;
    case ENXIO:
    case ENODEV:
    case ENOTCONN:
    case EHOSTDOWN:
    case ESTALE:
        return RunErrorNumber::DeviceUnavailable;
    case EIO:
        return RunErrorNumber::DeviceIo;
    default:
        return RunErrorNumber::PathFileAccess;
    }
}

}  // namespace

RunError systemError(int number, std::string_view path, RunErrorNumber missing)
{
    return pathError(runNumber(number, missing), path);
}

}  // namespace velnor
