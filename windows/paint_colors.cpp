#include "windows/paint_colors.h"

#include <QPalette>
#include <QWidget>

#include "core/colors.h"

namespace velnor {

namespace {
constexpr ColorValue kDesktopWindow = colorValue(0x80000005);
constexpr ColorValue kDesktopWindowText = colorValue(0x80000008);
}  // namespace

void paintField(QWidget& widget, ColorValue back, ColorValue text)
{
    if (back == kDesktopWindow && text == kDesktopWindowText) {
        widget.setPalette({});
        return;
    }
    QPalette palette;
    palette.setColor(QPalette::Base, toQColor(back));
    palette.setColor(QPalette::AlternateBase, toQColor(back));
    palette.setColor(QPalette::Text, toQColor(text));
    widget.setPalette(palette);
}

void useBoldOption(QWidget& widget)
{
    QFont font = widget.font();
    font.setBold(globals().BOLD_TEXT);
    widget.setFont(font);
}

}  // namespace velnor
