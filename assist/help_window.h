// assist/help_window.h - the help: pages of its own, a list of them, and a search over all.
#pragma once

#include <QWidget>

class QLineEdit;
class QListWidget;
class QTextBrowser;

namespace velnor {

class HelpWindow : public QWidget {
    Q_OBJECT
public:
    explicit HelpWindow(QWidget* parent = nullptr);

    QListWidget* contents;
    QLineEdit* search;  // leaves only the pages that have the words
    QTextBrowser* page;

    /// A topic is a page's name, "data-entry"; an unknown or empty one shows the first page.
    void showTopic(const QString& topic);
    void startSearch();
    /// The topics that there are, in the order of the list.
    static QStringList topics();

private:
    void filter();
    void openAt(int row);
};

}  // namespace velnor
