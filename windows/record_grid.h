// windows/record_grid.h - the grid over a table's records: moves by rows, copies cells as
// tab-separated text, shows words when there is nothing to show.
#pragma once

#include <QTableView>

namespace velnor {

class RecordGrid : public QTableView {
    Q_OBJECT
public:
    explicit RecordGrid(QWidget* parent = nullptr);
    /// What stands in the middle of an empty grid.
    void setEmptyText(const QString& text);
    const QString& emptyText() const { return emptyText_; }
    /// What the first rows of a column need to be seen whole.
    int firstValuesWidth(int column) const;
    /// The chosen cells, rows by line ends, cells by tabs. Empty when nothing is chosen.
    QString selectedText() const;
    void copySelection();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString emptyText_;
};

}  // namespace velnor
