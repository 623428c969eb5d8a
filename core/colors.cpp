#include "core/colors.h"

#include <QGuiApplication>
#include <QPalette>

namespace velnor {
namespace {

/// The part of the palette that a numbered colour of the desktop is.
QPalette::ColorRole roleOf(int number)
{
    switch (number) {
    case 2:   // caption of the active window
    case 13:  // selection
        return QPalette::Highlight;
    case 9:
    case 14:
        return QPalette::HighlightedText;
    case 5:
        return QPalette::Base;
    case 7:  // text of menus
        return QPalette::WindowText;
    case 8:
        return QPalette::Text;
    case 6:   // frame of a window
    case 16:  // shadow of a button
        return QPalette::Dark;
    case 12:  // behind document windows
        return QPalette::Mid;
    case 17:
        return QPalette::PlaceholderText;
    case 15:
        return QPalette::Button;
    case 18:
        return QPalette::ButtonText;
    case 20:
        return QPalette::Light;
    case 23:
        return QPalette::ToolTipText;
    case 24:
        return QPalette::ToolTipBase;
    default:  // menus, scroll bars, borders
        return QPalette::Window;
    }
}

}  // namespace

QColor toQColor(ColorValue color)
{
    const auto bits = static_cast<quint32>(color);
    if (bits & 0x80000000u)
        return QGuiApplication::palette().color(roleOf(static_cast<int>(bits & 0xFF)));
    return QColor(static_cast<int>(bits & 0xFF), static_cast<int>(bits >> 8 & 0xFF),
                  static_cast<int>(bits >> 16 & 0xFF));
}

ColorValue toColorValue(const QColor& color)
{
    return color.red() | color.green() << 8 | color.blue() << 16;
}

ColorPair followingColors(ColorPair set, ColorPair mainWindow)
{
    const bool untouched =
        set == kFirstDisplayColors || set == kFirstTabColors || set == kFirstButtonColors;
    return untouched && isDesktopPair(mainWindow) ? kDesktopWindow : set;
}

namespace {

ColorPair mainColors()
{
    return {globals().MAIN_BACK_COLOR, globals().MAIN_TEXT_COLOR};
}

}  // namespace

ColorPair displayColors()
{
    const auto& G = globals();
    return followingColors({G.DISPLAY_BACK_COLOR, G.DISPLAY_TEXT_COLOR}, mainColors());
}

ColorPair tabColors()
{
    const auto& G = globals();
    return followingColors({G.TAB_BACK_COLOR, G.TAB_TEXT_COLOR}, mainColors());
}

ColorPair buttonColors()
{
    const auto& G = globals();
    return followingColors({G.BUTTON_BACK_COLOR, G.BUTTON_TEXT_COLOR}, mainColors());
}

}  // namespace velnor
