// The settings files: their bytes, what is read back, and what is told of missing or damaged ones.
#include <optional>

#include <QTest>

#include "core/application_folder.h"
#include "core/globals.h"
#include "core/settings.h"
#include "core/startup.h"
#include "tests/core/error_of.h"
#include "tests/support/faulty_disk.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;
using velnor::testing::errorOf;
using velnor::testing::FaultyDisk;
using velnor::testing::Sandbox;
using velnor::testing::ScriptedPrompt;

namespace {

constexpr const char* kOptions = "C:\\app\\Options.INI";
constexpr const char* kColors = "C:\\app\\Colors.INI";
constexpr const char* kFolders = "C:\\app\\FoldFile.INI";

/// An Options.INI with these values in line 1 and in the lines of texts, and flags.
std::string options(const std::string& numbers, const std::string& mailFrom,
                    const std::string& computer, const std::string& flags)
{
    std::string file = numbers + "\r\n0\r\nsecond\r\n" + mailFrom + "\r\n" + computer + "\r\n";
    for (int i = 0; i < 10; ++i)
        file += "fav" + std::to_string(i) + "\r\n";
    return file + flags + "\r\n";
}

constexpr const char* kNumbers = " 1  2  3  4  5  6  7  8  9  10  11  12  13  14  0  999  0  1  4  "
                                 "3  300 ";
constexpr const char* kFlags = " 1  0  0  0  1  0  0  0  1  0  1 ";

}  // namespace

class SettingsTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        resetGlobals();
        SetDefaultColors();
        SetDefaultOptions();
        box_.emplace();
        prompt_.emplace();
        box_->makeFolders("C:\\app");
        globals().APP_PATH = "C:\\app";
        favorites_ = {};
    }
    void cleanup()
    {
        prompt_.reset();
        box_.reset();
    }

    void everyOptionHasItsPlace()
    {
        box_->write(kOptions, options(kNumbers, "me@example.org", "HOST", kFlags));
        LoadOptions(favorites_);
        const auto& G = globals();
        QCOMPARE(prompt_->told, QStringList());
        QCOMPARE(G.MAIN_LEFT, 1);
        QCOMPARE(G.MAIN_TOP, 2);
        QCOMPARE(G.MAIN_HEIGHT, 3);
        QCOMPARE(G.MAIN_WIDTH, 4);
        QCOMPARE(G.SHELL_LEFT, 5);
        QCOMPARE(G.SHELL_TOP, 6);
        QCOMPARE(G.SHELL_HEIGHT, 7);
        QCOMPARE(G.SHELL_WIDTH, 8);
        QCOMPARE(G.SAVED_WIDTH_1, 9);
        QCOMPARE(G.SAVED_HEIGHT_1, 10);
        QCOMPARE(G.SAVED_MARGIN, 11);
        QCOMPARE(G.SAVED_WIDTH_2, 12);
        QCOMPARE(G.SAVED_HEIGHT_2, 13);
        QCOMPARE(G.SAVED_HEIGHT_3, 14);
        QCOMPARE(G.FILE_LIST_VIEW, 0);
        QCOMPARE(G.MENU_STYLE, 1);
        QCOMPARE(G.MENU_FONT_TYPE, 4);
        QCOMPARE(G.LABEL_TEXT_TYPE, 3);
        QCOMPARE(G.GRID_ROW_HEIGHT, 300);
        QCOMPARE(G.OPTION_TEXT_1, "0");
        QCOMPARE(G.OPTION_TEXT_2, "second");
        QCOMPARE(G.DEFAULT_MAIL_FROM, "me@example.org");
        QCOMPARE(G.COMPUTER_NAME, "HOST");
        QCOMPARE(favorites_[0], "fav0");
        QCOMPARE(favorites_[9], "fav9");
        QVERIFY(G.BOLD_TEXT && !G.SHOW_TIPS && !G.STARTUP_FLG && !G.ASK_COMPUTER_NAME);
        QVERIFY(G.EXPLORER_GRID_LINES && !G.GRID_LINES && !G.PROMPT_SAVE_COPYTO);
        QVERIFY(!G.PROMPT_SAVE_DESIGN && G.GROUP_BY_FOLDER && !G.SAVE_WINDOW_SIZE && G.LOG_COPY);
    }

    void smallSearchBlocksAreMended_andWrittenSo()
    {
        box_->write(kOptions, options(kNumbers, "", "", kFlags));
        LoadOptions(favorites_);
        QCOMPARE(globals().SEARCH_FIRST_BLOCK, 5000);  // 999 in the file
        QCOMPARE(globals().SEARCH_NEXT_BLOCK, 500);    // 0 in the file
        SaveOptions(favorites_);
        QVERIFY(box_->read(kOptions).find(" 0  5000  500  1  4  3  300 \r\n") != std::string::npos);
    }

    void aFirstBlockOf1000Stays()
    {
        std::string numbers = kNumbers;
        numbers.replace(numbers.find("999"), 3, "1000");
        box_->write(kOptions, options(numbers, "", "", kFlags));
        LoadOptions(favorites_);
        QCOMPARE(globals().SEARCH_FIRST_BLOCK, 1000);
    }

    void aFlagIsOnlySetByOne()
    {
        box_->write(kOptions, options(kNumbers, "", "", " 2 -1  1  0  1  1  1  1  1  1  1 "));
        LoadOptions(favorites_);
        QVERIFY(!globals().BOLD_TEXT && !globals().SHOW_TIPS && globals().STARTUP_FLG);
    }

    void writtenBytes()
    {
        auto& G = globals();
        G.MAIN_LEFT = -15;
        G.SEARCH_NEXT_BLOCK = 70000;
        G.DEFAULT_MAIL_FROM = "me@example.org";
        G.COMPUTER_NAME = "HOST";
        G.LOG_COPY = true;
        G.ASK_COMPUTER_NAME = false;
        favorites_[0] = "a@example.org";
        SaveOptions(favorites_);
        QCOMPARE(box_->read(kOptions),
                 "-15  100  7000  9500  0  0  0  0  4515  2445  90  4515  3480  2656  3  5000  "
                 "70000  2  1  0  250 \r\n0\r\n\r\nme@example.org\r\nHOST\r\na@example.org\r\n"
                 "\r\n\r\n\r\n\r\n\r\n\r\n\r\n\r\n\r\n"
                 " 0  1  1  0  0  1  1  1  0  1  1 \r\n");
        QCOMPARE(box_->files().list("C:\\app").size(), 1u);  // and nothing beside it
    }

    void whatWasSaved_isLoaded()
    {
        auto& G = globals();
        G.MAIN_LEFT = 99999;  // wider than 16 bits
        G.DEFAULT_MAIL_FROM = QString::fromUtf8("j\u00f6rg@example.org");
        G.SHOW_TIPS = false;
        favorites_[9] = "z@example.org";
        SaveOptions(favorites_);
        resetGlobals();
        G.APP_PATH = "C:\\app";
        MailFavorites read;
        LoadOptions(read);
        QCOMPARE(G.MAIN_LEFT, 99999);
        QCOMPARE(G.DEFAULT_MAIL_FROM, QString::fromUtf8("j\u00f6rg@example.org"));
        QVERIFY(!G.SHOW_TIPS);
        QCOMPARE(read, favorites_);
        QCOMPARE(prompt_->told, QStringList());
    }

    void bytesOfAnOlderMachine_areCharacters()
    {
        box_->write(kOptions, options(kNumbers, "j\xF6rg@example.org", "", kFlags));
        LoadOptions(favorites_);
        QCOMPARE(globals().DEFAULT_MAIL_FROM, QString::fromUtf8("j\u00f6rg@example.org"));
    }

    void aCommaInTheSender_shiftsWhatFollows()  // the file has no way to say otherwise: required
    {
        auto& G = globals();
        G.DEFAULT_MAIL_FROM = "Smith,John";
        G.COMPUTER_NAME = "HOST";
        favorites_[0] = "fav0";
        G.BOLD_TEXT = false;
        SaveOptions(favorites_);
        LoadOptions(favorites_);
        QCOMPARE(G.DEFAULT_MAIL_FROM, "Smith");
        QCOMPARE(G.COMPUTER_NAME, "John");
        QCOMPARE(favorites_[0], "HOST");
        QCOMPARE(favorites_[1], "fav0");
        // The flags begin with the last favourite, so that each is the one before it.
        QVERIFY(!G.BOLD_TEXT && !G.SHOW_TIPS && G.STARTUP_FLG && G.ASK_COMPUTER_NAME);
        QVERIFY(G.EXPLORER_GRID_LINES && !G.GRID_LINES && G.PROMPT_SAVE_COPYTO);
        QVERIFY(G.PROMPT_SAVE_DESIGN && G.GROUP_BY_FOLDER && !G.SAVE_WINDOW_SIZE && G.LOG_COPY);
        QCOMPARE(prompt_->told, QStringList());
    }

    void missingOptions_areTold_andDefaultsStay()
    {
        LoadOptions(favorites_);
        QCOMPARE(prompt_->told, QStringList("Use the Utility Menu Option - Set Program Options"));
        QCOMPARE(prompt_->toldTitles, QStringList(kProgramTitle));
        QCOMPARE(globals().MAIN_WIDTH, 9500);
        QVERIFY(!box_->files().exists(kOptions));
    }

    void aShortFile_isTold_andWhatItHadStays()
    {
        std::string file = options(kNumbers, "me@example.org", "HOST", kFlags);
        file.resize(file.find("fav3"));
        box_->write(kOptions, file);
        LoadOptions(favorites_);
        QCOMPARE(prompt_->told, QStringList("         Error Loading Application Options"));
        QCOMPARE(globals().MAIN_LEFT, 1);
        QCOMPARE(globals().COMPUTER_NAME, "HOST");
        QCOMPARE(favorites_[2], "fav2");
        QCOMPARE(favorites_[3], "");
        QVERIFY(globals().SHOW_TIPS && globals().ASK_COMPUTER_NAME);
    }

    void aShortFlagLine_leavesEveryFlag()
    {
        box_->write(kOptions, options(kNumbers, "", "", " 1  0  0 "));
        LoadOptions(favorites_);
        QCOMPARE(prompt_->told, QStringList("         Error Loading Application Options"));
        QVERIFY(!globals().BOLD_TEXT && globals().SHOW_TIPS);
    }

    void damagedOptions_areTold_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("zeros") << QByteArray(200, '\0');
        QTest::newRow("a number beyond all bounds") << QByteArray(" 0  99999999999 \r\n");
        QTest::newRow("other bytes") << QByteArray("\xFF\xFE\x80\x81,\r\n\x00\x01", 9);
        QTest::newRow("a line without end") << QByteArray(3 << 20, 'x');
    }
    void damagedOptions_areTold()
    {
        QFETCH(QByteArray, content);
        box_->write(kOptions, content.toStdString());
        LoadOptions(favorites_);
        QCOMPARE(prompt_->told, QStringList("         Error Loading Application Options"));
    }

    void everyFailingWrite_isTold_andTheOldFileStays()
    {
        FaultyDisk disk;
        disk.makeFolder("C:\\app");
        box_->useFiles(&disk);
        SaveOptions(favorites_);
        const auto before = disk.content(kOptions);
        QVERIFY(!before.empty());
        globals().MAIN_LEFT = 4711;
        long n = 1;
        for (;; ++n) {
            disk.failAt(n, RunErrorNumber::DiskFull, FaultyDisk::Lasts::Once);
            prompt_->told.clear();
            SaveOptions(favorites_);
            if (!disk.hasFailed())
                break;
            QCOMPARE(prompt_->told.size(), 1);
            QVERIFY(prompt_->told[0].startsWith("Error: 61 - "));
            QCOMPARE(disk.content(kOptions), before);
            QCOMPARE(disk.list("C:\\app").size(), 1u);
            disk.clearFaults();
        }
        QVERIFY(n > 1);
        QVERIFY(disk.content(kOptions) != before);
        box_->useFiles(nullptr);
    }

    void aFolderThatIsGone_isTold()
    {
        globals().APP_PATH = "C:\\gone";
        SaveOptions(favorites_);
        QCOMPARE(prompt_->told.size(), 1);
        QVERIFY(prompt_->told[0].startsWith("Error: 76 - "));
    }

    void colours_goAndCome()
    {
        auto& G = globals();
        SaveColors();
        QCOMPARE(box_->read(kColors),
                 " 16744576 -2147483640 -2147483636  65280  14737632  16512  14737632  4210752 "
                 "-2147483642  16711680  16777215  12640511  8388608  16761024  16448  12640511  "
                 "8388608  12632256  8388608  16777215  255 \r\n");
        G.MAIN_TEXT_COLOR = 1;
        G.DESIGN_TEXT_COLOR = 2;
        G.TAB_TEXT_COLOR = 3;
        LoadColors();
        QCOMPARE(static_cast<quint32>(G.MAIN_TEXT_COLOR), 0x80000008u);
        QCOMPARE(G.DESIGN_TEXT_COLOR, 255);
        QCOMPARE(G.TAB_TEXT_COLOR, 3);  // not in the file
        QCOMPARE(prompt_->told, QStringList());
    }

    void missingColours_areTold()
    {
        LoadColors();
        QCOMPARE(prompt_->told,
                 QStringList("          Use the Utility Menu Option - Set Window Colors"));
        QCOMPARE(globals().MAIN_BACK_COLOR, 0xFF8080);
    }

    void shortColours_areTold_andThoseReadStay()
    {
        box_->write(kColors, " 255  65280 \r\n");
        LoadColors();
        QCOMPARE(prompt_->told, QStringList("Error Loading Application Window Colors"));
        QCOMPARE(globals().MAIN_BACK_COLOR, 255);
        QCOMPARE(globals().MAIN_TEXT_COLOR, 65280);
        QCOMPARE(static_cast<quint32>(globals().LIST_BACK_COLOR), 0x8000000Cu);
    }

    void coloursThatCannotBeWritten_areToldInTheWordsOfReading()
    {
        globals().APP_PATH = "C:\\gone";
        SaveColors();
        QCOMPARE(prompt_->told, QStringList("Error Loading Application Window Colors"));
    }

    void folderLines_keepTheirPlace_theListHasNoBlankOnes()
    {
        box_->write(kFolders, "C:\\a\\ - 5\r\n\r\nC:\\b\\ - 2\r\n");
        QStringList List1{"old"};
        globals().FOLDER_LIST[201] = "old";
        QVERIFY(LoadFolderList(List1));
        QCOMPARE(List1, (QStringList{"C:\\a\\ - 5", "C:\\b\\ - 2"}));
        const auto& F = globals().FOLDER_LIST;
        QCOMPARE(F[0], "");
        QCOMPARE(F[1], "C:\\a\\ - 5");
        QCOMPARE(F[2], "");
        QCOMPARE(F[3], "C:\\b\\ - 2");
        QCOMPARE(F[201], "");
    }

    void anEmptyFolderFile_givesAnEmptyList()
    {
        box_->write(kFolders, "");
        QStringList List1{"old"};
        QVERIFY(LoadFolderList(List1));
        QVERIFY(List1.isEmpty());
    }

    void aMissingFolderFile_isSilent()
    {
        QStringList List1{"old"};
        QVERIFY(!LoadFolderList(List1));
        QVERIFY(List1.isEmpty());
        QCOMPARE(prompt_->told, QStringList());
    }

    void the202ndFolder_endsTheReading()
    {
        std::string file;
        for (int i = 1; i <= 300; ++i)
            file += "C:\\f" + std::to_string(i) + "\\ - 1\r\n";
        box_->write(kFolders, file);
        QStringList List1;
        QVERIFY(!LoadFolderList(List1));
        QCOMPARE(List1.size(), 201);
        QCOMPARE(globals().FOLDER_LIST[201], "C:\\f201\\ - 1");
        QCOMPARE(prompt_->told, QStringList());
    }

    void folders_goAndCome_twiceWhereTheyStandTwice()
    {
        const QStringList lines{"C:\\a\\ - 5", "C:\\b\\ - 7", "C:\\a\\ - 5"};
        SaveFolderList(lines);
        QCOMPARE(box_->read(kFolders), "C:\\a\\ - 5\r\nC:\\b\\ - 7\r\nC:\\a\\ - 5\r\n");
        QCOMPARE(globals().FOLDER_LIST[3], "C:\\a\\ - 5");
        QStringList read;
        QVERIFY(LoadFolderList(read));
        QCOMPARE(read, lines);
        SaveFolderList({});
        QCOMPARE(box_->read(kFolders), "");
        QCOMPARE(globals().FOLDER_LIST[1], "");
    }

    void tooManyFolders_areAnArrayError_thoseBeforeAreWritten()
    {
        QStringList lines;
        for (int i = 1; i <= 202; ++i)
            lines << QString("C:\\f%1\\ - 1").arg(i);
        QCOMPARE(errorOf([&] { SaveFolderList(lines); }), 9);
        QStringList read;
        QVERIFY(LoadFolderList(read));
        QCOMPARE(read, lines.mid(0, 201));
    }

    void aWorkingFolderLine_leadsSomewhere_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<int>("filter");
        QTest::newRow("usual") << "C:\\data\\ - 5"
                               << "C:\\data" << 5;
        QTest::newRow("root of a drive") << "C:\\ - 2"
                                         << "C:" << 2;
        QTest::newRow("no closing backslash: its parent") << "C:\\data\\old - 3"
                                                          << "C:\\data" << 3;
        QTest::newRow("no filter") << "C:\\data\\"
                                   << "C:" << 0;
        QTest::newRow("no folder") << "plain - 4"
                                   << "" << 4;
        QTest::newRow("one letter") << "x"
                                    << "" << 0;
        QTest::newRow("filter that is no number") << "C:\\data\\ - x"
                                                  << "C:\\data" << 0;
        // The folder ends at the last mark, the filter stands behind the first.
        QTest::newRow("a folder with a mark") << "C:\\a - b\\ - 6"
                                              << "C:\\a - b" << 0;
        QTest::newRow("empty") << ""
                               << "" << 0;
    }
    void aWorkingFolderLine_leadsSomewhere()
    {
        QFETCH(QString, line);
        QFETCH(QString, folder);
        QFETCH(int, filter);
        QCOMPARE(workingFolder(line).folder, folder);
        QCOMPARE(workingFolder(line).filter, filter);
    }

    void deliveredFiles_areTheDefaults_inTheColoursOfTheDesktop()
    {
        prepareApplicationFolder(box_->paths(), QString::fromStdString(box_->root() + "/home"));
        SaveOptions(favorites_);
        QCOMPARE(box_->read("C:\\home\\Options.INI"), box_->read(kOptions));
        globals().APP_PATH = "C:\\home";
        LoadColors();
        LoadOptions(favorites_);
        QCOMPARE(prompt_->told, QStringList());
        const auto& G = globals();
        for (const ColorValue back :
             {G.MAIN_BACK_COLOR, G.LIST_BACK_COLOR, G.SELECT_BACK_COLOR, G.BROWSER_BACK_COLOR,
              G.ENTRY_WINDOW_BACK_COLOR, G.DESIGN_BACK_COLOR, G.TIPS_BACK_COLOR})
            QCOMPARE(static_cast<quint32>(back), 0x80000005u);
        for (const ColorValue text :
             {G.MAIN_TEXT_COLOR, G.LIST_TEXT_COLOR, G.SELECT_TEXT_COLOR, G.BROWSER_TEXT_COLOR,
              G.ENTRY_WINDOW_TEXT_COLOR, G.DESIGN_TEXT_COLOR, G.TIPS_TEXT_COLOR})
            QCOMPARE(static_cast<quint32>(text), 0x80000008u);
        QCOMPARE(static_cast<quint32>(G.TOOLBAR_BACK_COLOR), 0x80000004u);
        QCOMPARE(static_cast<quint32>(G.TOOLBAR_TEXT_COLOR), 0x80000007u);
        QCOMPARE(static_cast<quint32>(G.ENTRY_BACK_COLOR), 0x80000009u);
        QCOMPARE(static_cast<quint32>(G.ENTRY_TEXT_COLOR), 0x80000002u);
    }

private:
    std::optional<Sandbox> box_;
    std::optional<ScriptedPrompt> prompt_;
    MailFavorites favorites_;
};

QTEST_MAIN(SettingsTest)
#include "tst_settings.moc"
