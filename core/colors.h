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

}  // namespace velnor
