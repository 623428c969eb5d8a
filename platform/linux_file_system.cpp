#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/host.h"
#include "platform/letter_case.h"
#include "platform/linux_file.h"
#include "platform/path_parts.h"
#include "platform/paths.h"
#include "platform/system_error.h"

namespace velnor {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

std::string nativeFolder(const std::string& native)
{
    const auto slash = native.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : native.substr(0, slash);
}

bool isFolder(const std::string& native)
{
    struct stat status;
    return ::stat(native.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// What "no such file" means for a path: 76 when already its folder is missing.
RunErrorNumber missingNumber(const std::string& native)
{
    return isFolder(nativeFolder(native)) ? RunErrorNumber::FileNotFound
                                          : RunErrorNumber::PathNotFound;
}

int openFlags(OpenMode mode)
{
    // A pipe must not stop the program: without waiting, and refused below.
    constexpr int kAlways = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    switch (mode) {
    case OpenMode::Read:
        return kAlways | O_RDONLY;
    case OpenMode::ReadWrite:
        return kAlways | O_RDWR;
    case OpenMode::CreateNew:
        return kAlways | O_RDWR | O_CREAT | O_EXCL;
    case OpenMode::Replace:
        return kAlways | O_RDWR | O_CREAT | O_TRUNC;
    }
    return kAlways;
}

/// Read-only as people mean it: nobody may write, or not this user by the file's bits.
bool isReadOnly(const struct stat& status)
{
    if ((status.st_mode & 0222) == 0)
        return true;
    const uid_t user = ::geteuid();
    if (user == 0)
        return false;
    if (status.st_uid == user)
        return (status.st_mode & S_IWUSR) == 0;
    if (status.st_gid == ::getegid())
        return (status.st_mode & S_IWGRP) == 0;
    return (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

FileInfo infoFrom(std::string_view name, const struct stat& status)
{
    FileInfo info;
    info.name = name;
    info.folder = S_ISDIR(status.st_mode);
    info.size = info.folder ? 0 : static_cast<std::uint64_t>(status.st_size);
    info.modified = status.st_mtime;
    info.readOnly = isReadOnly(status);
    info.hidden = name.starts_with('.');
    return info;
}

FileInfo mountPoint(std::string_view name)
{
    FileInfo info;
    info.name = name;
    info.folder = true;
    info.readOnly = true;
    return info;
}

bool isShown(std::string_view name)
{
    return name != "." && name != ".." && name.find('\\') == std::string_view::npos &&
           isValidUtf8(name);
}

class LinuxFileSystem final : public FileSystem {
public:
    explicit LinuxFileSystem(const HostPaths& paths) : paths_(paths) {}

    std::unique_ptr<File> open(std::string_view path, OpenMode mode) override;
    std::optional<FileInfo> info(std::string_view path) override;
    std::vector<FileInfo> list(std::string_view folder) override;
    void remove(std::string_view path) override;
    void rename(std::string_view from, std::string_view to) override;
    void makeFolder(std::string_view path) override;
    void removeFolder(std::string_view path) override;
    void syncFolder(std::string_view folder) override;

private:
    void addMounts(std::string_view folder, std::vector<FileInfo>& entries) const;

    const HostPaths& paths_;
};

std::unique_ptr<File> LinuxFileSystem::open(std::string_view path, OpenMode mode)
{
    const std::string native = paths_.toNative(path);
    const int handle = ::open(native.c_str(), openFlags(mode), 0666);
    if (handle < 0) {
        const int number = errno == EISDIR ? EBUSY : errno;
        throw systemError(number, path, missingNumber(native));
    }
    auto file = std::make_unique<LinuxFile>(handle, std::string(path));
    struct stat status;
    if (::fstat(handle, &status) != 0 || !S_ISREG(status.st_mode))
        throw pathError(RunErrorNumber::PathFileAccess, path);
    return file;
}

std::optional<FileInfo> LinuxFileSystem::info(std::string_view path)
{
    const std::string native = paths_.toNative(path);
    const PathParts cut = cutPath(path);
    struct stat status;
    if (::stat(native.c_str(), &status) == 0) {
        const bool root = cut.parts.empty();
        const std::string_view disk = std::string_view(native).substr(native.rfind('/') + 1);
        // A mount's folder may bear another name on the disk: its name here is what was asked for.
        const bool renamed = !root && !paths::sameName(disk, cut.parts.back());
        return infoFrom(root ? cut.root : renamed ? cut.parts.back() : disk, status);
    }
    if (!paths_.mountsBelow(path).empty())
        return mountPoint(cut.parts.empty() ? std::string_view(cut.root) : cut.parts.back());
    return std::nullopt;
}

std::vector<FileInfo> LinuxFileSystem::list(std::string_view folder)
{
    const std::string native = paths_.toNative(folder);
    std::vector<FileInfo> entries;
    const std::unique_ptr<DIR, CloseFolder> names(::opendir(native.c_str()));
    if (!names) {
        const int number = errno;
        addMounts(folder, entries);
        if (entries.empty())
            throw systemError(number, folder, RunErrorNumber::PathNotFound);
        return entries;
    }
    while (const dirent* entry = ::readdir(names.get())) {
        struct stat status;
        if (!isShown(entry->d_name) ||
            ::fstatat(dirfd(names.get()), entry->d_name, &status, 0) != 0)
            continue;
        if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))
            entries.push_back(infoFrom(entry->d_name, status));
    }
    addMounts(folder, entries);
    return entries;
}

void LinuxFileSystem::addMounts(std::string_view folder, std::vector<FileInfo>& entries) const
{
    for (const std::string& name : paths_.mountsBelow(folder)) {
        const auto same = [&](const FileInfo& e) { return paths::sameName(e.name, name); };
        if (std::ranges::none_of(entries, same))
            entries.push_back(mountPoint(name));
    }
}

void LinuxFileSystem::remove(std::string_view path)
{
    const std::string native = paths_.toNative(path);
    if (::unlink(native.c_str()) == 0)
        return;
    const int number = errno;
    if (isFolder(native))
        throw pathError(RunErrorNumber::PathFileAccess, path);
    throw systemError(number, path, missingNumber(native));
}

void LinuxFileSystem::rename(std::string_view from, std::string_view to)
{
    const std::string source = paths_.toNative(from);
    std::string target = paths_.toNative(to);
    const PathParts cut = cutPath(to);
    if (cut.parts.empty())
        throw pathError(RunErrorNumber::FileExists, to);
    struct stat old, taken;
    if (::lstat(source.c_str(), &old) != 0)
        throw systemError(errno, from, missingNumber(source));
    if (::lstat(target.c_str(), &taken) == 0) {
        if (old.st_dev == taken.st_dev && old.st_ino == taken.st_ino)  // a change of case only
            target = nativeFolder(target) + "/" + std::string(cut.parts.back());
        else if (S_ISDIR(taken.st_mode) || S_ISDIR(old.st_mode))
            throw pathError(RunErrorNumber::FileExists, to);
    }
    if (::rename(source.c_str(), target.c_str()) != 0)
        throw systemError(errno, to, missingNumber(target));
}

void LinuxFileSystem::makeFolder(std::string_view path)
{
    const std::string native = paths_.toNative(path);
    if (::mkdir(native.c_str(), 0777) != 0)
        throw systemError(errno, path, RunErrorNumber::PathNotFound);
}

void LinuxFileSystem::removeFolder(std::string_view path)
{
    const std::string native = paths_.toNative(path);
    if (::rmdir(native.c_str()) == 0)
        return;
    const int number = errno == EEXIST ? ENOTEMPTY : errno;
    throw systemError(number, path, RunErrorNumber::PathNotFound);
}

void LinuxFileSystem::syncFolder(std::string_view folder)
{
    const std::string native = paths_.toNative(folder);
    const int handle = ::open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        throw systemError(errno, folder, RunErrorNumber::PathNotFound);
    const int number = ::fsync(handle) == 0 ? 0 : errno;
    ::close(handle);
    if (number != 0 && number != EINVAL && number != EROFS)
        throw systemError(number, folder);
}

}  // namespace

std::unique_ptr<FileSystem> makeLinuxFileSystem(const HostPaths& paths)
{
    return std::make_unique<LinuxFileSystem>(paths);
}

}  // namespace velnor
