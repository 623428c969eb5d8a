// windows/dropped_files.h - shows the files that another program lets fall on a window.
#pragma once

class QMimeData;

namespace velnor {

/// Shows each of them.
void openDroppedFiles(const QMimeData& data);

}  // namespace velnor
