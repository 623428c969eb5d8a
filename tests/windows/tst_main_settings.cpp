// The main window and its settings: load, place, colours, working folders, tips, the exit.
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

#include "core/color_box.h"
#include "core/file_types.h"
#include "core/options_tab.h"
#include "tests/windows/main_window_case.h"
#include "windows/databases_tab.h"
#include "windows/file_list_model.h"

using namespace velnor;
using namespace velnor::testing;

class TstMainSettings : public QObject, MainWindowCase {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

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
            [&] {
                QCOMPARE(static_cast<QInputDialog&>(dialog).labelText(),
                         "Please Select your Computer Name on the Network - Cancel if you are not "
                         "using a Computer Network.");
            }();
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
};

QTEST_MAIN(TstMainSettings)
#include "tst_main_settings.moc"
