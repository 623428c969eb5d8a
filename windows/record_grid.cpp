#include "windows/record_grid.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

namespace velnor {

using namespace Qt::StringLiterals;

namespace {
constexpr int kFirstRows = 30;
constexpr int kMostCopiedRows = 100'000;  // more than a clipboard is good for
}  // namespace

RecordGrid::RecordGrid(QWidget* parent) : QTableView(parent)
{
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::ContiguousSelection);
    setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setWordWrap(false);
    setAlternatingRowColors(true);
    setTabKeyNavigation(false);
    setCornerButtonEnabled(false);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsMovable(true);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultAlignment(Qt::AlignRight | Qt::AlignVCenter);
    verticalHeader()->setHighlightSections(false);

    auto* copy = new QAction(QIcon::fromTheme(u"edit-copy"_s), tr("&Copy Cells"), this);
    connect(copy, &QAction::triggered, this, &RecordGrid::copySelection);
    addAction(copy);
    setContextMenuPolicy(Qt::ActionsContextMenu);
}

void RecordGrid::setEmptyText(const QString& text)
{
    emptyText_ = text;
    viewport()->update();
}

int RecordGrid::firstValuesWidth(int column) const
{
    const int rows = qMin(kFirstRows, model() ? model()->rowCount() : 0);
    const int margins = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 3);
    int width = 0;
    for (int row = 0; row < rows; ++row) {
        const QString text = model()->index(row, column).data().toString();
        width = qMax(width, fontMetrics().horizontalAdvance(text) + margins);
    }
    return width;
}

QString RecordGrid::selectedText() const
{
    const auto ranges = selectionModel() ? selectionModel()->selection() : QItemSelection();
    if (ranges.isEmpty())
        return {};
    const QItemSelectionRange range = ranges.first();
    const int last = std::min(range.bottom(), range.top() + kMostCopiedRows - 1);
    QString all;
    for (int row = range.top(); row <= last; ++row) {
        for (int place = 0, first = true; place < horizontalHeader()->count(); ++place) {
            const int column = horizontalHeader()->logicalIndex(place);
            if (column < range.left() || column > range.right())
                continue;
            if (!first)
                all += u'\t';
            first = false;
            all += model()->index(row, column).data().toString();
        }
        all += u'\n';
    }
    all.chop(1);
    return all;
}

void RecordGrid::copySelection()
{
    const QString chosen = selectedText();
    if (!chosen.isEmpty())
        QGuiApplication::clipboard()->setText(chosen);
}

void RecordGrid::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy)) {
        copySelection();
        return;
    }
    const int rows = model() ? model()->rowCount() : 0;
    const bool plain = event->modifiers() == Qt::NoModifier;
    if (plain && rows > 0 && (event->key() == Qt::Key_End || event->key() == Qt::Key_Home)) {
        const int column = std::max(0, currentIndex().column());
        setCurrentIndex(model()->index(event->key() == Qt::Key_End ? rows - 1 : 0, column));
        return;
    }
    QTableView::keyPressEvent(event);
}

void RecordGrid::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (emptyText_.isEmpty() || (model() && model()->rowCount() > 0))
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12),
                     Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
}

}  // namespace velnor
