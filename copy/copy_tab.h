// copy/copy_tab.h - the copy workspace: a From file, a To file, the match of their fields, and the
// copy.
//
// What is matched stands in List3[2] and nowhere else; copying reads those lines back. Long work
// runs to its end without giving events a turn: statusText says before it what runs, and after it
// how it ended.
#pragma once

#include <array>
#include <functional>

#include <QList>
#include <QString>
#include <QWidget>

#include "copy/copy_engine.h"
#include "copy/copy_side.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

namespace velnor {

class LineList;

/// A command of this tab for menus and tools. Without a procedure it is one that another room
/// brings.
struct CopyCommand {
    QString id;
    QString text;
    QString tip;
    std::function<void()> procedure;
};

class CopyTab : public QWidget {
    Q_OBJECT
public:
    explicit CopyTab(QWidget* parent = nullptr);

    // Controls. Index 0 is From, 1 is To.
    QPushButton* OpenFromBtn;
    QPushButton* CloseFromBtn;
    QPushButton* OpenToBtn;
    QPushButton* CloseToBtn;
    std::array<QLabel*, 3> Label3;  // the two paths, hidden while no file is open; the result line
    std::array<QComboBox*, 2> CMBRECORD;  // the record sources of each file
    std::array<LineList*, 3> List3;       // From field lines, To field lines, match lines
    QPushButton* SelectBtn;               // match the two highlighted lines
    QPushButton* SelectAllBtn;            // match automatically
    QPushButton* CancelBtn;               // remove the highlighted match
    QPushButton* CopyBtn;
    QPushButton* ClearCopyLogBtn;
    QCheckBox* CHKCPYQRY;  // take the From records from the active query

    // What the controls do.
    void OpenFromBtn_Click();
    void OpenToBtn_Click();
    void CloseFromBtn_Click();
    void CloseToBtn_Click();
    void CMBRECORD_Click(int index);
    void CHKCPYQRY_Click();
    void SelectBtn_Click();
    void SelectAllBtn_Click();
    void CancelBtn_Click();
    void CopyBtn_Click();
    void ClearCopyLogBtn_Click();

    // Shared procedures.
    void SelectCopyFile();
    void SetCopyFromFile();
    void SetCopyToFile();
    /// True once the opening of the side's file has begun.
    bool LoadCopyFields(int index);
    void BuildFieldMatches();
    /// False when a match of two types was refused.
    bool CheckFieldTypes();
    void CopyRecords();
    /// One row in the log for each match line. True when all were written.
    bool WriteCopyLog();

    // State that the copy log reads, too.
    CopySide From;
    CopySide To;
    MatchArrays Matches;
    bool COPY_FROM_QUERY = false;

    /// The commands in the order of the Copy Toolbar.
    QList<CopyCommand> commands();

signals:
    /// What is going on, for the status bar.
    void statusText(const QString& text);

private:
    // copy_tab_controls.cpp
    void buildControls();
    QWidget* buildSide(int index);
    QWidget* buildMatches();
    QWidget* buildResult();
    void connectControls();
    void showEmptyStates();

    CopySide& side(int index) { return index == 0 ? From : To; }
    void setCopyFile(int index);
    /// Takes WORK_FILE as the file of a side.
    void openWorkFile(int index);
    void closeSide(int index);
    void loadFields(int index);
    void enableMatchButtons();
    void backUpTarget();
    CopyJob job() const;
    void showResult(const QString& text);
    void say(const QString& text);

    bool recordClickGuard_ = false;
    int filterIndex_ = 1;  // of the open dialog, as it was left
    QString folder_;
};

}  // namespace velnor
