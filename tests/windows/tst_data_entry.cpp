// The data entry window: its controls, its tools, opening, tables and the way from the browser.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>

#include "core/twips.h"
#include "tests/support/refusing_files.h"
#include "tests/windows/data_entry_case.h"
#include "windows/childfrm1.h"
#include "windows/entry_fields.h"
#include "windows/entry_pane.h"
#include "windows/record_grid.h"

using namespace velnor;
using namespace velnor::testing;

class TstDataEntry : public QObject, DataEntryCase {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

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
        browser->MSFlexGrid1->setCurrentIndex(browser->MSFlexGrid1->model()->index(1, 1));
        tool(child, "ID_AddRecord");
        type(line(child, 0), "Dan");
        tool(child, "ID_SaveRecord");
        QCOMPARE(browser->MSFlexGrid1->model()->rowCount(), 4);
        QCOMPARE(browser->MSFlexGrid1->currentIndex(),
                 browser->MSFlexGrid1->model()->index(1, 1));  // it stays where people were
        shell_->bringToFront(browser);
        shell_->ToolBarComp1->click("ID_DataToggle");
        QCOMPARE(shell_->children().size(), 2);
        QCOMPARE(shell_->activeChild(), child);
    }

    void aTableOfFoxProWithoutIndex_isEdited()  // dBASE refuses it
    {
        makeTable("C:\\data", kFoxPro, "FOX", {{"NAME", FieldType::Text, 20}});
        appendRows("C:\\data", kFoxPro, "FOX", {{"vixen"}});
        ChildFrm3* child = open("C:\\data\\FOX.DBF");
        QVERIFY(fixture_->prompt.told.isEmpty());
        type(line(child, 0), "cub");
        tool(child, "ID_SaveRecord");
        QCOMPARE(readRows("C:\\data", kFoxPro, "FOX"), (QList<QStringList>{{"cub"}}));
    }

    void aTableForReadingOnly_leavesTheNextOneWritable()
    {
        makeStaff();
        RefusingFiles readOnly(fixture_->sandbox.files());
        fixture_->sandbox.useFiles(&readOnly);
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        QCOMPARE(fixture_->prompt.told.size(), 1);
        QVERIFY(fixture_->prompt.told.first().startsWith("Data Error: 3027 "));
        QVERIFY(line(child, 0)->isReadOnly());
        readOnly.refuses = false;
        child->showTable("Places");
        QVERIFY(!line(child, 0)->isReadOnly());
        child->mnuFileClose_Click();  // before its disk goes
        fixture_->sandbox.useFiles(nullptr);
    }

    void aProtectedFile_isOpenedWithItsPassword()
    {
        fixture_->makeLockedFile();
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
        fixture_->makeLockedFile();
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
};

QTEST_MAIN(TstDataEntry)
#include "tst_data_entry.moc"
