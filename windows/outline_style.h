// windows/outline_style.h - Fusion with the outlines of check boxes and radio buttons drawn clearly
// on a dark desktop, where its own are as dark as the window.
#pragma once

#include <QProxyStyle>

namespace velnor {

class OutlineStyle : public QProxyStyle {
    Q_OBJECT
public:
    OutlineStyle();
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
};

}  // namespace velnor
