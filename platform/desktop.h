// platform/desktop.h - what the program asks of the desktop around it. Paths are "C:\..." text; they leave
// for other programs as native paths.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velnor {

struct VolumeInfo {
    std::string name;            ///< label, empty when there is none
    std::uint64_t freeBytes = 0; ///< for this user
    std::uint64_t totalBytes = 0;
};

class Desktop {
public:
    virtual ~Desktop() = default;
    /// Opens a file or a web address with the program that the desktop has for it. False: none.
    virtual bool openWith(std::string_view pathOrAddress) = 0;
    /// Moves a file to the trash; false when the volume has none (nothing was done).
    virtual bool moveToTrash(std::string_view path) = 0;
    /// This computer's name, as spelled; empty when it has none.
    virtual std::string computerName() = 0;
    /// Of the volume that really holds the path.
    virtual VolumeInfo volume(std::string_view path) = 0;
};

}  // namespace velnor
