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

/// `set` as people left it; its first value on a window in the desktop's colours is the desktop's.
ColorPair settled(ColorPair set, ColorPair first)
{
    const auto& G = globals();
    const bool untouched = set == first;
    return untouched && isDesktopPair({G.MAIN_BACK_COLOR, G.MAIN_TEXT_COLOR}) ? kDesktopWindow
                                                                              : set;
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

ColorPair displayColors()
{
    const auto& G = globals();
    return settled({G.DISPLAY_BACK_COLOR, G.DISPLAY_TEXT_COLOR}, kFirstDisplayColors);
}

ColorPair tabColors()
{
    const auto& G = globals();
    return settled({G.TAB_BACK_COLOR, G.TAB_TEXT_COLOR}, kFirstTabColors);
}

ColorPair buttonColors()
{
    const auto& G = globals();
    return settled({G.BUTTON_BACK_COLOR, G.BUTTON_TEXT_COLOR}, kFirstButtonColors);
}

}  // namespace velnor
