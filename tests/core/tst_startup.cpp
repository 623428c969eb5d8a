#include <optional>

#include <QTest>

#include "core/colors.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/startup.h"
#include "core/upcalls.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;

class StartupTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        resetGlobals();
        resetUpcalls();
        box_.emplace();
    }
    void cleanup()
    {
        resetUpcalls();
        box_.reset();
    }

    void startedInTheProgramFolder_staysThere()
    {
        box_->write("C:\\Work\\Velnor.exe", "");
        box_->write("C:\\Program Files\\Velnor3\\Velnor.exe", "");
        box_->host().currentFolder = "C:\\Work";
        StartProgram();
        QCOMPARE(globals().APP_PATH, "C:\\Work");
        QCOMPARE(globals().ORGANIZER_PATH, "C:\\Work\\DataTabl.MDB");
        QCOMPARE(globals().PRINT_INI_PATH, "C:\\Work\\F@Prnt.INI");
        QCOMPARE(currentFolder(), "C:\\Work");
    }

    void startedElsewhere_movesToTheUsualFolder()
    {
        box_->write("C:\\Program Files\\Velnor3\\VELNOR.EXE", "");
        box_->makeFolders("C:\\Work");
        box_->host().currentFolder = "C:\\Work";
        StartProgram();
        QCOMPARE(globals().APP_PATH, "C:\\Program Files\\Velnor3");
        QCOMPARE(currentFolder(), "C:\\Program Files\\Velnor3");
    }

    void usualFolderWithoutTheProgram_movesAllTheSame_andAppPathIsTheOldFolder()
    {
        box_->makeFolders("C:\\Program Files\\Velnor3");
        box_->makeFolders("C:\\Work");
        box_->host().currentFolder = "C:\\Work";
        StartProgram();
        QCOMPARE(globals().APP_PATH, "C:\\Work");
        QCOMPARE(currentFolder(), "C:\\Program Files\\Velnor3");
    }

    void noUsualFolder_keepsItsNameAndTheCurrentFolder()
    {
        box_->makeFolders("C:\\Work");
        box_->host().currentFolder = "C:\\Work";
        StartProgram();
        QCOMPARE(globals().APP_PATH, "C:\\Program Files\\Velnor3");
        QCOMPARE(currentFolder(), "C:\\Work");
    }

    void atADriveRoot_onlyTheOrganizerPathHasOneBackslash()
    {
        box_->makeFolders("C:\\d");
        box_->paths().mount("D:", box_->root() + "/d");
        box_->write("D:\\Velnor.exe", "");
        box_->host().currentFolder = "D:\\";
        StartProgram();
        const auto& G = globals();
        QCOMPARE(G.APP_PATH, "D:\\");
        QCOMPARE(G.PATH_SEP, "");
        QCOMPARE(G.ORGANIZER_PATH, "D:\\DataTabl.MDB");
        QCOMPARE(G.PRINT_INI_PATH, "D:\\\\F@Prnt.INI");
        QCOMPARE(G.APP_PATH + "\\Options.INI", "D:\\\\Options.INI");
        box_->write("D:\\Options.INI", "x");
        QCOMPARE(Dir(G.APP_PATH + "\\Options.INI"), "Options.INI");  // and it is found all the same
    }

    void anUnreachableFolderDoesNotStopTheStart()
    {
        box_->host().currentFolder = "Q:\\Gone";
        bool listed = false;
        upcalls().LoadGroupList = [&] { listed = true; };
        StartProgram();
        QCOMPARE(globals().APP_PATH, "Q:\\Gone");
        QCOMPARE(globals().EXT_TABLE[1], "DBF");
        QVERIFY(listed);
    }

    void setsDefaultsInOrder_theGroupListLast()
    {
        auto& G = globals();
        G.SEARCH_CANCEL = true;
        G.FINDFILE_OPEN = true;
        G.LOG_COPY = true;
        G.MAIN_BACK_COLOR = 1;
        bool complete = false;
        upcalls().LoadGroupList = [&] {
            complete = G.EXT_TABLE[27] == "ZIP" && G.MAIN_BACK_COLOR == 0xFF8080 &&
                       !G.ORGANIZER_PATH.isEmpty();
        };
        StartProgram();
        QVERIFY(complete);
        QVERIFY(!G.SEARCH_CANCEL && !G.FINDFILE_OPEN && !G.LOG_COPY);
    }

    void noFileIsMadeAtStart_andNothingIsSaid()
    {
        testing::ScriptedPrompt prompt;
        StartProgram();
        QVERIFY(box_->files().list("C:\\").empty());
        QVERIFY(prompt.told.isEmpty());
    }

    void aGroupListThatFailsDoesNotStopTheStart()
    {
        upcalls().LoadGroupList = [] { throw RunError(RunErrorNumber::FileNotFound, "gone"); };
        StartProgram();
        QCOMPARE(globals().SEARCH_FIRST_BLOCK, 5000);
    }

    void defaultsOfOptions()
    {
        auto& G = globals();
        G.SAVE_WINDOW_SIZE = false;
        G.SEARCH_FIRST_BLOCK = 1;
        G.GRID_TEXT_STYLE = "R";
        G.SHOW_TEXT_SOURCE = true;
        G.SELECTED_FILE = "C:\\a.dbf";
        SetDefaultOptions();
        QVERIFY(!G.BOLD_TEXT && G.SAVE_WINDOW_SIZE && !G.EXPLORER_GRID_LINES && G.GRID_LINES);
        QVERIFY(!G.GROUP_BY_FOLDER && G.PROMPT_SAVE_COPYTO && G.PROMPT_SAVE_DESIGN && !G.LOG_COPY);
        QVERIFY(G.SHOW_TIPS && G.ASK_COMPUTER_NAME && !G.SHOW_TEXT_SOURCE);
        QCOMPARE(G.SEARCH_FIRST_BLOCK, 5000);
        QCOMPARE(G.SEARCH_NEXT_BLOCK, 500);
        QCOMPARE(G.GRID_ROW_HEIGHT, 250);
        QCOMPARE(G.GRID_TEXT_STYLE, "F");
        QCOMPARE(G.DEFAULT_ADDRESS_BOOK, "MailAddr.MLS");
        QCOMPARE(G.FILE_LIST_VIEW, 3);
        QCOMPARE(G.MENU_STYLE, 2);
        QCOMPARE(G.SELECTED_FILE, "C:\\a.dbf");
        QCOMPARE(G.EXT_TABLE[1], "DBF");
    }

    void defaultsOfColours()
    {
        SetDefaultColors();
        const auto& G = globals();
        QCOMPARE(static_cast<quint32>(G.LIST_BACK_COLOR), 0x8000000Cu);
        QCOMPARE(G.LIST_TEXT_COLOR, 0xFF00);
        QCOMPARE(G.ENTRY_TEXT_COLOR, 0x4080);
        QCOMPARE(static_cast<quint32>(G.TAB_BACK_COLOR), 0x80000004u);
        QCOMPARE(G.DESIGN_TEXT_COLOR, 255);
        QCOMPARE(G.BUTTON_BACK_COLOR, 0xC0C0C0);
    }

private:
    std::optional<testing::Sandbox> box_;
};

QTEST_MAIN(StartupTest)
#include "tst_startup.moc"
