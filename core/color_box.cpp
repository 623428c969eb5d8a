#include "core/color_box.h"

#include <QEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>

namespace velnor {

ColorBox::ColorBox(QWidget* parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    describe();
}

void ColorBox::setBackColor(ColorValue color)
{
    color_ = color;
    describe();
    update();
    emit colorChanged();
}

void ColorBox::describe()
{
    const QString name = toQColor(color_).name();
    setAccessibleDescription(color_ < 0 ? tr("The desktop's own color, now %1").arg(name) : name);
    setToolTip(accessibleDescription());
}

QSize ColorBox::sizeHint() const
{
    const int high = fontMetrics().height() + 8;
    return {high * 3, high};
}

void ColorBox::changeEvent(QEvent* event)
{
    QAbstractButton::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        describe();
}

void ColorBox::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(toQColor(color_));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    if (!hasFocus())
        return;
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.rect = rect().adjusted(2, 2, -2, -2);
    focus.backgroundColor = toQColor(color_);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
}

}  // namespace velnor
