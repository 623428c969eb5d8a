// core/colors.h - colours of the settings as colours to paint with.
#pragma once

#include <QColor>

#include "core/globals.h"

namespace velnor {

/// A colour of the desktop (high bit set) comes from the application's palette, any other from its
/// bytes.
QColor toQColor(ColorValue color);
/// From bytes red, green, blue; never a colour of the desktop.
ColorValue toColorValue(const QColor& color);
/// A value written in hexadecimal, such as 0x80000005.
constexpr ColorValue colorValue(quint32 bits)
{
    return static_cast<ColorValue>(bits);
}

/// A background and the text on it.
struct ColorPair {
    ColorValue back = 0;
    ColorValue text = 0;
    bool operator==(const ColorPair&) const = default;
};

/// A pair of colours of the desktop. What has one is left to the desktop's style, so that light and
/// dark come through.
constexpr bool isDesktopPair(ColorPair pair)
{
    return pair.back < 0 && pair.text < 0;
}
inline constexpr ColorPair kDesktopWindow{colorValue(0x80000005), colorValue(0x80000008)};

// No settings file keeps these three: each run begins with them.
inline constexpr ColorPair kFirstDisplayColors{0xE0E0E0, 0x4080};
inline constexpr ColorPair kFirstTabColors{colorValue(0x80000004), 0x800000};
inline constexpr ColorPair kFirstButtonColors{0xC0C0C0, 0};

/// What display fields, tabs and buttons are painted with. Until people set them they follow the
/// main window: they are the desktop's when that is.
ColorPair followingColors(ColorPair set, ColorPair mainWindow);
ColorPair displayColors();
ColorPair tabColors();
ColorPair buttonColors();

}  // namespace velnor
