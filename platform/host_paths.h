// platform/host_paths.h - "C:\..." to Linux paths and back.
//
// Mounts join a prefix to a native folder, the longest prefix wins: "C:" is the file system root unless the
// map says otherwise, "C:\Program Files\Velnor3" is the application folder. `\\server\share` is mapped
// where such a share is mounted. An unmounted drive is error 68.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velnor {

/// The application folder as the program names it.
inline constexpr const char* kApplicationFolder = "C:\\Program Files\\Velnor3";

class HostPaths {
public:
    struct Mount {
        std::string prefix;  ///< "C:", "D:", "C:\Program Files\Velnor3", "\\server\share"
        std::string native;  ///< absolute, no closing slash ("/" is "")
    };

    /// "C:" on the root; nothing else.
    HostPaths();
    /// No mounts: every path is 68 or 76 until one is mounted. For tests.
    static HostPaths empty();
    void mount(std::string_view prefix, std::string_view native);
    /// Reads "D: = /mnt/data" lines; lines that start with # are comments.
    void readMap(std::string_view text);
    const std::vector<Mount>& mounts() const { return mounts_; }

    /// The native path; each part as spelled if it exists, else the first name that differs in case only, else
    /// as spelled. Reads each folder at most once. 68 for an unmounted drive, 76 for a share that is not
    /// mounted, 52 for what is no path.
    std::string toNative(std::string_view path) const;
    /// The program's path of a native one: made absolute (against the process's folder) and cleaned of
    /// "." and ".."; symbolic links are kept. 76 when no mount holds it, 52 when a name in it holds a
    /// backslash.
    std::string toProgram(std::string_view nativePath) const;
    /// What a person typed or another program handed over, in either form or as file:// address: the
    /// program's path. "C:\..." and "\\server\..." pass unchanged.
    std::string fromPerson(std::string_view text) const;
    /// Names directly in a folder that lead to a mount: "C:\" holds "Program Files" when only the
    /// application folder is mounted below it.
    std::vector<std::string> mountsBelow(std::string_view folder) const;

private:
    std::vector<Mount> mounts_;  // longest prefix first
};

}  // namespace velnor
