// platform/file_system.h - FileSystem and File: the only way to files.
//
// A path is UTF-8 text in the form "C:\folder\file.ext" or "\\server\share\file.ext". It is blind to
// upper and lower case: each part is taken as spelled if it exists, else the first existing name that
// differs in case only, else as spelled (a new file). Doubled backslashes count as one.
// Nothing here knows a native path; HostPaths turns them, at the entrances of the program.
//
// Errors are RunError: 53 no such file, 76 no such folder, 58 exists already, 61 disk full,
// 70 permission denied, 75 path or file access, 68 no such drive, 57 input or output failed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/run_error.h"

namespace velnor {

using ByteSpan = std::span<const std::uint8_t>;

enum class LockKind { Shared, Exclusive };

/// An open file, read and written by position. Not for use from several threads at once.
class File {
public:
    virtual ~File() = default;

    /// Fills `out` from `offset` on; returns how many bytes were there. Less than asked for only
    /// at the end of the file.
    virtual std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> out) = 0;
    /// Writes all of `bytes`; a hole in front of `offset` reads as zeros.
    virtual void writeAt(std::uint64_t offset, ByteSpan bytes) = 0;
    virtual std::uint64_t size() = 0;
    virtual void resize(std::uint64_t bytes) = 0;
    /// Returns when content and length are safe on the disk.
    virtual void sync() = 0;
    /// Locks the whole file against other processes and other handles; never waits.
    /// False when somebody else holds a lock that forbids it. Ends with the handle.
    virtual bool tryLock(LockKind kind) = 0;
    virtual void unlock() = 0;
};

enum class OpenMode {
    Read,        ///< must exist
    ReadWrite,   ///< must exist
    CreateNew,   ///< must not exist (58)
    Replace,     ///< made, or cut to zero length
};

struct FileInfo {
    std::string name;            ///< last part, as spelled on the disk
    std::uint64_t size = 0;      ///< bytes; 0 for a folder
    std::int64_t modified = 0;   ///< seconds since 1970-01-01 UTC
    bool folder = false;
    bool readOnly = false;
    bool hidden = false;         ///< the name starts with a dot
};

class FileSystem {
public:
    virtual ~FileSystem() = default;

    virtual std::unique_ptr<File> open(std::string_view path, OpenMode mode) = 0;
    /// What stands at a path; nothing when there is neither a file nor a folder.
    virtual std::optional<FileInfo> info(std::string_view path) = 0;
    /// The entries of a folder, in no order, one read of the folder. 76 when it is none.
    virtual std::vector<FileInfo> list(std::string_view folder) = 0;
    virtual void remove(std::string_view path) = 0;
    /// Moves within a volume; a file at `to` is replaced in the same instant.
    virtual void rename(std::string_view from, std::string_view to) = 0;
    virtual void makeFolder(std::string_view path) = 0;
    virtual void removeFolder(std::string_view path) = 0;
    /// Returns when made, removed and renamed names in `folder` are safe on the disk.
    virtual void syncFolder(std::string_view folder) = 0;

    bool exists(std::string_view path) { return info(path).has_value(); }
    bool fileExists(std::string_view path)
    {
        const auto found = info(path);
        return found && !found->folder;
    }
};

}  // namespace velnor
