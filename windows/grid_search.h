// windows/grid_search.h - looks through the records of a grid for a text, a stretch at a time, so
// that the window answers and the search can be left.
#pragma once

#include <functional>

#include <QObject>
#include <QTimer>

namespace velnor {

class RecordsetModel;

class GridSearch : public QObject {
    Q_OBJECT
public:
    explicit GridSearch(RecordsetModel& rows, QObject* parent = nullptr);

    /// Looks from the cell behind (row, column) on to the end, blind to case; then from the first
    /// cell up to there. Another search that runs is left.
    void start(const QString& words, int row, int column);
    void stop();
    bool running() const { return timer_.isActive(); }

signals:
    void found(int row, int column);
    void notFound();
    /// On the way, a few times a second.
    void at(int row);

private:
    void stretch();
    /// The first column from `from` on whose text has the words; -1 when none has.
    int columnIn(int row, int from, int end) const;

    RecordsetModel& rows_;
    QTimer timer_;
    QString words_;
    int row_ = 0, column_ = 0;          // what is looked at next
    int lastRow_ = 0, lastColumn_ = 0;  // where the search began
    bool wrapped_ = false;
};

}  // namespace velnor
