// core/twips.h - sizes and places of windows are kept in twips, 1440 to the inch; screens count
// pixels, 96 to the inch before scaling. Twips pass through here and nowhere else.
#pragma once

#include <algorithm>
#include <cmath>

namespace velnor {

inline constexpr int kTwipsPerPixel = 1440 / 96;

inline int toPixels(int twips)
{
    return static_cast<int>(std::lround(static_cast<double>(twips) / kTwipsPerPixel));
}

inline int toTwips(int pixels)
{
    return pixels * kTwipsPerPixel;
}

/// Where a window goes: its stored place, or 500 when that is off the screen. All in twips.
inline int placeOnScreen(int stored, int screenExtent)
{
    return stored < 0 || stored > screenExtent ? 500 : stored;
}

/// A stored width or height in pixels; at most two screens, since a damaged file can ask for a
/// window that no memory holds.
inline int sizeInPixels(int stored, int screenPixels)
{
    return std::min(toPixels(stored), 2 * screenPixels);
}

}  // namespace velnor
