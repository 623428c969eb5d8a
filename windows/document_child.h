// windows/document_child.h - what each child window of the document shell answers. The shell hands
// its commands to the child in front by these names; a kind that has no such command does nothing.
#pragma once

#include <memory>

#include <QString>
#include <QWidget>

#include "core/window_list.h"

class QMdiSubWindow;

namespace velnor {

class DataControl;
class MDIForm1;

class DocumentChild : public QWidget {
    Q_OBJECT
public:
    explicit DocumentChild(MDIForm1& shell);
    ~DocumentChild() override;

    QString FILE_USE;  ///< the path that this window stands for
    QString HLDTABLE;  ///< the table shown, where there is one

    /// Opens SELECTED_FILE. Run once, before the window is shown.
    virtual void Form_Load() = 0;
    /// The window has come to the front.
    virtual void Form_Activate() = 0;
    /// Switches the shell's tools to what this kind of window can do.
    virtual void enableTools() = 0;

    virtual void mnuViewTable_Click() {}
    virtual void mnuViewIndex_Click() {}
    virtual void mnuViewComments_Click() {}
    virtual void mnuFileClose_Click();
    virtual void mnuFileRefresh_Click() {}
    virtual void mnuFileSaveAs_Click();
    virtual void mnuFileOLE_Click();
    virtual void mnuEditCopy_Click() {}
    virtual void mnuFindText_Click() {}
    virtual void mnuFindNextText_Click() {}
    /// Goes from the grid to data entry, or back.
    virtual void ID_DataToggle_Click() {}
    /// Shows another table of the same file.
    virtual void showTable(const QString& name) { Q_UNUSED(name) }
    /// The tables of the file, for the shell's list of them.
    virtual QStringList tables() const { return {}; }

    /// Lets go of the file while the window stays open.
    virtual void releaseFile() {}
    /// Takes colours and type of the options anew.
    virtual void applyOptions() {}
    /// Records of a table were changed in another window.
    virtual void recordsChanged() {}
    /// False when something is left that could not be saved: the window then stays.
    virtual bool mayClose() { return true; }

    /// The whole path, and what tells twins apart. Tabs and frames show the file's name alone.
    const QString& caption() const { return caption_; }
    void setCaption(const QString& caption);
    /// Closes the window at the event loop's next turn; for a window that must not stay open.
    void unloadSoon();
    bool unloaded() const { return unloaded_; }

protected:
    /// What the window gives back when it goes. Run once.
    virtual void Form_Unload() = 0;
    void closeEvent(QCloseEvent* event) override;
    QMdiSubWindow* frame() const;

    MDIForm1& shell_;

private:
    WindowEntry entry_;
    QString caption_;
    bool unloaded_ = false;
};

}  // namespace velnor
