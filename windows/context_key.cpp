#include "windows/context_key.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QWidget>

namespace velnor {

ContextKey::ContextKey(QApplication& app)
{
    app.installEventFilter(this);
}

bool ContextKey::eventFilter(QObject* watched, QEvent* event)
{
    auto* focus = qobject_cast<QWidget*>(watched);
    if (!focus || event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() != Qt::Key_F10 || key->modifiers() != Qt::ShiftModifier)
        return QObject::eventFilter(watched, event);
    const QPoint at = focus->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, at, focus->mapToGlobal(at));
    QApplication::sendEvent(focus, &menu);
    return true;
}

}  // namespace velnor
