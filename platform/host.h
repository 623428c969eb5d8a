// platform/host.h - the one place that knows which files, clock and desktop the program runs on.
#pragma once

#include <memory>
#include <string>

#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/file_system.h"
#include "platform/host_paths.h"

namespace velnor {

struct Host {
    FileSystem* files = nullptr;
    const Clock* clock = nullptr;
    Desktop* desktop = nullptr;
    HostPaths* paths = nullptr;
    std::string currentFolder;  ///< "C:\...", the process's folder as the program sees it
};

/// The host in force: the machine with "C:" on its root and no desktop, until another is set. main() sets
/// the real one; tests set theirs and put the old one back.
Host& host();
void setHost(Host* replacement);  ///< null: the first one again

/// Opens paths of HostPaths with the system's calls.
std::unique_ptr<FileSystem> makeLinuxFileSystem(const HostPaths& paths);

}  // namespace velnor
