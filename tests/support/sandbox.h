// tests/support/sandbox.h - a temporary folder mounted as "C:", with a host of its own. It is the
// host in force as long as it lives; then the folder goes with all that is in it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host.h"

namespace velnor::testing {

/// A clock that stands still: 2004-11-18 13:08:10 until it is set. Time stamps of files are taken
/// as UTC.
class FixedClock final : public Clock {
public:
    LocalTime now() const override { return time; }
    LocalTime local(std::int64_t secondsUtc) const override;
    LocalTime time{2004, 11, 18, 13, 8, 10};
};

/// Writes down what is asked of the desktop. A file that goes to the trash is removed.
class RecordingDesktop final : public Desktop {
public:
    bool openWith(std::string_view pathOrAddress) override;
    bool moveToTrash(std::string_view path) override;
    std::string computerName() override { return name; }
    VolumeInfo volume(std::string_view) override { return volumeInfo; }

    std::vector<std::string> opened;
    std::vector<std::string> trashed;
    bool hasPrograms = true;  ///< what openWith answers
    bool hasTrash = true;
    std::string name = "testhost";
    VolumeInfo volumeInfo{"DATA", std::uint64_t{1} << 30, std::uint64_t{2} << 30};
};

class Sandbox {
public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    /// The folder that is "C:", without a closing slash.
    const std::string& root() const { return root_; }
    FileSystem& files() { return *files_; }
    FixedClock& clock() { return clock_; }
    RecordingDesktop& desktop() { return desktop_; }
    HostPaths& paths() { return paths_; }
    Host& host() { return host_; }

    /// Another file system in front of the folder: one that fails, say. Null: the real one.
    void useFiles(FileSystem* files);
    /// "C:\data\a.txt" with this content; folders on the way are made.
    void write(std::string_view path, std::string_view content);
    std::string read(std::string_view path) const;
    void makeFolders(std::string_view path);
    /// Brings a file from the real file system in.
    void copyIn(std::string_view nativeFile, std::string_view path);
    std::string native(std::string_view path) const { return paths_.toNative(path); }

private:
    std::string root_;
    HostPaths paths_;
    std::unique_ptr<FileSystem> files_;
    FixedClock clock_;
    RecordingDesktop desktop_;
    Host host_;
    Host* before_;
};

}  // namespace velnor::testing
