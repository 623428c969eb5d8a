// core/application_folder.h - the application folder of this user, "C:\Program Files\Velnor3" for
// the program: settings, catalogue and logs live there, beside the files that are delivered with
// the program.
#pragma once

#include <QString>

#include "platform/host_paths.h"

namespace velnor {

/// Makes the folder if need be (XDG data home, "Velnor3"), puts delivered files there that are
/// missing, and mounts it. Gives its native path. Files that stand there are never touched.
QString prepareApplicationFolder(HostPaths& paths);
/// The same for a native folder of the caller's choice.
void prepareApplicationFolder(HostPaths& paths, const QString& nativeFolder);
/// Mounts the drives of a person's own map, XDG config folder "velnor/drives.map"; no such file, no
/// drives.
void readDriveMap(HostPaths& paths);

}  // namespace velnor
