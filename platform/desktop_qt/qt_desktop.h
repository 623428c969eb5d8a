// platform/desktop_qt/qt_desktop.h - the desktop through Qt: other programs, trash, volumes,
// computer name.
#pragma once

#include <memory>

#include "platform/desktop.h"
#include "platform/host_paths.h"

namespace velnor {

/// Needs a QGuiApplication for openWith. `paths` must outlive it.
std::unique_ptr<Desktop> makeQtDesktop(const HostPaths& paths);

/// Starts the desktop's own program that tells about the machine; false when it has none.
bool startSystemInformation();

}  // namespace velnor
