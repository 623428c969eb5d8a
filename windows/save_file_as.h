// windows/save_file_as.h - a copy of a file and its companions under a name that the user chooses.
#pragma once

#include <QString>

class QWidget;

namespace velnor {

/// Asks for the new name and copies. Companions (memo and index files) go first. False, with a
/// message, when nothing was saved; Cancel counts as that. The source is taken by value: windows
/// close on the way, and with them goes or changes the place that a reference would name.
bool SaveFileAs(QString source, QWidget* parent = nullptr);

}  // namespace velnor
