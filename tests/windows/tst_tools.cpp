// The tools of both frames by name: which there are, what they run, and which are on for which kind
// of window.
#include <QAction>
#include <QMap>
#include <QTabBar>
#include <QTest>

#include "core/options_tab.h"
#include "organizer/organizer_pane.h"
#include "tests/windows/main_window_case.h"
#include "windows/databases_tab.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

const QStringList kMainTools{"ID_OpenBtn",
                             "ID_mnuOpen",
                             "ID_FindBtn",
                             "ID_mnuFindFiles",
                             "ID_FindNextBtn",
                             "ID_mnuFindNext",
                             "ID_UpFolderBtn",
                             "ID_FolderList",
                             "ID_CollapseBtn",
                             "ID_LargeIcons",
                             "ID_SmallIcons",
                             "ID_ListIcons",
                             "ID_DetailIcons",
                             "ID_DBaseBtn",
                             "ID_ParadoxBtn",
                             "ID_AccessBtn",
                             "ID_ExcelBtn",
                             "ID_LotusBtn",
                             "ID_AllDataFilter",
                             "ID_TextFilterBtn",
                             "ID_AllFilesFilter",
                             "ID_DBase",
                             "ID_Paradox",
                             "ID_Access",
                             "ID_Excel",
                             "ID_Lotus",
                             "ID_TextFilter",
                             "ID_HelpBtn",
                             "ID_Help",
                             "ID_mnuHelpTableofContents",
                             "ID_mnuSearchonHelpTopic",
                             "ID_OpenDatabase",
                             "ID_CreateDatabase",
                             "ID_CreateTable",
                             "ID_CreateIndex",
                             "ID_HelpDesign",
                             "ID_mnuHelpwithCopy",
                             "ID_HelpPrintingFiles",
                             "ID_EMailHelp",
                             "ID_DstHelp",
                             "ID_OptionsHelp",
                             "ID_mnuSelectCopyFrFile",
                             "ID_mnuSelectCopyToFile",
                             "ID_mnuAutoMatchFields",
                             "ID_PrintText/Documents",
                             "ID_PrintDatabaseFiles",
                             "ID_PrintFileLists",
                             "ID_ReceiveFirst",
                             "ID_ReceiveNext",
                             "ID_ReadAll-UnRead",
                             "ID_EMailStatus",
                             "ID_EMailSelect",
                             "ID_Send",
                             "ID_Addresses",
                             "ID_AddAddress",
                             "ID_ThroughOutlookExp",
                             "ID_Reply",
                             "ID_Forward",
                             "ID_DstOpenDistribution",
                             "ID_DstDistributionLog",
                             "ID_SetColors",
                             "ID_GeneralOptions",
                             "ID_SearchOptions",
                             "ID_EMailOptions",
                             "ID_mnuClose",
                             "ID_mnuOpenFilewithanotherApplication",
                             "ID_mnuSaveAs",
                             "ID_mnuMoveFile",
                             "ID_mnuRenameFile",
                             "ID_mnuDelete",
                             "ID_mnuSetUpPrinter",
                             "ID_mnuPrint",
                             "ID_mnuFileProperties",
                             "ID_mnuExit",
                             "ID_mnuViewBrowseTable",
                             "ID_mnuViewEditTable",
                             "ID_mnuQuerycurrentDatabaseTable",
                             "ID_mnuViewOrganizerName",
                             "ID_mnuViewOrganizerGroup",
                             "ID_mnuViewOrganizerDate",
                             "ID_mnuViewDatabaseSize",
                             "ID_ViewCopyLog",
                             "ID_mnuCopyRecords",
                             "ID_mnuCopyFileFormat",
                             "ID_mnuAddTabletoAccessDatabaseFile",
                             "ID_mnuDeleteDatabaseTableorFile",
                             "ID_mnuAddFiletoDatabase",
                             "ID_mnuOrganizeCreateDatabase",
                             "ID_mnuCreateGroups",
                             "ID_mnuClearOrganizer",
                             "ID_mnuOrganizeFileswithSearch",
                             "ID_PrintReportofDatabaseOrganizer",
                             "ID_mnuRepairorCompact",
                             "ID_mnuSend",
                             "ID_mnuReceive",
                             "ID_mnuSetWorkingFolderList",
                             "ID_mnuSetApplicationColors",
                             "ID_mnuSetApplicationOptions",
                             "ID_mnuRepairorCompactAccessDatabaseFile",
                             "ID_mnuBackUpDatabaseOrganizer",
                             "ID_mnuRestore",
                             "ID_mnuQuickTips",
                             "ID_AbouttheDatabaseFileCopier",
                             "ID_mnuCopySelect",
                             "ID_mnuPaste"};

const QStringList kShellTools{"ID_TableBtn",
                              "ID_IndexBtn",
                              "ID_ReturnBtn",
                              "ID_NextFile",
                              "ID_OpenBtn",
                              "ID_mnuOpenFile",
                              "ID_CloseBtn",
                              "ID_mnuCloseFile",
                              "ID_RefreshBtn",
                              "ID_SaveBtn",
                              "ID_mnuSaveFileAs",
                              "ID_RenameBtn",
                              "ID_mnuRenameFile",
                              "ID_MoveBtn",
                              "ID_mnuMoveFile",
                              "ID_DeleteBtn",
                              "ID_mnuDeleteFile",
                              "ID_PrintBtn",
                              "ID_mnuPrintFile",
                              "ID_DataToggle",
                              "ID_SendBtn",
                              "ID_mnuSendFiles",
                              "ID_ReceiveBtn",
                              "ID_mnuReceiveFile",
                              "ID_CopyBtn",
                              "ID_Query",
                              "ID_mnuQueryTable",
                              "ID_mnuOpenFileApplication",
                              "ID_mnuFileProperties",
                              "ID_mnuSetDatabaseTable",
                              "ID_mnuSetDatabaseTableIndex",
                              "ID_mnuSetTableComments",
                              "ID_mnuCascade",
                              "ID_mnuTileHorizontally",
                              "ID_mnuTileVertically",
                              "ID_mnuFindFiles",
                              "ID_mnuFindNext",
                              "ID_mnuPrinterSetup",
                              "ID_mnuSetWorkingFolders",
                              "ID_mnuSetApplicationColors",
                              "ID_mnuSetApplicationOptions",
                              "ID_mnuHelpContents",
                              "ID_mnuSearchHelpTopic",
                              "ID_mnuQuickTips",
                              "ID_mnuAbout",
                              "ID_mnuExit",
                              "ID_HelpBtn",
                              "ID_mnuEdit",
                              "ID_mnuView",
                              "ID_mnuFindText",
                              "ID_mnuFindNextText"};

}  // namespace

class TstTools : public QObject, MainWindowCase {
    Q_OBJECT
private slots:
    void init()
    {
        setUp();
        window_->Form_Load();
    }
    void cleanup() { tearDown(); }

    void everyToolOfTheMainWindow_isThere()
    {
        const QStringList ids = window_->ToolBarComp1->ids();
        for (const QString& id : kMainTools)
            QVERIFY2(ids.contains(id), qPrintable(id));
    }

    void everyToolOfTheShell_isThere()
    {
        MDIForm1& shell = openCustomers();
        shell.EnableButtons();
        shell.EnableDataButtons(1);
        const QStringList ids = shell.ToolBarComp1->ids();
        for (const QString& id : kShellTools)
            QVERIFY2(ids.contains(id), qPrintable(id));
    }

    void toolsThatNeedAFile_areSwitchedTogether()
    {
        const QStringList needed{"ID_mnuClose", "ID_mnuSaveAs"};  // the others are not there yet
        for (const bool on : {true, false, true}) {
            on ? window_->EnableSelectMenus() : window_->DisableSelectMenus();
            for (const QString& id : needed)
                QCOMPARE(window_->ToolBarComp1->enabled(id), on);
        }
    }

    void organizerViews_haveTheirCommands_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("view");
        QTest::newRow("name") << "ID_mnuViewOrganizerName"
                              << "View Organizer Database by Database Name"
                              << "N";
        QTest::newRow("group") << "ID_mnuViewOrganizerGroup"
                               << "View Database Organizer  by Group"
                               << "G";
        QTest::newRow("date") << "ID_mnuViewOrganizerDate"
                              << "View Database Organizer by Date Modified"
                              << "D";
        QTest::newRow("size") << "ID_mnuViewDatabaseSize"
                              << "View Database Organizer by Size"
                              << "S";
        QTest::newRow("log") << "ID_ViewCopyLog"
                             << "View Copy Log for Past Table Copies"
                             << "L";
    }
    void organizerViews_haveTheirCommands()
    {
        QFETCH(QString, id);
        QFETCH(QString, caption);
        QFETCH(QString, view);
        QCOMPARE(window_->ToolBarComp1->find(id)->toolTip(), caption);
        window_->ToolBarComp1->click(id);
        QCOMPARE(window_->databases().organizer->ORG_VIEW, view);
        QVERIFY(window_->ToolBarComp1->pressed(id));
    }

    void optionTools_bringTheirFormUp_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<int>("frame");
        QTest::newRow("colors") << "ID_mnuSetApplicationColors" << int(OptionsTab::kColorsFrame);
        QTest::newRow("options") << "ID_mnuSetApplicationOptions" << int(OptionsTab::kGeneralFrame);
    }
    void optionTools_bringTheirFormUp()
    {
        QFETCH(QString, id);
        QFETCH(int, frame);
        window_->show();
        window_->ToolBarComp1->click(id);
        QVERIFY(window_->options().isVisible());
        QCOMPARE(window_->options().frameInFront(), frame);
    }

    void copyRecords_bringsTheCopyTab()
    {
        window_->show();
        window_->ToolBarComp1->click("ID_mnuCopyRecords");
        QCOMPARE(window_->TabStrip1->tabText(window_->TabStrip1->currentIndex()), "Copy");
    }

    // Every state of the shell's tools, by the order of the calls that people's doings lead to.
    void eachState_switchesItsTools_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("on");
        QTest::addColumn<QString>("off");
        QTest::newRow("no window")
            << "none"
            << "ID_OpenBtn ID_mnuOpenFile ID_HelpBtn"
            << "ID_CloseBtn ID_SaveBtn ID_RefreshBtn ID_CopyBtn ID_DataToggle ID_TableBtn "
               "ID_IndexBtn ID_mnuEdit ID_mnuView ID_mnuFindText ID_mnuFindNextText "
               "ID_mnuSaveFileAs";
        QTest::newRow("a text") << "text"
                                << "ID_OpenBtn ID_CloseBtn ID_CopyBtn ID_mnuFindText "
                                   "ID_mnuFindNextText ID_HelpBtn"
                                << "ID_SaveBtn ID_RefreshBtn ID_DataToggle ID_TableBtn ID_IndexBtn "
                                   "ID_mnuView ID_mnuSaveFileAs ID_mnuSetDatabaseTable "
                                   "ID_mnuSetTableComments ID_mnuSetDatabaseTableIndex";
        QTest::newRow("a table")
            << "data"
            << "ID_OpenBtn ID_CloseBtn ID_RefreshBtn ID_DataToggle ID_TableBtn ID_IndexBtn "
               "ID_mnuView ID_mnuFindText ID_mnuFindNextText ID_mnuSetDatabaseTable "
               "ID_mnuSetTableComments ID_mnuSetDatabaseTableIndex ID_HelpBtn"
            << "ID_SaveBtn ID_CopyBtn ID_mnuSaveFileAs";
        QTest::newRow("a table without indexes") << "bare"
                                                 << "ID_RefreshBtn ID_mnuView"
                                                 << "ID_TableBtn ID_IndexBtn";
        QTest::newRow("data entry")
            << "entry"
            << "ID_OpenBtn ID_CloseBtn ID_SaveBtn ID_RefreshBtn ID_CopyBtn ID_mnuEdit ID_mnuView "
               "ID_mnuSaveFileAs ID_HelpBtn"
            << "ID_DataToggle ID_TableBtn ID_IndexBtn ID_mnuFindText ID_mnuFindNextText "
               "ID_mnuSetDatabaseTable ID_mnuSetTableComments ID_mnuSetDatabaseTableIndex";
    }
    void eachState_switchesItsTools()
    {
        QFETCH(QString, state);
        QFETCH(QString, on);
        QFETCH(QString, off);
        MDIForm1& shell = openCustomers();
        for (const bool before : {false, true}) {  // from either side
            before ? shell.EnableButtons() : shell.DisableButtons();
            const QMap<QString, std::function<void()>> calls{
                {"none",
                 [&] {
                     shell.DisableButtons();
                     shell.EnableMDIButtons();
                 }},
                {"text", [&] { shell.EnableTextButtons(); }},
                {"data", [&] { shell.EnableDataButtons(2); }},
                {"bare", [&] { shell.EnableDataButtons(0); }},
                {"entry", [&] { shell.EnableButtons(); }},
            };
            calls[state]();
            for (const QString& id : on.split(' '))
                QVERIFY2(shell.ToolBarComp1->enabled(id), qPrintable(id));
            for (const QString& id : off.split(' '))
                QVERIFY2(!shell.ToolBarComp1->enabled(id), qPrintable(id));
        }
    }

private:
    MDIForm1& openCustomers()
    {
        fixture_->makeCustomers();
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        return *window_->shell();
    }
};

QTEST_MAIN(TstTools)
#include "tst_tools.moc"
