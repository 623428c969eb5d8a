// The main window: first activation, the gate to the viewing windows, tabs, tools, the explorer.
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QTabBar>
#include <QTest>
#include <QToolBar>
#include <QTreeView>

#include "copy/copy_tab.h"
#include "copy/line_list.h"
#include "core/file_types.h"
#include "tests/windows/main_window_case.h"
#include "windows/childfrm1.h"
#include "windows/copy_place.h"
#include "windows/databases_tab.h"
#include "windows/file_list_model.h"

using namespace velnor;
using namespace velnor::testing;

class TstMainWindow : public QObject, MainWindowCase {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void arguments_becomeOnePath_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("path");
        QTest::newRow("none") << QStringList{} << "";
        QTest::newRow("quoted, cut at its blank")
            << QStringList{"\"C:\\My", "Data\\a.dbf\""} << "C:\\My Data\\a.dbf";
        QTest::newRow("two words") << QStringList{"C:\\x\\a.dbf", "extra"} << "C:\\x\\a.dbf extra";
        QTest::newRow("two quotes stay") << QStringList{"\"\""} << "\"\"";
        QTest::newRow("the seventh is lost")
            << QStringList{"1", "2", "3", "4", "5", "6", "7"} << "1 2 3 4 5 6";
    }

    void arguments_becomeOnePath()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, path);
        QCOMPARE(joinedArguments(arguments), path);
    }

    void firstActivation_opensTheFileOfTheCommandLine_once()
    {
        fixture_->makeCustomers();
        window_->setCommandLine("C:\\data\\CUSTOMER.DBF");
        window_->Form_Load();
        window_->Form_Activate();
        window_->Form_Activate();
        QVERIFY(window_->shell());
        QCOMPARE(window_->shell()->children().size(), 1);
        QCOMPARE(window_->windowTitle(),
                 "C:\\data\\CUSTOMER.DBF - Velnor 3.0 - The Database File Copier");
        QCOMPARE(globals().MAIN_CAPTION, window_->windowTitle());
    }

    void displayFile_ofAnUnknownKind_asks_andNoChangesNothing()
    {
        window_->Form_Load();
        fixture_->sandbox.write("C:\\data\\a.tmp", "x");
        globals().SELECTED_FILE = "C:\\data\\old.dbf";
        fixture_->prompt.expectQuestion(kUnsupported, false);
        window_->DisplayFile("C:\\data\\a.tmp");
        QCOMPARE(globals().SELECTED_FILE, "C:\\data\\old.dbf");
        QVERIFY(!window_->shell());
        QVERIFY(fixture_->sandbox.desktop().opened.empty());
    }

    void displayFile_ofAnUnknownKind_goesToAnotherProgram_onYes()
    {
        window_->Form_Load();
        fixture_->sandbox.write("C:\\data\\a.tmp", "x");
        fixture_->prompt.expectQuestion(kUnsupported, true);
        window_->DisplayFile("C:\\data\\a.tmp");
        QCOMPARE(fixture_->sandbox.desktop().opened, std::vector<std::string>{"C:\\data\\a.tmp"});
    }

    void displayFile_ofAMissingFile_saysSo()
    {
        window_->Form_Load();
        window_->DisplayFile("C:\\data\\none.dbf");
        QCOMPARE(fixture_->prompt.told,
                 QStringList{"                               File not Found"});
        QVERIFY(!window_->shell());
    }

    void displayFile_withoutExtension_emptiesTheSelection()
    {
        window_->Form_Load();
        globals().SELECTED_FILE = "C:\\data\\old.dbf";
        window_->DisplayFile("C:\\data\\plain");
        QCOMPARE(globals().SELECTED_FILE, "");
    }

    void displayFile_ofAWebAddress_skipsTheDisk()
    {
        window_->Form_Load();
        window_->DisplayFile("www.example.org");
        QVERIFY(window_->shell());
        QCOMPARE(window_->shell()->children().size(), 1);
    }

    void displayFile_switchesTheSelectMenusOn()
    {
        window_->Form_Load();
        fixture_->makeCustomers();
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        QVERIFY(window_->ToolBarComp1->enabled("ID_mnuSaveAs"));
        QCOMPARE(globals().SELECTED_FILE, "C:\\data\\CUSTOMER.DBF");
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        QCOMPARE(window_->shell()->children().size(), 2);
    }

    void otherProgram_thatIsNotThere_isTold()
    {
        window_->Form_Load();
        fixture_->sandbox.desktop().hasPrograms = false;
        window_->OpenwithOLE("C:\\data\\a.tmp");
        QCOMPARE(fixture_->prompt.told,
                 QStringList{"Error Loading File Type - Check Explorer Options to set up Program "
                             "for this File Type - C:\\data\\a.tmp"});
    }

    void openTool_asksForAFile_andShowsIt()
    {
        window_->Form_Load();
        fixture_->makeCustomers();
        fixture_->prompt.expectFile({"C:\\data\\CUSTOMER.DBF"}, "Select File to Open");
        window_->ToolBarComp1->click("ID_mnuOpen");
        QVERIFY(window_->shell());
    }

    void browseTool_withNothingSelected_doesNothing()
    {
        window_->Form_Load();
        window_->ToolBarComp1->click("ID_mnuViewBrowseTable");
        QVERIFY(!window_->shell());
    }

    void mnemonicsOfAMenu_areDifferent()
    {
        window_->Form_Load();
        fixture_->makeCustomers();
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        for (QMainWindow* frame : {static_cast<QMainWindow*>(window_.get()),
                                   static_cast<QMainWindow*>(window_->shell())})
            for (const QMenu* menu : frame->menuBar()->findChildren<QMenu*>()) {
                QString seen;
                for (const QAction* action : menu->actions()) {
                    const auto at = QString(action->text()).replace("&&", "  ").indexOf('&');
                    if (at < 0)
                        continue;
                    const QChar letter = action->text()[at + 1].toUpper();
                    QVERIFY2(!seen.contains(letter),
                             qPrintable(menu->title() + ": " + action->text()));
                    seen += letter;
                }
            }
    }

    void clicksOff_runNoTool()
    {
        window_->Form_Load();
        window_->ToolBarComp1->clicksOff = true;
        window_->ToolBarComp1->click("ID_mnuOpen");  // would ask for a file
        QVERIFY(fixture_->prompt.fileQuestions.isEmpty());
    }

    void aTab_bringsItsToolbar_butNotWhileASearchRuns()
    {
        window_->Form_Load();
        window_->show();
        window_->showTab("Copy");
        QVERIFY(window_->findChild<QToolBar*>("ToolBarComp1_4")->isVisible());
        QVERIFY(window_->findChild<QToolBar*>("ToolBarComp1_2")->isHidden());
        globals().SEARCH_ACTIVE_FLG = true;
        window_->showTab("Print");
        QCOMPARE(window_->TabStrip1->currentIndex(), 2);
        globals().SEARCH_ACTIVE_FLG = false;
        window_->showTab("EMail");
        QVERIFY(!window_->ToolBarComp1->enabled("ID_mnuCopySelect"));
        window_->showTab("Databases");
        QVERIFY(window_->ToolBarComp1->enabled("ID_mnuCopySelect"));
    }

    void copyTab_takesTheFileInHand()
    {
        window_->Form_Load();
        fixture_->makeCustomers();
        globals().WORK_FILE = "C:\\data\\CUSTOMER.DBF";
        window_->showTab("Copy");
        QCOMPARE(window_->copyPlace().tab().List3[0]->count(), 3);
        QVERIFY(window_->ToolBarComp1->enabled("ID_mnuAutoMatchFields"));
    }

    void explorer_selectsAndShowsFiles()
    {
        window_->Form_Load();
        fixture_->makeCustomers();
        DatabasesTab& tab = window_->databases();
        tab.showFile("C:\\data\\CUSTOMER.DBF");
        QTRY_COMPARE(globals().SELECTED_FILE, "C:\\data\\CUSTOMER.DBF");
        QVERIFY(window_->ToolBarComp1->enabled("ID_mnuSaveAs"));
        QTest::keyClick(tab.PTxShList1, Qt::Key_Return);
        QVERIFY(window_->shell());
        tab.upFolder();
        QCOMPARE(tab.folder(), "C:");
        tab.upFolder();
        QCOMPARE(tab.folder(), "C:");
    }

    void filterTools_setThePattern_andPressThemselves()
    {
        window_->Form_Load();
        DatabasesTab& tab = window_->databases();
        window_->ToolBarComp1->click("ID_AccessBtn");
        QCOMPARE(tab.files().pattern(), "*.MDB");
        QCOMPARE(tab.filterCombo->currentIndex(), 2);
        tab.filterCombo->setCurrentIndex(6);
        QVERIFY(window_->ToolBarComp1->pressed("ID_TextFilterBtn"));
        QVERIFY(window_->ToolBarComp1->pressed("ID_TextFilter"));  // its twin in the menu
        window_->ToolBarComp1->click("ID_Lotus");
        QCOMPARE(tab.files().pattern(), "*.WK4");
        QVERIFY(window_->ToolBarComp1->pressed("ID_LotusBtn"));
        window_->ToolBarComp1->click("ID_TextFilter");
        tab.SetFilterButton(8);  // no tool stands for it: the pressed one stays
        QVERIFY(window_->ToolBarComp1->pressed("ID_TextFilterBtn"));
        QVERIFY_THROWS_EXCEPTION(RunError, tab.SetFilterButton(11));
        QVERIFY_THROWS_EXCEPTION(RunError, tab.SetFilterButton(-1));
    }

    void viewTools_setTheListView()
    {
        window_->Form_Load();
        window_->ToolBarComp1->click("ID_LargeIcons");
        QCOMPARE(globals().FILE_LIST_VIEW, 0);
        window_->ToolBarComp1->click("ID_DetailIcons");
        QCOMPARE(globals().FILE_LIST_VIEW, 3);
    }

    void everyTool_canAct_orSaysWhyNot()
    {
        window_->Form_Load();
        window_->EnableSelectMenus();
        for (const QString& id : window_->ToolBarComp1->ids())
            if (!window_->ToolBarComp1->enabled(id))
                QVERIFY2(window_->ToolBarComp1->find(id)->toolTip().contains("Not there yet"),
                         qPrintable(id));
    }

    void editTool_opensDataEntry_andNothingWithoutAFile()
    {
        window_->Form_Load();
        window_->ToolBarComp1->click("ID_mnuViewEditTable");
        QVERIFY(!window_->shell());
        fixture_->makeCustomers();
        globals().SELECTED_FILE = "C:\\data\\CUSTOMER.DBF";
        window_->ToolBarComp1->click("ID_mnuViewEditTable");
        QCOMPARE(window_->shell()->children().first()->caption(),
                 "C:\\data\\CUSTOMER.DBF - DATA ENTRY - CUSTOMER.DBF");
        window_->ToolBarComp1->click("ID_mnuViewBrowseTable");
        QCOMPARE(window_->shell()->children().last()->caption(), "C:\\data\\CUSTOMER.DBF");
    }

    void anUnreachableFile_isToldWithItsNumber()
    {
        window_->Form_Load();
        window_->DisplayFile("Z:\\data\\a.dbf");
        QCOMPARE(fixture_->prompt.told.size(), 1);
        QVERIFY(fixture_->prompt.told[0].startsWith("Error - 68 - "));
        QVERIFY(fixture_->prompt.told[0].endsWith(" File not Supported"));
    }

    void anotherProgram_getsTheFile_withItsWindowSetFree()
    {
        window_->Form_Load();
        fixture_->makeCustomers();
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        window_->ToolBarComp1->click("ID_mnuOpenFilewithanotherApplication");
        QCOMPARE(fixture_->sandbox.desktop().opened,
                 std::vector<std::string>{"C:\\data\\CUSTOMER.DBF"});
        auto* browser = qobject_cast<ChildFrm1*>(window_->shell()->children().first());
        QCOMPARE(browser->Data1.RecordSource, std::string("Close.Txt"));
        fixture_->sandbox.write("C:\\data\\a.htm", "<b>x</b>");
        window_->DisplayFile("C:\\data\\a.htm");
        QCOMPARE(window_->shell()->children().size(), 2);
        window_->ToolBarComp1->click("ID_mnuOpenFilewithanotherApplication");
        QCOMPARE(window_->shell()->children().size(), 1);  // a page's window goes
        QCOMPARE(fixture_->sandbox.desktop().opened.size(), std::size_t(2));
    }
};

QTEST_MAIN(TstMainWindow)
#include "tst_main_window.moc"
