// core/dropped_files.h - files that another program lets fall on a window.
#pragma once

#include <QStringList>

class QMimeData;

namespace velnor {

/// The dropped files as the program names them; what is no local file is left out.
QStringList droppedFiles(const QMimeData& data);

}  // namespace velnor
