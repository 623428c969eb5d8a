// windows/mdiform1.h - the document shell: holds a child window for each open file, and hands its
// tools to the child in front. It knows the kinds of children by name only here, in NewWindowFile.
#pragma once

#include <functional>

#include <QMainWindow>
#include <QPointer>

#include "core/window_list.h"
#include "windows/document_child.h"
#include "windows/tool_set.h"

class QComboBox;
class QLabel;
class QMdiArea;
class QMdiSubWindow;

namespace velnor {

/// What the shell asks of the main window beside it.
struct ShellLinks {
    std::function<void()> bringMainToFront = [] {};
    /// Runs a tool of the main window by its name.
    std::function<void(const QString& id)> runMainTool = [](const QString&) {};
    /// Why a tool of the main window is off; empty when it isn't.
    std::function<QString(const QString& id)> whyMainToolOff = [](const QString&) {
        return QString();
    };
};

class MDIForm1 : public QMainWindow {
    Q_OBJECT
public:
    explicit MDIForm1(ShellLinks links, QWidget* parent = nullptr);
    ~MDIForm1() override;

    // Shared with the children.
    QString NEWCAPTION;
    short NUM_CHILDWINDOWS = 0;
    short DATABASE_COUNT = 0;  ///< windows with an open table
    bool CLOSE_WINDOW_FLG = false;
    bool MDICLOSEALL_FLG = false;
    bool SHUTOFFCLICK_FLG = false;
    int CHILD_LEFT = 0, CHILD_TOP = 0;  ///< where the next child goes, twips

    ToolSet* ToolBarComp1;
    QComboBox* ID_CMBTable;  ///< the tables of the file in front

    /// Load: stored size and place; the shell counts as open from here on.
    void Form_Load();
    /// Comes to the front, and opens the file that waits.
    void Form_Activate();
    void bringUp();

    /// Opens the window for SELECTED_FILE under a caption of its own.
    void NewWindowFile(const QString& title);
    void AddToWindowList(DocumentChild* child);
    void removeFromWindowList(DocumentChild* child);
    /// The child's caption has changed.
    void renameInWindowList(DocumentChild* child);
    /// A caption that no open window bears: the title, or the title with "@" and a count.
    QString uniqueCaption(const QString& title) const;
    /// Tells the other windows on the same file.
    void recordsChanged(const DocumentChild& where);

    void DisableButtons();
    void EnableButtons();
    void EnableMDIButtons();
    void EnableTextButtons();
    void EnableDataButtons(short indexes);
    void SetMDIWinSize();

    DocumentChild* activeChild() const;
    QList<DocumentChild*> children() const;
    void bringToFront(DocumentChild* child);
    /// A child has gone: the one in front now has the tools, and the last leaves an empty shell.
    void childGone(DocumentChild* child);
    /// Fills the table combo for the child in front.
    void showTables(const DocumentChild& child);
    void showFileLength(const QString& text);

    /// Colours and type of the options, on the shell and its children.
    void applyOptions();
    void cascade();
    void tile(Qt::Orientation orientation);
    void showAsTabs();
    void nextFile();
    void openDialog();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    using ChildCommand = void (DocumentChild::*)();

    void buildTools();
    void buildMenus();
    ToolRow childTool(const QString& id, const QString& text, const QString& tip,
                      const QString& icon, ChildCommand command, QKeySequence key = {});
    ToolRow mainTool(const QString& id, const QString& text, const QString& icon = {});
    DocumentChild* makeChild();
    void showChild(QMdiSubWindow* window, DocumentChild* child, QPoint place);
    void childCameToFront(QMdiSubWindow* window);
    void ID_CMBTable_Change(int index);
    void allChildrenGone();
    void setState(int column, bool indexed = true);

    ShellLinks links_;
    QMdiArea* area_;
    QMenu* windowMenu_;
    QLabel* length_;
    QPointer<DocumentChild> active_;
    WindowEntry entry_;
    bool loaded_ = false;
};

}  // namespace velnor
