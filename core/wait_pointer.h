// core/wait_pointer.h - the wait pointer for as long as a long step runs.
#pragma once

#include <QGuiApplication>

namespace velnor {

class WaitPointer {
public:
    WaitPointer() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitPointer() { QGuiApplication::restoreOverrideCursor(); }
    WaitPointer(const WaitPointer&) = delete;
    WaitPointer& operator=(const WaitPointer&) = delete;
};

}  // namespace velnor
