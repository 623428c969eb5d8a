// The data entry window: generated controls, modes, moves that save, deletes, refusals, ends.
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include "core/twips.h"
#include "tests/windows/window_fixture.h"
#include "windows/childfrm1.h"
#include "windows/childfrm3.h"
#include "windows/entry_fields.h"
#include "windows/entry_pane.h"
#include "windows/mdiform1.h"
#include "windows/record_grid.h"

using namespace velnor;
using namespace velnor::testing;

namespace {
const QString kInvalid = "Data Required or Data Invalid - Enter Data Correctly";
const QString kNoRecords =
    "No Records Present. Pack or Compact Table or Copy Records into Table to Proceed";
}  // namespace

class TstDataEntry : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        fixture_ = std::make_unique<WindowFixture>();
        shell_ = new MDIForm1({});
        shell_->Form_Load();
        shell_->show();
    }
    void cleanup()
    {
        delete shell_;
        fixture_.reset();
    }

    void boxes_goByTheType_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("most");
        const auto row = [](const char* name, int type, int size, EntryKind kind, int width,
                            int height = 0, int most = 0) {
            QTest::newRow(name) << type << size << int(kind) << width << height << most;
        };
        row("text", 10, 12, EntryKind::Line, 1440, 0, 12);
        row("text of 200 is capped", 10, 200, EntryKind::Line, 2500, 0, 200);
        row("char", 18, 5, EntryKind::Line, 600, 0, 5);
        row("integer is narrow", 3, 2, EntryKind::Line, 600);
        row("long is narrow", 4, 4, EntryKind::Line, 600);
        row("numeric is narrow", 19, 8, EntryKind::Line, 600);
        row("double", 7, 8, EntryKind::Line, 800);
        row("memo", 12, 0, EntryKind::Memo, 2500, 1000);
        row("flag", 1, 1, EntryKind::Check, 0);
        row("binary", 9, 8, EntryKind::None, 0);
        row("long binary", 11, 0, EntryKind::None, 0);
        row("binary of 17", 17, 8, EntryKind::None, 0);
        row("date keeps the default", 8, 8, EntryKind::Line, 0);
        row("currency keeps the default", 5, 8, EntryKind::Line, 0);
    }
    void boxes_goByTheType()
    {
        QFETCH(int, type);
        QFETCH(int, size);
        QFETCH(int, kind);
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(int, most);
        const EntryBox box = entryBox(type, size);
        QCOMPARE(int(box.kind), kind);
        QCOMPARE(box.width, width);
        QCOMPARE(box.height, height);
        QCOMPARE(box.maxLength, most);
    }

    void opens_onTheFirstRecord_withAControlForEachField()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        QVERIFY(child);
        QCOMPARE(child->EntryMode, QChar('E'));
        QCOMPARE(child->RecordTotal, 3);
        QVERIFY(!child->EmptyTable);
        QCOMPARE(child->caption(), "C:\\data\\staff.mdb - DATA ENTRY - People");
        QCOMPARE(child->windowTitle(), "staff.mdb - DATA ENTRY - People");
        QCOMPARE(child->Data1.RecordSource, std::string("People"));
        QCOMPARE(child->Text1.size(), 3);
        QCOMPARE(child->CHKLOGIC.size(), 1);
        QCOMPARE(child->Label1[0]->text(), "Name:");
        QCOMPARE(child->CHKLOGIC[0]->text(), "Active");
        QCOMPARE(line(child, 0)->text(), "Ada");
        QCOMPARE(line(child, 0)->maxLength(), 20);
        QCOMPARE(line(child, 1)->text(), "36");
        auto* memo = qobject_cast<QPlainTextEdit*>(child->Text1[2]);
        QVERIFY(memo);
        QCOMPARE(memo->toPlainText(), "first\nsecond");
        QVERIFY(memo->minimumWidth() >= toPixels(2500));
        QVERIFY(memo->height() >= toPixels(1000));
        QVERIFY(child->CHKLOGIC[0]->isChecked());
        QCOMPARE(child->ID_DataPosition->text(), "Record %Position: 0");
        QCOMPARE(globals().SELECTED_FILE, "C:\\data\\staff.mdb");
        QVERIFY(!globals().DATA_ENTRY_FLG);
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(1));
        QCOMPARE(shell_->CHILD_LEFT, 200);
        QCOMPARE(shell_->CHILD_TOP, 150);
        QVERIFY(shell_->ToolBarComp1->enabled("ID_SaveBtn"));
        QVERIFY(!shell_->ToolBarComp1->enabled("ID_DataToggle"));
    }

    void theFirstBox_hasTheFocus_readyToBeTypedOver()
    {
        makeStaff();
        QVERIFY(QTest::qWaitForWindowActive(shell_));
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        QCOMPARE(QApplication::focusWidget(), child->Text1[0]);
        QTest::keyClicks(QApplication::focusWidget(), "Eve");
        QTest::keySequence(child->Text1[0], QKeySequence(QKeySequence::Save));
        QCOMPARE(staff()[0][0], "Eve");
        // Keys of the tools that the boxes don't take for themselves.
        QTest::keySequence(child->Text1[0], QKeySequence("Ctrl+N"));
        QCOMPARE(child->EntryMode, QChar('A'));
        QTest::keyClick(child->Text1[0], Qt::Key_Escape);
        QTest::keySequence(child->Text1[2], QKeySequence("Ctrl+PgDown"));
        QCOMPARE(line(child, 0)->text(), "Ben");
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - Ben ?", false);
        QTest::keySequence(child->Text1[2], QKeySequence("Ctrl+D"));
    }

    void tools_haveTheirNamesAndTips_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("tip");
        QTest::newRow("add") << "ID_AddRecord"
                             << "Add New Record to Table";
        QTest::newRow("save") << "ID_SaveRecord"
                              << "Save current Record in Table";
        QTest::newRow("delete") << "ID_DeleteRecord"
                                << "Delete current Record in Table";
        for (const char* id : {"ID_FirstRecord", "ID_PreviousRecord", "ID_NextRecord",
                               "ID_LastRecord", "ID_Refresh", "ID_Help"})
            QTest::newRow(id) << id << "";
    }
    void tools_haveTheirNamesAndTips()
    {
        QFETCH(QString, id);
        QFETCH(QString, tip);
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        QVERIFY(child->ToolBarComp1->contains(id));
        QVERIFY(child->ToolBarComp1->find(id)->toolTip().startsWith(tip));
        QVERIFY(!child->ToolBarComp1->find(id)->toolTip().isEmpty());
        QCOMPARE(child->ID_DataPosition->toolTip(), "Position of Record in Table");
    }

    void moving_savesWhatWasTyped_andNothingElse()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        type(line(child, 0), "Ada L.");
        child->CHKLOGIC[0]->click();
        tool(child, "ID_NextRecord");
        QCOMPARE(line(child, 0)->text(), "Ben");
        QCOMPARE(staff()[0], (QStringList{"Ada L.", "36", "first\r\nsecond", "False"}));
        tool(child, "ID_PreviousRecord");
        QCOMPARE(line(child, 0)->text(), "Ada L.");
        QVERIFY(fixture_->prompt.told.isEmpty());
        QCOMPARE(child->RecordTotal, 3);
    }

    void lookingAtRecords_changesNoByte()
    {
        makeStaff();
        const std::string before = fixture_->sandbox.read("C:\\data\\staff.mdb");
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_NextRecord");
        tool(child, "ID_LastRecord");
        tool(child, "ID_FirstRecord");
        child->mnuFileClose_Click();
        QVERIFY(fixture_->sandbox.read("C:\\data\\staff.mdb") == before);
    }

    void pastTheLastRecord_staysOnIt_withNextOff()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_LastRecord");
        QCOMPARE(line(child, 0)->text(), "Cleo");
        QVERIFY(child->ToolBarComp1->enabled("ID_NextRecord"));
        tool(child, "ID_NextRecord");
        QCOMPARE(line(child, 0)->text(), "Cleo");
        QVERIFY(!child->ToolBarComp1->enabled("ID_NextRecord"));
        QVERIFY(fixture_->prompt.told.isEmpty());
        tool(child, "ID_PreviousRecord");
        QCOMPARE(line(child, 0)->text(), "Ben");
        QVERIFY(child->ToolBarComp1->enabled("ID_NextRecord"));
        tool(child, "ID_FirstRecord");
        tool(child, "ID_PreviousRecord");
        QCOMPARE(line(child, 0)->text(), "Ada");
        QVERIFY(!child->ToolBarComp1->enabled("ID_PreviousRecord"));
        tool(child, "ID_NextRecord");
        QVERIFY(child->ToolBarComp1->enabled("ID_PreviousRecord"));
    }

    void aNewRecord_isSaved_andStoodOn()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_AddRecord");
        QCOMPARE(child->EntryMode, QChar('A'));
        QCOMPARE(child->RecordTotal, 4);
        QCOMPARE(line(child, 0)->text(), "");
        type(line(child, 0), "Dan");
        type(line(child, 1), "41");
        tool(child, "ID_SaveRecord");
        QCOMPARE(child->EntryMode, QChar('E'));
        QCOMPARE(line(child, 0)->text(), "Dan");
        QCOMPARE(staff().last(), (QStringList{"Dan", "41", "(Null)", "False"}));
        type(line(child, 1), "42");  // at once open for editing again
        tool(child, "ID_FirstRecord");
        QCOMPARE(staff().last()[1], "42");
        QVERIFY(fixture_->prompt.told.isEmpty());
    }

    void aNewRecordNotSaved_isDroppedByAMove()  // required: only SaveRecord keeps it
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_AddRecord");
        type(line(child, 0), "Dan");
        tool(child, "ID_NextRecord");
        QCOMPARE(line(child, 0)->text(), "Ben");
        QCOMPARE(staff().size(), 3);
        QCOMPARE(child->RecordTotal, 4);  // kept by hand
        type(line(child, 1), "50");
        tool(child, "ID_SaveRecord");
        QCOMPARE(child->EntryMode, QChar('E'));
        QCOMPARE(staff()[1][1], "50");
        QVERIFY(fixture_->prompt.told.isEmpty());
    }

    void closing_savesWhatWasTyped()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_AddRecord");
        type(line(child, 0), "Eve");
        child->mnuFileClose_Click();
        QVERIFY(shell_->children().isEmpty());
        QCOMPARE(staff().last()[0], "Eve");
        QCOMPARE(shell_->CHILD_LEFT, 0);
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(0));
        QVERIFY(!shell_->ToolBarComp1->enabled("ID_CloseBtn"));
    }

    void anInvalidValue_isTold_andStaysInItsBox()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        type(line(child, 1), "many");
        tool(child, "ID_NextRecord");
        QCOMPARE(fixture_->prompt.told, QStringList{kInvalid});
        QCOMPARE(line(child, 0)->text(), "Ada");
        QCOMPARE(line(child, 1)->text(), "many");
        QCOMPARE(staff()[0][1], "36");
        child->mnuFileClose_Click();  // nothing is thrown away behind people's backs
        QCOMPARE(shell_->children().size(), 1);
        QCOMPARE(fixture_->prompt.told.size(), 2);
        shell_->close();
        QCOMPARE(shell_->children().size(), 1);
        QVERIFY(globals().MDI_OPEN_FLG);
        QTest::keyClick(line(child, 1), Qt::Key_Escape);
        QCOMPARE(line(child, 1)->text(), "36");
        child->mnuFileClose_Click();
        QVERIFY(shell_->children().isEmpty());
    }

    void aRequiredFieldLeftEmpty_isTold_andCanBeMended()
    {
        makeAccessFile("C:\\data\\need.mdb");
        makeTable("C:\\data\\need.mdb", kAccess, "Need",
                  {{"Key", FieldType::Text, 10, true}, {"Rest", FieldType::Text, 10}});
        appendRows("C:\\data\\need.mdb", kAccess, "Need", {{"one", "x"}});
        ChildFrm3* child = open("C:\\data\\need.mdb");
        tool(child, "ID_AddRecord");
        type(line(child, 1), "y");
        tool(child, "ID_SaveRecord");
        QCOMPARE(fixture_->prompt.told, QStringList{kInvalid});
        QCOMPARE(child->EntryMode, QChar('A'));
        type(line(child, 0), "two");
        tool(child, "ID_SaveRecord");
        QCOMPARE(readRows("C:\\data\\need.mdb", kAccess, "Need").last(), (QStringList{"two", "y"}));
    }

    void anEmptiedBox_isNull()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        type(line(child, 1), "");
        tool(child, "ID_SaveRecord");
        QCOMPARE(staff()[0][1], "(Null)");
    }

    void aDeletion_isAskedFor_byTheFirstText()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_LastRecord");
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - Cleo ?", false);
        tool(child, "ID_DeleteRecord");
        QCOMPARE(staff().size(), 3);
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - Cleo ?", true);
        tool(child, "ID_DeleteRecord");
        QCOMPARE(staff().size(), 2);
        QCOMPARE(child->RecordTotal, 2);
        QCOMPARE(line(child, 0)->text(), "Ben");
        tool(child, "ID_FirstRecord");
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - Ada ?", true);
        tool(child, "ID_DeleteRecord");
        QCOMPARE(line(child, 0)->text(), "Ben");
        QVERIFY(!child->ToolBarComp1->enabled("ID_PreviousRecord"));
    }

    void deletingTheLastOneLeft_saysThatThereAreNone()
    {
        makeAccessFile("C:\\data\\one.mdb");
        makeTable("C:\\data\\one.mdb", kAccess, "One", {{"Key", FieldType::Text, 10}});
        appendRows("C:\\data\\one.mdb", kAccess, "One", {{"only"}});
        ChildFrm3* child = open("C:\\data\\one.mdb");
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - only ?", true);
        tool(child, "ID_DeleteRecord");
        QCOMPARE(fixture_->prompt.told, QStringList{kNoRecords});
        QVERIFY(!child->ToolBarComp1->enabled("ID_PreviousRecord"));
        QCOMPARE(line(child, 0)->text(), "");
        QCOMPARE(child->RecordTotal, 0);
        tool(child, "ID_AddRecord");  // and it goes on from there
        QVERIFY(line(child, 0)->isEnabled());
        type(line(child, 0), "again");
        tool(child, "ID_SaveRecord");
        QCOMPARE(readRows("C:\\data\\one.mdb", kAccess, "One"), QList<QStringList>{{"again"}});
    }

    void anEmptyTable_opensOnANewRecord()
    {
        makeTable("C:\\data", kDBase, "EMPTY", {{"NAME", FieldType::Text, 10}});
        ChildFrm3* child = open("C:\\data\\EMPTY.DBF");
        QCOMPARE(child->EntryMode, QChar('A'));
        QVERIFY(child->EmptyTable);
        QCOMPARE(child->RecordTotal, 1);
        QVERIFY(fixture_->prompt.told.isEmpty());
        QCOMPARE(child->caption(), "C:\\data\\EMPTY.DBF - DATA ENTRY - EMPTY.DBF");
        type(line(child, 0), "Ada");
        tool(child, "ID_SaveRecord");
        QCOMPARE(readRows("C:\\data", kDBase, "EMPTY"), QList<QStringList>{{"Ada"}});
    }

    void aTableOf31Fields_shows30()
    {
        QList<MadeField> fields;
        for (int i = 0; i < 31; ++i)
            fields << MadeField{QString("F%1").arg(i), FieldType::Text, 5};
        makeTable("C:\\data", kDBase, "WIDE", fields);
        ChildFrm3* child = open("C:\\data\\WIDE.DBF");
        QCOMPARE(child->Text1.size(), 30);
        QCOMPARE(child->Label1.last()->text(), "F29:");
        shell_->resize(700, 400);
        QVERIFY(child->pane->VScroll1->isEnabled());
        const int hidden = child->pane->hiddenHeight();
        child->pane->VScroll1->setValue(50);
        QCOMPARE(child->pane->Frame1->y(), -hidden / 2);
        child->pane->VScroll1->setValue(100);
        QCOMPARE(child->pane->Frame1->y(), -hidden);  // its bottom stays in the window
        child->pane->reveal(*child->Text1[0]);
        QVERIFY(child->pane->VScroll1->value() < 10);
    }

    void binaryFields_haveNoRow_andKeepTheirData()
    {
        makeAccessFile("C:\\data\\bin.mdb");
        makeTable("C:\\data\\bin.mdb", kAccess, "Bin",
                  {{"Name", FieldType::Text, 10}, {"Raw", FieldType::LongBinary}});
        putBytes("C:\\data\\bin.mdb", "Bin");
        ChildFrm3* child = open("C:\\data\\bin.mdb");
        QCOMPARE(child->Text1.size(), 1);
        type(line(child, 0), "renamed");
        tool(child, "ID_SaveRecord");
        Workspace workspace(fixture_->sandbox.files());
        Database db = workspace.OpenDatabase("C:\\data\\bin.mdb", false, true, "");
        Recordset rows = db.OpenRecordset("Bin");
        QCOMPARE(rows.value(0).asText(), std::string_view("renamed"));
        QCOMPARE(rows.value(1).asBytes().size(), std::size_t(3));
    }

    void recordsOfOthers_dontCount()  // and the drifted total decides at the ends
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        appendRows("C:\\data\\staff.mdb", kAccess, "People", {{"Zoe", 20, "", true}});
        QCOMPARE(child->RecordTotal, 3);
        tool(child, "ID_LastRecord");
        QCOMPARE(line(child, 0)->text(), "Zoe");
        QCOMPARE(child->RecordTotal, 3);
    }

    void refresh_onADbf_doesNothing()
    {
        fixture_->makeCustomers();
        ChildFrm3* child = open("C:\\data\\CUSTOMER.DBF");
        tool(child, "ID_NextRecord");
        type(line(child, 0), "typed");
        tool(child, "ID_Refresh");
        QCOMPARE(line(child, 0)->text(), "typed");
        QCOMPARE(child->Data1.Connect, std::string("dBASE 5.0;"));
        QVERIFY(fixture_->prompt.told.isEmpty());
    }

    void errorsOfTheControl_areTold_orGoToTheFirstRecord()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_LastRecord");
        child->Data1_Error(3021, "No current record.");
        QCOMPARE(line(child, 0)->text(), "Ada");
        child->Data1_Error(3197, "Damaged.");
        QCOMPARE(fixture_->prompt.told, QStringList{"Data Error: 3197 Damaged."});
    }

    void anotherTable_isChosenInTheShell()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        QCOMPARE(shell_->ID_CMBTable->currentText(), "People");
        type(line(child, 0), "Ada L.");
        shell_->ID_CMBTable->setCurrentText("Places");
        QCOMPARE(staff()[0][0], "Ada L.");  // leaving the record saves it
        QCOMPARE(child->HLDTABLE, "Places");
        QCOMPARE(child->caption(), "C:\\data\\staff.mdb - DATA ENTRY - Places");
        QCOMPARE(child->Text1.size(), 1);
        QVERIFY(child->EmptyTable);
        shell_->ID_CMBTable->setCurrentText("People");
        QCOMPARE(line(child, 0)->text(), "Ada L.");
        QCOMPARE(child->EntryMode, QChar('E'));
    }

    void theToggle_opensDataEntryForTheBrowsersTable_once()
    {
        makeStaff();
        globals().SELECTED_FILE = "C:\\data\\staff.mdb";
        shell_->NewWindowFile("C:\\data\\staff.mdb");
        auto* browser = qobject_cast<ChildFrm1*>(shell_->activeChild());
        QVERIFY(browser);
        shell_->ToolBarComp1->click("ID_DataToggle");
        auto* child = qobject_cast<ChildFrm3*>(shell_->activeChild());
        QVERIFY(child);
        QCOMPARE(child->HLDTABLE, browser->HLDTABLE);
        type(line(child, 0), "Ada L.");
        tool(child, "ID_SaveRecord");
        QCOMPARE(browser->MSFlexGrid1->model()->index(0, 0).data().toString(), "Ada L.");
        shell_->bringToFront(browser);
        shell_->ToolBarComp1->click("ID_DataToggle");
        QCOMPARE(shell_->children().size(), 2);
        QCOMPARE(shell_->activeChild(), child);
    }

    void aProtectedFile_isOpenedWithItsPassword()
    {
        if (!fixture_->bringLockedFile())
            QSKIP("VELNOR_CORPUS is not there");
        fixture_->prompt.expectDialog("Login", [](QDialog& dialog) {
            dialog.findChild<QLineEdit*>("txtPassword")->setText("Geheim97");
            dialog.findChild<QPushButton*>("OKBtn")->click();
            return dialog.result();
        });
        ChildFrm3* child = open("C:\\data\\locked.mdb");
        QVERIFY(child);
        QCOMPARE(child->Data1.Connect, std::string("Access 2000;;pwd=Geheim97"));
        QVERIFY(child->Text1.size() > 0);
        QCOMPARE(fixture_->prompt.told, QStringList());
    }

    void aCancelledLogin_makesTheWindowVanish()
    {
        if (!fixture_->bringLockedFile())
            QSKIP("VELNOR_CORPUS is not there");
        fixture_->prompt.expectDialog("Login", [](QDialog& dialog) {
            dialog.findChild<QPushButton*>("CancelBtn")->click();
            return dialog.result();
        });
        open("C:\\data\\locked.mdb");
        QTRY_COMPARE(shell_->NUM_CHILDWINDOWS, short(0));
        QVERIFY(fixture_->prompt.told.isEmpty());
    }

    void aDamagedFile_isTold_andItsWindowGoes()
    {
        fixture_->sandbox.write("C:\\data\\bad.dbf", "this is no table");
        open("C:\\data\\bad.dbf");
        QCOMPARE(fixture_->prompt.told.size(), 1);
        QVERIFY(fixture_->prompt.told.first().startsWith("Error - "));
        QTRY_COMPARE(shell_->NUM_CHILDWINDOWS, short(0));
    }

private:
    void makeStaff()
    {
        const QString file = "C:\\data\\staff.mdb";
        makeAccessFile(file);
        makeTable(file, kAccess, "People",
                  {{"Name", FieldType::Text, 20},
                   {"Age", FieldType::Long},
                   {"Note", FieldType::Memo},
                   {"Active", FieldType::Boolean}});
        appendRows(file, kAccess, "People",
                   {{"Ada", 36, "first\r\nsecond", true},
                    {"Ben", 40, QVariant(), false},
                    {"Cleo", QVariant(), "last", false}});
        makeTable(file, kAccess, "Places", {{"Place", FieldType::Text, 30}});
    }
    QList<QStringList> staff() { return readRows("C:\\data\\staff.mdb", kAccess, "People"); }
    void putBytes(const char* file, const char* table)
    {
        Workspace workspace(fixture_->sandbox.files());
        Database db = workspace.OpenDatabase(file, false, false, "");
        Recordset rows = db.OpenRecordset(table);
        const std::uint8_t bytes[] = {1, 0, 255};
        rows.AddNew();
        rows.setValue(0, ValueView::text("raw"));
        rows.setValue(1, ValueView::bytes(bytes));
        rows.Update();
        rows.Close();
        db.Close();
    }
    ChildFrm3* open(const QString& path)
    {
        globals().SELECTED_FILE = path;
        globals().TEXT_FILE_FLG = false;
        globals().DATA_ENTRY_FLG = true;
        globals().RECORD_SOURCE.clear();
        shell_->NewWindowFile(path);
        return qobject_cast<ChildFrm3*>(shell_->activeChild());
    }
    static QLineEdit* line(ChildFrm3* child, int n)
    {
        return qobject_cast<QLineEdit*>(child->Text1[n]);
    }
    /// As a person does: everything chosen, then keys.
    static void type(QLineEdit* box, const QString& text)
    {
        box->selectAll();
        QTest::keyClick(box, Qt::Key_Delete);
        QTest::keyClicks(box, text);
    }
    static void tool(ChildFrm3* child, const char* id) { child->ToolBarComp1->click(id); }

    std::unique_ptr<WindowFixture> fixture_;
    MDIForm1* shell_ = nullptr;
};

QTEST_MAIN(TstDataEntry)
#include "tst_data_entry.moc"
