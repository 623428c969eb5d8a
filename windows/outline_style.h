// windows/outline_style.h - Fusion for dark desktops, too: the outlines of check boxes and radio
// buttons are drawn clearly, where its own are as dark as the window, and the icon of a tool that is
// off is faint on any ground.
#pragma once

#include <QProxyStyle>

namespace velnor {

class OutlineStyle : public QProxyStyle {
    Q_OBJECT
public:
    OutlineStyle();
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    QPixmap generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                const QStyleOption* option) const override;
};

}  // namespace velnor
