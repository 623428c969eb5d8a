// core/window_list.h - the open windows, in the order in which they were opened. The main window is
// the first.
#pragma once

#include <functional>
#include <memory>

#include <QString>
#include <QStringList>

class QWidget;

namespace velnor {

struct OpenWindow {
    std::function<QString()> caption;
    std::function<void()> bringToFront;
    std::function<void()> close;
    QWidget* widget = nullptr;  ///< parent for messages about it
};

/// Keeps a window in the list as long as it lives. Hold it as a member of the window.
class WindowEntry {
public:
    WindowEntry() = default;
    explicit WindowEntry(OpenWindow window);
    /// Of a widget: windowTitle(), raise() and activateWindow(), close().
    explicit WindowEntry(QWidget* widget);
    ~WindowEntry();
    WindowEntry(WindowEntry&&) noexcept = default;
    WindowEntry& operator=(WindowEntry&& other) noexcept;

private:
    std::shared_ptr<OpenWindow> window_;
};

/// Captions in order; the first is the main window's.
QStringList openCaptions();

/// Closes the window that displays a file, by its caption, after telling so: the words, and the
/// caption behind them. Looks from the second window on and takes the first match. False when there
/// is none.
bool CloseWindowOfFile(
    const QString& wanted,
    const QString& words = QStringLiteral("Window Displaying Database must be Closed to Send - "));

}  // namespace velnor
