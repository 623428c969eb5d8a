// The table browser in the document shell, on files made through the engine.
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

#include "tests/support/refusing_files.h"
#include "tests/windows/window_fixture.h"
#include "windows/child_geometry.h"
#include "windows/childfrm1.h"
#include "windows/data_strip.h"
#include "windows/find_bar.h"
#include "windows/mdiform1.h"
#include "windows/record_grid.h"
#include "windows/table_pane.h"

using namespace velnor;
using namespace velnor::testing;

class TstTableBrowser : public QObject {
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

    void columnWidths_followNameAndSize_data()
    {
        QTest::addColumn<int>("name");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("twips");
        QTest::newRow("size 2 under 10 letters") << 10 << 2 << 1000;
        QTest::newRow("size 1 under one letter") << 1 << 1 << 800;
        QTest::newRow("size 200 is cut") << 4 << 200 << 2500;
        QTest::newRow("memo: by its name") << 4 << 0 << 400;
        QTest::newRow("memo of two letters") << 2 << 0 << 800;
        QTest::newRow("as long as its name") << 8 << 8 << 960;
    }
    void columnWidths_followNameAndSize()
    {
        QFETCH(int, name);
        QFETCH(int, size);
        QFETCH(int, twips);
        QCOMPARE(browserColumnWidth(name, size), twips);
    }

    void dbf_isShown_withItsPosition_andItsLength()
    {
        fixture_->makeCustomers();
        ChildFrm1* child = open("C:\\data\\CUSTOMER.DBF");
        QVERIFY(child);
        QCOMPARE(child->MSFlexGrid1->model()->rowCount(), 3);
        QCOMPARE(child->Data1Strip->caption(), "CUSTOMER.DBF - Position: 0%  of 3 Records");
        QCOMPARE(child->Data1.Connect, std::string("dBASE 5.0;"));
        QCOMPARE(child->Data1.DatabaseName, std::string("C:\\data"));
        QCOMPARE(child->Data1.RecordSource, std::string("CUSTOMER.DBF"));
        QCOMPARE(child->List1->count(), 0);  // a single file is a single table
        QCOMPARE(child->columnType(2), short(12));
        QCOMPARE(shell_->windowTitle(),
                 "C:\\data\\CUSTOMER.DBF - Velnor 3.0 - The Database File Copier");
        QCOMPARE(globals().SELECTED_FILE, "C:\\data\\CUSTOMER.DBF");
        QCOMPARE(globals().WORK_FILE, "C:\\data\\CUSTOMER.DBF");
        QCOMPARE(shell_->DATABASE_COUNT, short(1));
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(1));
    }

    void aClickInTheGrid_movesTheRecord()
    {
        fixture_->makeCustomers();
        ChildFrm1* child = open("C:\\data\\CUSTOMER.DBF");
        child->MSFlexGrid1->setCurrentIndex(child->MSFlexGrid1->model()->index(2, 0));
        QVERIFY(child->Data1Strip->caption().startsWith("CUSTOMER.DBF - Position: "));
        QVERIFY(!child->Data1Strip->caption().contains("Position: 0%"));
        child->Data1Strip->firstBtn->click();
        QCOMPARE(child->Data1Strip->caption(), "CUSTOMER.DBF - Position: 0%  of 3 Records");
    }

    void memo_opensTheComments_otherColumnsAskForOne()
    {
        fixture_->makeCustomers();
        ChildFrm1* child = open("C:\\data\\CUSTOMER.DBF");
        auto* grid = child->MSFlexGrid1;
        grid->setCurrentIndex(grid->model()->index(0, 0));
        child->mnuViewComments_Click();
        QCOMPARE(fixture_->prompt.told, QStringList{"Please select a Comment Field to Display"});
        QVERIFY(child->Frame2->isHidden());
        QCOMPARE(child->ExitDBaseBtn->toolTip(), "Close Database Table and Index Display");
        grid->setCurrentIndex(grid->model()->index(0, 2));
        QVERIFY(!child->Frame2->isHidden());
        QCOMPARE(child->Text2->toPlainText(), "first\nsecond");
        child->ExitCommBtn->click();
        QVERIFY(child->Frame2->isHidden());
        child->Data1Strip->lastBtn->click();  // nobody asked for the memo there
        QCOMPARE(grid->currentIndex(), grid->model()->index(2, 2));
        QVERIFY(child->Frame2->isHidden());
        child->mnuViewComments_Click();
        QCOMPARE(child->Text2->toPlainText(), "last");
    }

    void accessFile_listsTablesAndIndexes_andChangesBetweenThem()
    {
        fixture_->makeShop();
        ChildFrm1* child = open("C:\\data\\shop.mdb");
        QVERIFY(child);
        QCOMPARE(child->HLDTABLE, "Items");
        QCOMPARE(child->List1->count(), 2);
        QCOMPARE(child->List2->count(), 1);
        QCOMPARE(child->NUMINDEXES, short(1));
        QVERIFY(shell_->ToolBarComp1->enabled("ID_TableBtn"));
        QVERIFY(shell_->ToolBarComp1->enabled("ID_IndexBtn"));
        child->mnuViewTable_Click();
        QVERIFY(!child->Frame1->isHidden());
        child->List1->setCurrentRow(1);
        QCOMPARE(child->HLDTABLE, "Orders");
        QCOMPARE(child->NUMINDEXES, short(0));
        QCOMPARE(child->MSFlexGrid1->model()->columnCount(), 1);
        QVERIFY(!shell_->ToolBarComp1->enabled("ID_IndexBtn"));
        child->ExitDBaseBtn->click();
        QVERIFY(child->Frame1->isHidden());
    }

    void anIndex_ordersTheRecords()
    {
        fixture_->makeShop();
        ChildFrm1* child = open("C:\\data\\shop.mdb");
        child->List2->setCurrentRow(-1);
        child->List2->setCurrentRow(0);
        const auto* rows = child->MSFlexGrid1->model();
        QCOMPARE(rows->index(0, 0).data().toString(), "apple");
        QCOMPARE(rows->index(2, 0).data().toString(), "pear");
        QVERIFY(!child->SORTEDBY.isEmpty());
    }

    void aClickOnTheIndexThatIsSelectedAlready_ordersTheRecords()
    {
        fixture_->makeShop();
        ChildFrm1* child = open("C:\\data\\shop.mdb");
        const auto* rows = child->MSFlexGrid1->model();
        QCOMPARE(rows->index(0, 0).data().toString(), "pear");  // no order was chosen so far
        shell_->ToolBarComp1->click("ID_IndexBtn");
        QCOMPARE(child->List2->currentRow(), 0);
        const QRect place = child->List2->visualItemRect(child->List2->item(0));
        QTest::mouseClick(child->List2->viewport(), Qt::LeftButton, {}, place.center());
        QCOMPARE(rows->index(0, 0).data().toString(), "apple");
        QCOMPARE(child->SORTEDBY, "Name");
        child->mnuFileRefresh_Click();
        QCOMPARE(rows->index(0, 0).data().toString(), "apple");  // the order stays
    }

    void aTableOfFoxProWithoutIndex_isShown()  // dBASE refuses it, and no index tells it apart
    {
        makeTable("C:\\data", kFoxPro, "FOX", {{"NAME", FieldType::Text, 20}});
        appendRows("C:\\data", kFoxPro, "FOX", {{"vixen"}});
        ChildFrm1* child = open("C:\\data\\FOX.DBF");
        QVERIFY(fixture_->prompt.told.isEmpty());
        QCOMPARE(child->MSFlexGrid1->model()->index(0, 0).data().toString(), "vixen");
        QCOMPARE(child->Data1.Connect, std::string("FoxPro 3.0;"));
    }

    void aRefreshThatFails_saysWhyInTheGrid()
    {
        fixture_->makeCustomers();
        RefusingFiles refusing(fixture_->sandbox.files(), EngineErrorNumber::FileInUse);
        refusing.refuses = false;
        fixture_->sandbox.useFiles(&refusing);
        ChildFrm1* child = open("C:\\data\\CUSTOMER.DBF");
        refusing.refuses = true;
        child->mnuFileRefresh_Click();
        QCOMPARE(child->MSFlexGrid1->emptyText(), "refused");
        QVERIFY(!child->Data1Strip->nextBtn->isEnabled());
        refusing.refuses = false;
        child->mnuFileRefresh_Click();
        QCOMPARE(child->MSFlexGrid1->model()->rowCount(), 3);
        QVERIFY(child->Data1Strip->nextBtn->isEnabled());
        child->mnuFileClose_Click();  // before its disk goes
        fixture_->sandbox.useFiles(nullptr);
    }

    void cancelledLogin_makesTheWindowVanish_withoutAWord()
    {
        fixture_->makeLockedFile();
        fixture_->prompt.expectDialog("Login", [](QDialog& dialog) {
            dialog.findChild<QPushButton*>("CancelBtn")->click();
            return dialog.result();
        });
        open("C:\\data\\locked.mdb");
        QTRY_COMPARE(shell_->NUM_CHILDWINDOWS, short(0));
        QVERIFY(shell_->children().isEmpty());
        QVERIFY(fixture_->prompt.told.isEmpty());
        QCOMPARE(shell_->DATABASE_COUNT, short(0));
        QVERIFY(!shell_->CLOSE_WINDOW_FLG);
    }

    void damagedFile_saysSo_andItsWindowGoes()
    {
        fixture_->sandbox.write("C:\\data\\bad.dbf", "this is no table");
        open("C:\\data\\bad.dbf");
        QCOMPARE(fixture_->prompt.told.size(), 1);
        QVERIFY(fixture_->prompt.told.first().startsWith("Error - "));
        QTRY_COMPARE(shell_->NUM_CHILDWINDOWS, short(0));
    }

    void zip_isTurnedAway_afterTheQuestion()
    {
        fixture_->sandbox.write("C:\\data\\a.zip", "PK");
        fixture_->prompt.expectQuestion("File Type is not Supported by this Software. Do you want "
                                        "to Open the File with another Program?",
                                        true);
        QString handedOver;
        upcalls().OpenwithOLE = [&](const QString& path) { handedOver = path; };
        open("C:\\data\\a.zip");
        QTRY_COMPARE(shell_->NUM_CHILDWINDOWS, short(0));
        QCOMPARE(handedOver, "C:\\data\\a.zip");
    }

    void find_goesFromCellToCell_andRoundOnce()
    {
        fixture_->makeCustomers();
        ChildFrm1* child = open("C:\\data\\CUSTOMER.DBF");
        auto* grid = child->MSFlexGrid1;
        grid->setCurrentIndex(grid->model()->index(0, 0));
        shell_->ToolBarComp1->click("ID_mnuFindText");
        QVERIFY(!child->findBar->isHidden());
        QTest::keyClicks(child->findBar->words, "SECOND");  // behind the memo's first line
        QTest::keyClick(child->findBar->words, Qt::Key_Return);
        QTRY_COMPARE(child->findBar->answer(), "Record 1");
        QCOMPARE(grid->currentIndex(), grid->model()->index(0, 2));
        child->findBar->words->setText("e");
        for (const QModelIndex& place :
             {grid->model()->index(1, 0), grid->model()->index(2, 0), grid->model()->index(0, 2)}) {
            child->findBar->say({});
            shell_->ToolBarComp1->click("ID_mnuFindNextText");
            QTRY_VERIFY(child->findBar->answer().startsWith("Record"));
            QCOMPARE(grid->currentIndex(), place);
        }
        child->findBar->words->setText("nowhere");
        shell_->ToolBarComp1->click("ID_mnuFindNextText");
        QTRY_COMPARE(child->findBar->answer(), "Not found");
        QCOMPARE(grid->currentIndex(), grid->model()->index(0, 2));
        QTest::keyClick(child->findBar->words, Qt::Key_Escape);
        QVERIFY(child->findBar->isHidden());
    }

    void theTextStyle_isSeenInTheGrid()
    {
        fixture_->makeCustomers();
        ChildFrm1* child = open("C:\\data\\CUSTOMER.DBF");
        QList<QImage> pictures;
        for (const char* style : {"F", "R", "I"}) {
            globals().GRID_TEXT_STYLE = style;
            child->applyOptions();
            pictures << child->MSFlexGrid1->grab().toImage();
        }
        QVERIFY(pictures[0] != pictures[1]);
        QVERIFY(pictures[1] != pictures[2]);
        QVERIFY(pictures[0] != pictures[2]);
    }

    void openingErrors_areToldInTheirWords_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("words");
        QTest::addColumn<bool>("handsOver");
        QTest::newRow("read-only at the control")
            << 3027 << "File Viewer could not open this Database Table" << true;
        QTest::newRow("no memory")
            << 523 << "Not Enough Memory to Load the File - Close some Windows or Rerun the Program"
            << false;
        QTest::newRow("anything else") << 3051 << "Error - 3051 - refused" << false;
    }
    void openingErrors_areToldInTheirWords()
    {
        QFETCH(int, number);
        QFETCH(QString, words);
        QFETCH(bool, handsOver);
        fixture_->makeCustomers();
        QStringList handedOver;
        upcalls().OpenwithOLE = [&](const QString& path) { handedOver << path; };
        RefusingFiles refusing(fixture_->sandbox.files(), static_cast<EngineErrorNumber>(number));
        fixture_->sandbox.useFiles(&refusing);
        open("C:\\data\\CUSTOMER.DBF");
        fixture_->sandbox.useFiles(nullptr);
        QCOMPARE(fixture_->prompt.told, QStringList{words});
        QCOMPARE(!handedOver.isEmpty(), handsOver);
        QTRY_COMPARE(shell_->NUM_CHILDWINDOWS, short(0));
        QVERIFY(!shell_->CLOSE_WINDOW_FLG);
    }

    void closedWindow_letsTheFileGo_andStepsTheCascadeBack()
    {
        fixture_->makeCustomers();
        ChildFrm1* child = open("C:\\data\\CUSTOMER.DBF");
        QCOMPARE(shell_->CHILD_LEFT, 200);
        QCOMPARE(shell_->CHILD_TOP, 150);
        child->mnuFileClose_Click();
        QCOMPARE(shell_->CHILD_LEFT, 0);
        QCOMPARE(shell_->CHILD_TOP, 0);
        QCOMPARE(shell_->windowTitle(), "Velnor 3.0 - The Database File Copier");
        appendRows("C:\\data", kDBase, "CUSTOMER", {{"Dan", 4, QVariant()}});
    }

    void releasedFile_isFree_whileTheWindowStays()
    {
        fixture_->makeCustomers();
        ChildFrm1* child = open("C:\\data\\CUSTOMER.DBF");
        child->releaseFile();
        QCOMPARE(child->Data1.Connect, std::string("Text"));
        QCOMPARE(child->Data1.DatabaseName, std::string("C:\\app"));
        QCOMPARE(child->Data1.RecordSource, std::string("Close.Txt"));
        QCOMPARE(shell_->children().size(), 1);
        child->mnuFileRefresh_Click();  // people want to see it again
        QCOMPARE(child->MSFlexGrid1->model()->rowCount(), 3);
        QCOMPARE(child->Data1.RecordSource, std::string("CUSTOMER.DBF"));
    }

private:
    ChildFrm1* open(const QString& path)
    {
        globals().SELECTED_FILE = path;
        globals().TEXT_FILE_FLG = false;
        shell_->NewWindowFile(path);
        return qobject_cast<ChildFrm1*>(shell_->activeChild());
    }
    std::unique_ptr<WindowFixture> fixture_;
    MDIForm1* shell_ = nullptr;
};

QTEST_MAIN(TstTableBrowser)
#include "tst_table_browser.moc"
