// windows/context_key.h - Shift+F10 opens the context menu of what has the focus, as the menu key
// does, which not every keyboard has.
#pragma once

#include <QObject>

class QApplication;

namespace velnor {

class ContextKey : public QObject {
public:
    /// Watches over all windows as long as it lives.
    explicit ContextKey(QApplication& app);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace velnor
