#include "windows/text_style_delegate.h"

#include <QApplication>
#include <QPainter>

#include "core/globals.h"

namespace velnor {

void TextStyleDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const
{
    const QString& way = globals().GRID_TEXT_STYLE;
    const bool raised = way == QLatin1String("R");
    if (!raised && way != QLatin1String("I")) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QString text = cell.text;
    const QWidget* view = option.widget;
    const QStyle* style = view ? view->style() : QApplication::style();
    cell.text.clear();
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, view);

    cell.text = text;
    const QRect room =
        style->subElementRect(QStyle::SE_ItemViewItemText, &cell, view).adjusted(3, 0, -3, 0);
    const bool chosen = cell.state.testFlag(QStyle::State_Selected);
    const QColor ink = cell.palette.color(chosen ? QPalette::HighlightedText : QPalette::Text);
    const QColor ground = cell.palette.color(chosen ? QPalette::Highlight : QPalette::Base);
    // Light from the upper left: an edge below raised text lies in shadow, one below lowered text
    // in the light.
    const QColor edge = ground.lightness() > 128
                            ? (raised ? ground.darker(150) : ground.darker(115))
                            : (raised ? ground.lighter(220) : ground.lighter(160));
    const QString line = cell.fontMetrics.elidedText(text, cell.textElideMode, room.width());
    painter->save();
    painter->setFont(cell.font);
    painter->setPen(edge);
    painter->drawText(room.translated(raised ? 1 : -1, raised ? 1 : -1),
                      static_cast<int>(cell.displayAlignment), line);
    painter->setPen(ink);
    painter->drawText(room, static_cast<int>(cell.displayAlignment), line);
    painter->restore();
}

void ExplorerLinesDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    if (!globals().EXPLORER_GRID_LINES)
        return;
    QColor line = option.palette.color(QPalette::Text);
    line.setAlpha(60);
    painter->save();
    painter->setPen(line);
    painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
    painter->drawLine(option.rect.topRight(), option.rect.bottomRight());
    painter->restore();
}

}  // namespace velnor
