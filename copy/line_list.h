// copy/line_list.h - a list of field or match lines that says in words why it is empty.
#pragma once

#include <QListWidget>
#include <QStringList>

namespace velnor {

class LineList : public QListWidget {
    Q_OBJECT
public:
    explicit LineList(QWidget* parent = nullptr);

    /// Shown in place of lines while there are none.
    void setEmptyText(const QString& text);
    const QString& emptyText() const { return emptyText_; }

    QStringList lines() const;
    void setLines(const QStringList& lines);
    void addLine(const QString& line);
    /// The position of the highlighted line from 0; -1 when there is none.
    int highlighted() const;
    void highlight(int line);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString emptyText_;
};

}  // namespace velnor
