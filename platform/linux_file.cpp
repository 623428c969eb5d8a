#include "platform/linux_file.h"

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/system_error.h"

namespace velnor {
namespace {

// Offsets beyond what the system can express come from damaged files: they read as nothing.
constexpr std::uint64_t kLargest = std::numeric_limits<off_t>::max();

struct flock wholeFile(short kind)
{
    struct flock lock {};
    lock.l_type = kind;
    lock.l_whence = SEEK_SET;
    return lock;
}

}  // namespace

LinuxFile::~LinuxFile()
{
    ::close(handle_);
}

void LinuxFile::fail(int number) const
{
    // A handle that was not opened for writing answers EBADF or EINVAL.
    if (number == EBADF || number == EINVAL)
        number = EACCES;
    throw systemError(number, path_);
}

std::size_t LinuxFile::readAt(std::uint64_t offset, std::span<std::uint8_t> out)
{
    std::size_t done = 0;
    while (done < out.size() && offset <= kLargest - done) {
        const ssize_t got = ::pread(handle_, out.data() + done, out.size() - done,
                                    static_cast<off_t>(offset + done));
        if (got == 0)
            break;
        if (got > 0)
            done += static_cast<std::size_t>(got);
        else if (errno != EINTR)
            fail(errno);
    }
    return done;
}

void LinuxFile::writeAt(std::uint64_t offset, ByteSpan bytes)
{
    if (offset > kLargest - bytes.size())
        fail(EFBIG);
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t put = ::pwrite(handle_, bytes.data() + done, bytes.size() - done,
                                     static_cast<off_t>(offset + done));
        if (put > 0)
            done += static_cast<std::size_t>(put);
        else if (put == 0)
            fail(ENOSPC);
        else if (errno != EINTR)
            fail(errno);
    }
}

std::uint64_t LinuxFile::size()
{
    struct stat status;
    if (::fstat(handle_, &status) != 0)
        fail(errno);
    return static_cast<std::uint64_t>(status.st_size);
}

void LinuxFile::resize(std::uint64_t bytes)
{
    if (bytes > kLargest)
        fail(EFBIG);
    while (::ftruncate(handle_, static_cast<off_t>(bytes)) != 0)
        if (errno != EINTR)
            fail(errno);
}

void LinuxFile::sync()
{
    while (::fdatasync(handle_) != 0) {
        if (errno == EINVAL || errno == EROFS)
            return;  // nothing to bring to safety on such a volume
        if (errno != EINTR)
            fail(errno);
    }
}

bool LinuxFile::tryLock(LockKind kind)
{
    struct flock lock = wholeFile(kind == LockKind::Exclusive ? F_WRLCK : F_RDLCK);
    while (::fcntl(handle_, F_OFD_SETLK, &lock) != 0) {
        if (errno == EAGAIN || errno == EACCES)
            return false;
        if (errno == ENOLCK || errno == EOPNOTSUPP || errno == ENOSYS)
            return true;  // a volume without locks: working unguarded beats not working
        if (errno != EINTR)
            fail(errno);
    }
    // Replaced since it was opened: what is locked is no longer the file of this name.
    struct stat status;
    return ::fstat(handle_, &status) != 0 || status.st_nlink > 0;
}

void LinuxFile::unlock()
{
    struct flock lock = wholeFile(F_UNLCK);
    ::fcntl(handle_, F_OFD_SETLK, &lock);
}

}  // namespace velnor
