#include "windows/grid_search.h"

#include <QElapsedTimer>

#include "windows/recordset_model.h"

namespace velnor {

namespace {
constexpr int kStretchMs = 40;
}

GridSearch::GridSearch(RecordsetModel& rows, QObject* parent) : QObject(parent), rows_(rows)
{
    timer_.setInterval(0);
    connect(&timer_, &QTimer::timeout, this, &GridSearch::stretch);
    connect(&rows, &QAbstractItemModel::modelReset, this, &GridSearch::stop);
}

void GridSearch::start(const QString& words, int row, int column)
{
    words_ = words;
    lastRow_ = row_ = qMax(0, row);
    lastColumn_ = qMax(-1, column);
    column_ = lastColumn_ + 1;
    wrapped_ = false;
    if (words.isEmpty() || rows_.rowCount() == 0 || rows_.columnCount() == 0)
        emit notFound();
    else
        timer_.start();
}

void GridSearch::stop()
{
    timer_.stop();
}

int GridSearch::columnIn(int row, int from, int end) const
{
    for (int column = from; column < end; ++column)
        if (rows_.fullText(row, column).contains(words_, Qt::CaseInsensitive))
            return column;
    return -1;
}

void GridSearch::stretch()
{
    QElapsedTimer spent;
    spent.start();
    const int count = rows_.rowCount();
    while (spent.elapsed() < kStretchMs) {
        if (row_ >= count && !wrapped_) {
            wrapped_ = true;
            row_ = column_ = 0;
        }
        const bool back = wrapped_ && row_ >= lastRow_;
        const int end = back ? qMin(lastColumn_ + 1, rows_.columnCount()) : rows_.columnCount();
        const int column = columnIn(row_, column_, end);
        if (column >= 0) {
            stop();
            emit found(row_, column);
            return;
        }
        if (back) {
            stop();
            emit notFound();
            return;
        }
        ++row_;
        column_ = 0;
    }
    emit at(row_);
}

}  // namespace velnor
