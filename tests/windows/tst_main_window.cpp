// The main window: load and first activation, the gate to the viewing windows, tabs, tools, the
// explorer.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTabBar>
#include <QTableView>
#include <QTest>
#include <QTextBrowser>
#include <QToolBar>
#include <QTreeView>

#include "copy/copy_tab.h"
#include "copy/line_list.h"
#include "core/color_box.h"
#include "core/file_types.h"
#include "core/options_tab.h"
#include "core/settings.h"
#include "tests/windows/window_fixture.h"
#include "windows/childfrm1.h"
#include "windows/copy_place.h"
#include "windows/databases_tab.h"
#include "windows/file_list_model.h"
#include "windows/mdiform1.h"
#include "windows/velnor1.h"

using namespace velnor;
using namespace velnor::testing;

class TstMainWindow : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        fixture_ = std::make_unique<WindowFixture>();
        window_ = std::make_unique<Velnor1>();
        upcalls().DisplayFile = [this](const QString& path) { window_->DisplayFile(path); };
        upcalls().OpenwithOLE = [this](const QString& path) { window_->OpenwithOLE(path); };
    }
    void cleanup()
    {
        window_.reset();
        fixture_.reset();
    }

    void load_setsTheStage()
    {
        window_->Form_Load();
        QCOMPARE(globals().FILE_EXT, "DBF");
        QCOMPARE(globals().COMPUTER_NAME, "TESTHOST");
        QVERIFY(!globals().ASK_COMPUTER_NAME);
        QCOMPARE(window_->ID_Date->text(), "11-18-2004");
        QCOMPARE(window_->ID_Time->text(), "1:08 PM");
        QStringList tabs;
        for (int i = 0; i < window_->TabStrip1->count(); ++i)
            tabs << window_->TabStrip1->tabText(i);
        QCOMPARE(tabs, (QStringList{"Databases", "Design", "Copy", "Print", "EMail", "Distribution",
                                    "Tools"}));
        for (int bar = 2; bar <= 8; ++bar)
            QCOMPARE(window_->findChild<QToolBar*>(QString("ToolBarComp1_%1").arg(bar))->isHidden(),
                     bar != 2);
        QVERIFY(!window_->ToolBarComp1->enabled("ID_mnuSaveAs"));
    }

    void aStoredPlaceBeyondTheScreen_opensAt500()
    {
        globals().MAIN_LEFT = 99999;
        globals().MAIN_TOP = -3;
        restart();
        window_->Form_Load();
        window_->show();
        QCOMPARE(globals().MAIN_LEFT, 500);
        QCOMPARE(globals().MAIN_TOP, 500);
        QCOMPARE(window_->pos(), QPoint(33, 33));
    }

    void aStoredPlaceOnTheScreen_isTaken()
    {
        auto& G = globals();
        G.MAIN_LEFT = 1500;
        G.MAIN_TOP = 750;
        G.MAIN_WIDTH = 13500;
        G.MAIN_HEIGHT = 9000;
        restart();
        window_->Form_Load();
        window_->show();
        QCOMPARE(window_->pos(), QPoint(100, 50));
        QCOMPARE(window_->size(), QSize(900, 600));
    }

    void aStoredSizeBeyondAllBounds_isCut()
    {
        globals().MAIN_WIDTH = globals().MAIN_HEIGHT = 2000000000;
        globals().SHELL_WIDTH = globals().SHELL_HEIGHT = 2000000000;
        restart();
        window_->Form_Load();
        QCOMPARE(window_->size(), window_->screen()->availableGeometry().size() * 2);
        fixture_->makeCustomers();
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        QCOMPARE(window_->shell()->size(), window_->screen()->availableGeometry().size() * 2);
    }

    void aNewcomer_isToldNothing_andSeesTheColoursOfTheDesktop()
    {
        window_->Form_Load();
        QCOMPARE(fixture_->prompt.told, QStringList());
        QCOMPARE(static_cast<quint32>(globals().BROWSER_BACK_COLOR), 0x80000005u);
        QCOMPARE(static_cast<quint32>(globals().BROWSER_TEXT_COLOR), 0x80000008u);
        // In no file, so the defaults at each run.
        QCOMPARE(globals().DISPLAY_BACK_COLOR, 0xE0E0E0);
        QCOMPARE(globals().BUTTON_TEXT_COLOR, 0);
    }

    void missingSettings_areToldInOrder_andTheDefaultsServe()
    {
        for (const char* file : {"C:\\app\\Options.INI", "C:\\app\\Colors.INI"})
            fixture_->sandbox.files().remove(file);
        window_->Form_Load();
        QCOMPARE(fixture_->prompt.told,
                 (QStringList{"          Use the Utility Menu Option - Set Window Colors",
                              "Use the Utility Menu Option - Set Program Options"}));
        QCOMPARE(globals().MAIN_BACK_COLOR, 0xFF8080);
        QCOMPARE(globals().FILE_LIST_VIEW, 3);
        QVERIFY(!fixture_->sandbox.files().exists("C:\\app\\Options.INI"));
        window_->close();
        QVERIFY(fixture_->sandbox.files().exists("C:\\app\\Options.INI"));
        QVERIFY(!fixture_->sandbox.files().exists("C:\\app\\Colors.INI"));
        QVERIFY(!fixture_->sandbox.files().exists("C:\\app\\FoldFile.INI"));
    }

    void theExit_writesOptions_evenWhenNothingWasChanged()
    {
        globals().SAVE_WINDOW_SIZE = false;
        globals().ASK_COMPUTER_NAME = false;
        restart();
        const std::string before = fixture_->sandbox.read(kOptions);
        window_->Form_Load();
        fixture_->sandbox.files().remove(kOptions);
        window_->close();
        QCOMPARE(fixture_->sandbox.read(kOptions), before);
    }

    void theExit_doesNotStorePlaces_whenTheOptionIsOff()
    {
        globals().SAVE_WINDOW_SIZE = false;
        restart();
        window_->Form_Load();
        window_->resize(900, 600);
        window_->close();
        QVERIFY(fixture_->sandbox.read(kOptions).starts_with(" 0  100  7000  9500  0  0  0  0 "));
    }

    void anExitThatCannotWrite_isTold_andEndsAllTheSame()
    {
        window_->Form_Load();
        window_->show();
        globals().APP_PATH = "C:\\gone";
        window_->close();
        QCOMPARE(fixture_->prompt.told.size(), 1);
        QVERIFY(fixture_->prompt.told[0].startsWith("Error: 76 - "));
        QVERIFY(window_->isHidden());
    }

    void aSearchBlockOf999_isMended_andRewrittenAtTheExit()
    {
        globals().SEARCH_FIRST_BLOCK = 999;
        restart();
        window_->Form_Load();
        QCOMPARE(globals().SEARCH_FIRST_BLOCK, 5000);
        window_->close();
        QVERIFY(fixture_->sandbox.read(kOptions).find(" 3  5000  500 ") != std::string::npos);
    }

    void anEmptyComputerName_staysWhenItIsNotToBeAsked()
    {
        globals().ASK_COMPUTER_NAME = false;
        restart();
        window_->Form_Load();
        QCOMPARE(globals().COMPUTER_NAME, "");
    }

    void favourites_goAndCome()
    {
        window_->Form_Load();
        window_->MAIL_FAVORITES[3] = "ada@example.org";
        window_->close();
        window_ = std::make_unique<Velnor1>();
        window_->Form_Load();
        QCOMPARE(window_->MAIL_FAVORITES[3], "ada@example.org");
    }

    void workingFolders_areSteppedThrough_fromTheFirstActivationOn()
    {
        fixture_->sandbox.makeFolders("C:\\more");
        // A folder twice is visited twice; a filter that isn't there keeps the one in force.
        fixture_->sandbox.write("C:\\app\\FoldFile.INI",
                                "C:\\data\\ - 5\r\n\r\nC:\\more\\ - 2\r\nC:\\data\\ - 99\r\n");
        window_->setStartFolder("C:\\app");
        window_->Form_Load();
        QCOMPARE(window_->List1->count(), 3);
        window_->Form_Activate();
        DatabasesTab& tab = window_->databases();
        QCOMPARE(tab.folder(), "C:\\data");
        QCOMPARE(tab.filterCombo->currentIndex(), 5);
        QCOMPARE(window_->List1->currentRow(), 1);
        window_->ToolBarComp1->click("ID_FolderList");
        QCOMPARE(tab.folder(), "C:\\more");
        QCOMPARE(tab.filterCombo->currentIndex(), 2);
        window_->ToolBarComp1->click("ID_FolderList");
        QCOMPARE(tab.folder(), "C:\\data");
        QCOMPARE(tab.filterCombo->currentIndex(), 2);
        window_->ToolBarComp1->click("ID_FolderList");
        QCOMPARE(tab.filterCombo->currentIndex(), 5);  // and round again
    }

    void aWorkingFolderWithoutFilter_selectsTheFirst_withoutBackslashStays()
    {
        fixture_->sandbox.write("C:\\app\\FoldFile.INI", "C:\\data\\x\r\nplain - 4\r\n");
        window_->Form_Load();
        window_->StepFolderList();
        DatabasesTab& tab = window_->databases();
        QCOMPARE(tab.folder(), "C:\\data");
        QCOMPARE(tab.filterCombo->currentIndex(), 0);
        window_->StepFolderList();
        QCOMPARE(tab.folder(), "C:\\data");
        QCOMPARE(tab.filterCombo->currentIndex(), 4);
    }

    void anEmptyFolderList_doesNothing()
    {
        fixture_->sandbox.write("C:\\app\\FoldFile.INI", "");
        window_->setStartFolder("C:\\data");
        window_->Form_Load();
        const int filter = window_->databases().filterCombo->currentIndex();
        QCOMPARE(window_->List1->count(), 0);
        window_->Form_Activate();
        window_->ToolBarComp1->click("ID_FolderList");
        QCOMPARE(window_->databases().folder(), "C:\\data");
        QCOMPARE(window_->databases().filterCombo->currentIndex(), filter);
        QCOMPARE(fixture_->prompt.told, QStringList());
    }

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
        emit tab.PTxShList1->activated(tab.PTxShList1->currentIndex());
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

    void coloursAndType_reachTheWindows()
    {
        window_->Form_Load();
        auto& list = *window_->databases().PTxShList1;
        const QColor desktop = list.palette().color(QPalette::Base);
        fixture_->makeCustomers();
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        auto* browser = window_->shell()->children().first();
        auto* grid = browser->findChild<QTableView*>("MSFlexGrid1");
        window_->mnuUtilitiesColors_Click();
        QCOMPARE(window_->TabStrip1->currentIndex(), 6);
        QCOMPARE(window_->options().frameInFront(), 0);
        window_->mnuUtilitiesOptions_Click();
        QCOMPARE(window_->options().frameInFront(), 1);
        OptionsTab& options = window_->options();
        options.Text5[3]->setBackColor(0x102030);
        options.Text5[15]->setBackColor(0xFFFFFF);
        options.Text5[7]->setBackColor(0x203040);
        options.Text5[19]->setBackColor(0xFFFFFF);
        options.CHKOPTION[0]->setChecked(true);
        options.CHKOPTION[3]->setChecked(false);
        options.HScroll2->setValue(900);
        options.OptnApplyBtn->click();
        QCOMPARE(list.palette().color(QPalette::Base), QColor(0x30, 0x20, 0x10));
        QCOMPARE(grid->palette().color(QPalette::Base), QColor(0x40, 0x30, 0x20));
        QVERIFY(list.font().bold());
        QVERIFY(grid->font().bold());
        QVERIFY(!grid->showGrid());
        QCOMPARE(grid->verticalHeader()->defaultSectionSize(), 60);
        options.OptWinColorBtn->click();
        options.OptnApplyBtn->click();
        QCOMPARE(list.palette().color(QPalette::Base), desktop);
        QVERIFY(fixture_->prompt.told.isEmpty());
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

    void tips_showAtTheFirstActivation_unlessTheyAreSwitchedOff()
    {
        window_->Form_Load();
        window_->Form_Activate();
        auto* tips = window_->findChild<QDialog*>("QuikTip1");
        QVERIFY(tips);
        QVERIFY(!tips->isModal());
        window_->ToolBarComp1->click("ID_mnuQuickTips");  // the same comes to the front
        QCOMPARE(window_->findChildren<QDialog*>("QuikTip1").size(), 1);
        window_->close();
        QVERIFY(!globals().QUIKTIP_OPEN);
        globals().SHOW_TIPS = false;
        restart();
        window_ = std::make_unique<Velnor1>();
        window_->Form_Load();
        window_->Form_Activate();
        QVERIFY(!window_->findChild<QDialog*>("QuikTip1"));
    }

    void aboutAndHelp_openBesideTheWindow_andGoWithIt()
    {
        window_->Form_Load();
        window_->ToolBarComp1->click("ID_AbouttheDatabaseFileCopier");
        QVERIFY(globals().ABOUT_OPEN);
        window_->showTab("Copy");
        window_->ToolBarComp1->click("ID_Help");
        auto* page = window_->findChild<QTextBrowser*>("HelpPage");
        QVERIFY(page);
        QCOMPARE(page->source().fileName(), "copy.html");
        window_->ToolBarComp1->click("ID_mnuHelpTableofContents");
        QCOMPARE(page->source().fileName(), "index.html");
        window_->close();
        QVERIFY(!globals().ABOUT_OPEN);
    }

    void theNetworkName_isAskedForOnce()
    {
        auto& G = globals();
        fixture_->prompt.expectDialog("AskNetworkName", [](QDialog& dialog) {
            static_cast<QInputDialog&>(dialog).setTextValue("attic\r\nsecond line");
            return QDialog::Accepted;
        });
        window_->AskNetworkName();
        QCOMPARE(G.COMPUTER_NAME, "ATTIC");
        window_->AskNetworkName();
        QCOMPARE(fixture_->prompt.dialogsRun.size(), 1);
        G.ASK_COMPUTER_NAME = true;
        fixture_->prompt.expectDialog("AskNetworkName", [](QDialog&) { return QDialog::Rejected; });
        window_->AskNetworkName();
        QCOMPARE(G.COMPUTER_NAME, "");
        QVERIFY(!G.ASK_COMPUTER_NAME);
    }

    void closing_storesPlaces_andClosesTheShell()
    {
        window_->Form_Load();
        fixture_->makeCustomers();
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        window_->resize(900, 600);
        window_->close();
        QCOMPARE(globals().MAIN_WIDTH, 13500);
        QCOMPARE(globals().MAIN_HEIGHT, 9000);
        QVERIFY(globals().SHELL_WIDTH > 0);
        QVERIFY(!globals().MDI_OPEN_FLG);
        const int shellWidth = globals().SHELL_WIDTH;
        resetGlobals();
        globals().APP_PATH = "C:\\app";
        MailFavorites favorites;
        LoadOptions(favorites);
        QCOMPARE(globals().MAIN_WIDTH, 13500);
        QCOMPARE(globals().MAIN_HEIGHT, 9000);
        QCOMPARE(globals().SHELL_WIDTH, shellWidth);
    }

private:
    /// The options in force go to their file; then all is as after StartProgram.
    void restart()
    {
        SaveOptions({});
        SetDefaultOptions();
    }

    static constexpr const char* kOptions = "C:\\app\\Options.INI";
    static constexpr const char* kUnsupported =
        "File Type is not Supported by this Software. Do you want to Open the File with another "
        "Program?";
    std::unique_ptr<WindowFixture> fixture_;
    std::unique_ptr<Velnor1> window_;
};

QTEST_MAIN(TstMainWindow)
#include "tst_main_window.moc"
