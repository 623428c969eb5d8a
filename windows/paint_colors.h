// windows/paint_colors.h - the colours and type of the settings on a widget.
#pragma once

#include "core/colors.h"

class QWidget;

namespace velnor {

/// Background and text of a list, a grid or a field. A pair of the desktop leaves the widget to the
/// desktop's style.
void paintField(QWidget& widget, ColorPair pair);
/// Background of a surface and of what stands on it, and the text there.
void paintSurface(QWidget& widget, ColorPair pair);
/// A window with all that stands on it: lists, fields, buttons and bars each in their own pair.
void paintWorkspace(QWidget& window);
/// A dialog in the pair of select windows, its fields and buttons in theirs.
void paintDialog(QWidget& dialog);
/// Bold type when the option says so.
void useBoldOption(QWidget& widget);

}  // namespace velnor
