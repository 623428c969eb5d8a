// core/color_box.h - a box that shows a colour of the settings and asks for another when it is
// pressed.
#pragma once

#include <QAbstractButton>

#include "core/colors.h"

namespace velnor {

class ColorBox : public QAbstractButton {
    Q_OBJECT
public:
    explicit ColorBox(QWidget* parent = nullptr);

    ColorValue BackColor() const { return color_; }
    void setBackColor(ColorValue color);
    QSize sizeHint() const override;

signals:
    void colorChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void describe();
    ColorValue color_ = 0;
};

}  // namespace velnor
