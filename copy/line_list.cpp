#include "copy/line_list.h"

#include <QPainter>

namespace velnor {

LineList::LineList(QWidget* parent) : QListWidget(parent)
{
    setSelectionMode(QAbstractItemView::SingleSelection);
    setUniformItemSizes(true);
    setAlternatingRowColors(true);
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(
        Qt::ScrollBarAlwaysOff);  // long lines are shortened, whole in their tip
    setMinimumHeight(fontMetrics().height() * 4);
}

void LineList::setEmptyText(const QString& text)
{
    emptyText_ = text;
    viewport()->update();
}

QStringList LineList::lines() const
{
    QStringList all;
    for (int i = 0; i < count(); ++i)
        all.append(item(i)->text());
    return all;
}

void LineList::setLines(const QStringList& lines)
{
    setUpdatesEnabled(false);
    clear();
    for (const QString& line : lines)
        addLine(line);
    setUpdatesEnabled(true);
}

void LineList::addLine(const QString& line)
{
    auto* added = new QListWidgetItem(line, this);
    added->setToolTip(line);
}

int LineList::highlighted() const
{
    const QList<QListWidgetItem*> chosen = selectedItems();
    return chosen.isEmpty() ? -1 : row(chosen.first());
}

void LineList::highlight(int line)
{
    setCurrentRow(line, QItemSelectionModel::ClearAndSelect);
}

void LineList::paintEvent(QPaintEvent* event)
{
    QListWidget::paintEvent(event);
    if (count() > 0 || emptyText_.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const int margin = fontMetrics().averageCharWidth() * 2;
    painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
}

}  // namespace velnor
