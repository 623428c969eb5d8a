// core/startup.h - from process start to the main window: the application folder and the defaults.
// Nothing is read from the settings files here; they replace the defaults while the main window
// loads.
#pragma once

namespace velnor {

/// Fills the shared state. A step that fails doesn't stop the next.
void StartProgram();
/// Every colour at its default.
void SetDefaultColors();
/// Every option at its default, and the table of file types.
void SetDefaultOptions();

}  // namespace velnor
