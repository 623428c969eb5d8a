// windows/childfrm1.h - the table browser: one table or sheet of a database file at a time, in a
// grid.
//
// A viewer: the grid doesn't edit. Data1 holds the file open until the window goes or lets go of
// it; the grid reads through a cursor of its own, so that painting never moves the record in hand.
#pragma once

#include <optional>

#include "core/bounded_array.h"
#include "windows/data_control.h"
#include "windows/document_child.h"
#include "windows/table_source.h"

class QListWidget;
class QPlainTextEdit;
class QToolButton;

namespace velnor {

class DataStrip;
class FindBar;
class GridSearch;
class PaneHeading;
class RecordGrid;
class RecordsetModel;
class TablePane;

class ChildFrm1 : public DocumentChild {
    Q_OBJECT
public:
    explicit ChildFrm1(MDIForm1& shell);
    ~ChildFrm1() override;

    // Controls.
    DataControl Data1;
    DataStrip* Data1Strip;  // the face of Data1
    RecordGrid* MSFlexGrid1;
    TablePane* Frame1;   // tables and indexes
    QListWidget* List1;  // tables
    QListWidget* List2;  // indexes
    QToolButton* ExitDBaseBtn;
    QWidget* Frame2;  // a memo as a whole
    QPlainTextEdit* Text2;
    QToolButton* ExitCommBtn;
    FindBar* findBar;

    // Members that others look at.
    short NUMINDEXES = 0;
    QString INDEX_NAME, SORTEDBY;
    bool CHILDQUERYACTIVE_FLG = false;
    QString QUERYSTATEMENT, QUERY_FILENAME;

    void Form_Load() override;
    void Form_Activate() override;
    void enableTools() override;
    void mnuViewTable_Click() override;
    void mnuViewIndex_Click() override;
    void mnuViewComments_Click() override;
    void mnuFileRefresh_Click() override;
    void mnuEditCopy_Click() override;
    void mnuFindText_Click() override;
    void mnuFindNextText_Click() override;
    void ID_DataToggle_Click() override;
    void showTable(const QString& name) override;
    QStringList tables() const override;
    void releaseFile() override;
    void recordsChanged() override;
    void applyOptions() override;

    // What the controls do.
    void List1_Click();
    void List2_Click();
    void MSFlexGrid1_Click();
    void ExitDBaseBtn_Click();
    void ExitCommBtn_Click();
    void Data1_Reposition();

    short columnType(int column) const { return columnTypes_[column]; }

protected:
    void Form_Unload() override;

private:
    void buildControls();
    QWidget* buildLists();
    QWidget* buildComments();
    QWidget* buildFind();
    void addGridActions();
    void openFile();
    bool chooseFirstTable();
    void refreshData();
    void tellOpening(int number, const QString& description);
    void fillIndexes();
    void setColumns();
    void setRowHeight();
    void paintWindow();
    // childfrm1_panes.cpp
    bool isMemo(int column) const;
    void showComments(int row, int column);
    // childfrm1_records.cpp
    void recordCell(int row);
    void orderBy(const QString& index);

    TableSource source_;
    BoundedArray<short, 301> columnTypes_;
    std::int64_t gridRow_ = 0;  // the record that Data1 stands on
    bool firstActivation_ = true;
    bool closeWindow_ = false;  // the file could not be opened
    bool opened_ = false;       // counted in DATABASE_COUNT
    bool following_ = false;    // the grid follows Data1: nobody clicked in it
    PaneHeading* commentsHeading_;
    RecordsetModel* rows_;
    GridSearch* search_;
};

}  // namespace velnor
