#include "windows/outline_style.h"

#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>

namespace velnor {

namespace {
constexpr qreal kOffOpacity = 0.35;
}

OutlineStyle::OutlineStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

void OutlineStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool box = element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck;
    const bool round = element == PE_IndicatorRadioButton;
    if ((!box && !round) || option->palette.color(QPalette::Window).lightness() >= 128)
        return;
    QColor line = option->palette.color(QPalette::WindowText);
    line.setAlpha(option->state.testFlag(State_Enabled) ? 130 : 60);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(line);
    painter->setBrush(Qt::NoBrush);
    const QRectF frame = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    if (round)
        painter->drawEllipse(frame);
    else
        painter->drawRoundedRect(frame, 2, 2);
    painter->restore();
}

QPixmap OutlineStyle::generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                          const QStyleOption* option) const
{
    if (mode != QIcon::Disabled || pixmap.isNull())
        return QProxyStyle::generatedIconPixmap(mode, pixmap, option);
    QPixmap faint(pixmap.size());
    faint.setDevicePixelRatio(pixmap.devicePixelRatio());
    faint.fill(Qt::transparent);
    QPainter painter(&faint);
    painter.setOpacity(kOffOpacity);
    painter.drawPixmap(0, 0, pixmap);
    return faint;
}

}  // namespace velnor
