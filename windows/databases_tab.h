// windows/databases_tab.h - the file explorer: folders, the files of one folder, and the
// organizer.
//
// What is selected in the list is SELECTED_FILE; a double click shows it.
#pragma once

#include <functional>

#include "core/main_tab.h"

class QAbstractItemView;
class QComboBox;
class QLabel;
class QListView;
class QSplitter;
class QStackedWidget;
class QTreeView;

namespace velnor {

class FileListModel;
class FolderTreeModel;
class OrganizerPane;

class DatabasesTab : public MainTab {
    Q_OBJECT
public:
    explicit DatabasesTab(QWidget* parent = nullptr);

    // Controls.
    QTreeView* PTxShTree1;     // folders
    QTreeView* PTxShList1;     // files, with details
    QListView* fileIcons;      // the same files as icons or names
    QComboBox* filterCombo;    // the nine filters
    OrganizerPane* organizer;  // holds SSTree1

    /// What to switch when a file was selected, or none.
    std::function<void()> EnableSelectMenus = [] {};
    std::function<void()> DisableSelectMenus = [] {};
    /// Goes to the next working folder.
    std::function<void()> StepFolderList = [] {};
    /// Presses the tools that stand for a filter and a view.
    std::function<void(const QString& id)> pressTool = [](const QString&) {};

    QString caption() const override { return tr("Databases"); }
    QList<ToolRow> tools() override;
    void entered() override;

    /// 0 to 10; error 9 outside.
    void SetFilterButton(int index);
    void setListView(int view);
    void upFolder();
    void collapseTree();
    void goToFolder(const QString& folder);
    /// Goes to the folder of a file and selects it there.
    void showFile(const QString& path);
    void refresh();
    /// Puts the focus on the files, as soon as there are any to see.
    void focusFiles();
    QString folder() const;
    FileListModel& files() { return *files_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* buildTree();
    QWidget* buildList();
    QWidget* buildOrganizer();
    void dressView(QAbstractItemView& view);
    void treeFolderChosen(const QModelIndex& index);
    void fileChosen(const QModelIndex& index);
    void fileOpened(const QModelIndex& index);
    void filled();
    void keepCurrent();
    QAbstractItemView* view() const;

    FolderTreeModel* folders_;
    FileListModel* files_;
    QStackedWidget* views_;
    QLabel* place_;
    QLabel* count_;
    QLabel* emptyText_;
    QString waiting_;  // selected as soon as its folder has been read
    QString kept_;     // current before the rows were put in a new order, and again after it
    bool keeping_ = false;
    bool following_ = false;
    bool wantsFocus_ = false;
};

}  // namespace velnor
