// windows/table_pane.h - the tables of a file and the indexes of the one shown, each list under its
// heading, shown and hidden by themselves. The pane is seen while one of them is.
#pragma once

#include <QWidget>

class QListWidget;
class QToolButton;
class QVBoxLayout;

namespace velnor {

class TablePane : public QWidget {
    Q_OBJECT
public:
    explicit TablePane(QWidget* parent = nullptr);

    QListWidget* List1;  // tables
    QListWidget* List2;  // indexes
    QToolButton* ExitDBaseBtn;

    /// Fills a list and selects its first entry; nobody has chosen that.
    void setTables(const QStringList& names);
    void setIndexes(const QStringList& names);
    /// The table that is shown now, however it was chosen.
    void markTable(const QString& name);
    QStringList tables() const;

    /// Shows a list, with the focus, or hides it.
    void toggleTables();
    void toggleIndexes();
    void hideBoth();

signals:
    /// People chose an entry of List1, of List2; once or twice for one choice.
    void tableClicked();
    void indexClicked();
    void closed();

private:
    QListWidget* headedList(QVBoxLayout* column, const QString& name, const QString& heading,
                            const QString& tip, QWidget*& boxOut);
    void connectClicks(const QListWidget& list, void (TablePane::*chosen)());
    void toggle(QWidget* box, QListWidget* list);
    void showPane();

    QWidget* tableBox_;
    QWidget* indexBox_;
};

/// The small button that closes a pane.
QToolButton* closeButton(QWidget* parent, const QString& name, const QString& tip);

}  // namespace velnor
