// windows/text_style_delegate.h - cells of a grid or list as the options want them: text flat,
// raised or lowered, and lines between the rows of the explorer.
#pragma once

#include <QStyledItemDelegate>

namespace velnor {

/// Draws by GRID_TEXT_STYLE: "F" flat, "R" raised, "I" lowered.
class TextStyleDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};

/// Draws a line under and beside each cell when EXPLORER_GRID_LINES is on.
class ExplorerLinesDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};

}  // namespace velnor
