#include "platform/temporary_file.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "platform/linux_file.h"
#include "platform/system_error.h"

namespace velnor {
namespace {

int openIn(const char* folder)
{
    const int direct = ::open(folder, O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (direct >= 0)
        return direct;
    std::string name = std::string(folder) + "/velnor-XXXXXX";  // a file system without O_TMPFILE
    const int handle = ::mkostemp(name.data(), O_CLOEXEC);
    if (handle >= 0)
        ::unlink(name.c_str());
    return handle;
}

}  // namespace

std::unique_ptr<File> openTemporaryFile()
{
    const char* const wished = std::getenv("TMPDIR");
    for (const char* folder : {wished ? wished : "/var/tmp", "/var/tmp", "/tmp"}) {
        const int handle = openIn(folder);
        if (handle >= 0)
            return std::make_unique<LinuxFile>(handle, "a temporary file");
    }
    throw systemError(errno, "a temporary file");
}

}  // namespace velnor
