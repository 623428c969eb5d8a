#include "windows/paint_colors.h"

#include <QPalette>
#include <QWidget>

namespace velnor {

void paintField(QWidget& widget, ColorPair pair)
{
    if (isDesktopPair(pair)) {
        widget.setPalette({});
        return;
    }
    QPalette palette;
    palette.setColor(QPalette::Base, toQColor(pair.back));
    palette.setColor(QPalette::AlternateBase, toQColor(pair.back));
    QColor text = toQColor(pair.text);
    palette.setColor(QPalette::Text, text);
    text.setAlpha(150);
    palette.setColor(QPalette::PlaceholderText, text);
    widget.setPalette(palette);
}

void paintSurface(QWidget& widget, ColorPair pair)
{
    widget.setAutoFillBackground(true);
    if (isDesktopPair(pair)) {
        widget.setPalette({});
        return;
    }
    QPalette palette;
    palette.setColor(QPalette::Window, toQColor(pair.back));
    palette.setColor(QPalette::WindowText, toQColor(pair.text));
    widget.setPalette(palette);
}

void useBoldOption(QWidget& widget)
{
    QFont font = widget.font();
    font.setBold(globals().BOLD_TEXT);
    widget.setFont(font);
}

}  // namespace velnor
