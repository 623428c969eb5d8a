// windows/paint_colors.h - the colours and type of the settings on a widget.
#pragma once

#include "core/globals.h"

class QWidget;

namespace velnor {

/// Background and text of a list, a grid or a field. The desktop's own pair for a window leaves the
/// widget to the desktop's style, so that light and dark come through.
void paintField(QWidget& widget, ColorValue back, ColorValue text);
/// Bold type when the option says so.
void useBoldOption(QWidget& widget);

}  // namespace velnor
