// windows/childfrm3.h - the data entry window: one record of a table at a time, a control for each
// field.
//
// The boxes are bound to Data1. Every record is open for editing as soon as it is shown, and moving
// away saves what was changed. A new record is saved by SaveRecord, or when the window closes;
// moving away drops it: required. What the engine refuses stays in the boxes, to be mended.
#pragma once

#include <QList>

#include "windows/data_control.h"
#include "windows/document_child.h"
#include "windows/table_source.h"

class QCheckBox;
class QLabel;

namespace velnor {

class BoundField;
class EntryPane;
class ToolSet;

class ChildFrm3 : public DocumentChild {
    Q_OBJECT
public:
    explicit ChildFrm3(MDIForm1& shell);
    ~ChildFrm3() override;

    // Controls.
    DataControl Data1;
    QList<QWidget*> Text1;       // one for each field that is no check box
    QList<QCheckBox*> CHKLOGIC;  // one for each Boolean field
    QList<QLabel*> Label1;       // the names of the fields in Text1
    EntryPane* pane;             // Frame1 and VScroll1
    ToolSet* ToolBarComp1;
    QLabel* ID_DataPosition;

    // Members that others look at.
    QChar EntryMode = u'E';   ///< "A" while a new record is added, "E" while editing
    qint32 RecordTotal = 0;   ///< kept by hand: other windows' records don't count
    bool EmptyTable = false;  ///< no records at load

    void Form_Load() override;
    void Form_Activate() override;
    void enableTools() override;
    void mnuFileRefresh_Click() override;
    void mnuFileSaveAs_Click() override;
    void mnuEditCopy_Click() override;
    void showTable(const QString& name) override;
    QStringList tables() const override { return source_.tables; }
    void releaseFile() override;
    bool mayClose() override;
    void applyOptions() override;

    // What the tools do.
    void AddRecord();
    void SaveRecord();
    void DeleteRecord();
    void RefreshEntry();
    void ToolBarComp1_Click(const QString& tool);
    void BuildEntryFields();
    void Data1_Reposition();
    void Data1_Error(int number, const QString& description);

protected:
    void Form_Unload() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // childfrm3_controls.cpp
    void buildControls();
    void buildTools();
    void addEntryRow(int number, int position, const FieldDef& field);
    void clearEntryFields();

    void openTable();
    bool chooseTable();
    void openRecords();
    void startRecords();
    void setMode(QChar mode);
    void attachTo(const QString& folder, const QString& source, const QString& connect);
    void runTool(const QString& tool);
    void Data1_Validate(DataAction& action, bool& save);
    void saveWithoutMoving();
    void tellOthers();
    void backToTheEnd(bool last);
    void openForEditing();
    void showPosition();
    void takeBack();
    QString firstText() const;
    void tellRefused(const QString& description);
    void tellOpening(int number, const QString& description);
    void nameWindow();

    TableSource source_;
    QList<BoundField*> bound_;
    bool opened_ = false;   // counted in DATABASE_COUNT
    bool closing_ = false;  // the file could not be opened
    bool loading_ = false;  // Data1 opens: nobody has moved yet
    bool saved_ = false;    // records were changed that other windows may show
    bool writable_ = true;  // as far as the engine has said
    bool firstActivated_ = false;
};

}  // namespace velnor
