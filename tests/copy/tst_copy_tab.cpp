// The copy tab through its controls, on real files.
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDragEnterEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include "copy/copy_tab.h"
#include "copy/line_list.h"
#include "copy/query_members.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/upcalls.h"
#include "core/window_list.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;
using namespace velnor::testing;

class TstCopyTab : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        prompt_ = std::make_unique<ScriptedPrompt>();
        resetGlobals();
        resetUpcalls();
        FillExtensionTable();
        globals().PROMPT_SAVE_COPYTO = false;
        queryMembers() = {};
        makeTable("C:", kDBase, "PEOPLE",
                  {{"NAME", FieldType::Text, 20},
                   {"CITY", FieldType::Text, 30},
                   {"AGE", FieldType::Double}});
        makeTable("C:", kDBase, "FRIENDS",
                  {{"CITY", FieldType::Text, 30}, {"NAME", FieldType::Text, 20}});
        tab_ = std::make_unique<CopyTab>();
        tab_->resize(1000, 700);
        tab_->show();
    }
    void cleanup()
    {
        tab_.reset();
        prompt_.reset();
        sandbox_.reset();
    }

    // At rest.

    void controls_bearTheirNamesAndTips_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("tip");
        QTest::newRow("from") << "OpenFromBtn"
                              << "Open From Database File to Copy";
        QTest::newRow("close from") << "CloseFromBtn"
                                    << "Close From Database File to Copy";
        QTest::newRow("to") << "OpenToBtn"
                            << "Open To Database File to Copy";
        QTest::newRow("close to") << "CloseToBtn"
                                  << "Close To Database File to Copy";
        QTest::newRow("from record") << "CMBRECORD_0"
                                     << "Select From Record to Copy";
        QTest::newRow("to record") << "CMBRECORD_1"
                                   << "Select Record to receive New Records";
        QTest::newRow("select")
            << "SelectBtn"
            << "Select Highlighted Fields in both Database Tables to Match Fields";
        QTest::newRow("all") << "SelectAllBtn"
                             << "Match all Fields in both Database Files";
        QTest::newRow("cancel") << "CancelBtn"
                                << "Cancel or Delete Highlighted Matched Fields";
        QTest::newRow("copy") << "CopyBtn"
                              << "Copy the Selected Database File";
        QTest::newRow("log") << "ClearCopyLogBtn"
                             << "Remove all Records in the Copy Log";
    }
    void controls_bearTheirNamesAndTips()
    {
        QFETCH(QString, name);
        QFETCH(QString, tip);
        auto* control = tab_->findChild<QWidget*>(name);
        QVERIFY(control);
        QCOMPARE(control->toolTip(), tip);
        QVERIFY(!control->accessibleName().isEmpty());
    }

    void atRest_nothingIsOpen()
    {
        QCOMPARE(tab_->Label3[0]->text(), "Copy From File");
        QCOMPARE(tab_->Label3[1]->text(), "Copy To File");
        for (QLabel* label : tab_->Label3)
            QVERIFY(label->isHidden());
        QVERIFY(!tab_->CancelBtn->isEnabled());
        QVERIFY(!tab_->CopyBtn->isEnabled());
        QVERIFY(!tab_->ClearCopyLogBtn->isEnabled());
        QVERIFY(!tab_->CloseFromBtn->isEnabled());
        QVERIFY(!tab_->CloseToBtn->isEnabled());
        QCOMPARE(tab_->CHKCPYQRY->text(), "Select Records from From Table using Active Query     ");
        for (LineList* list : tab_->List3)
            QVERIFY(!list->emptyText().isEmpty());
    }

    void mnemonics_areDifferent()
    {
        QSet<QString> seen;
        for (const QAbstractButton* button : tab_->findChildren<QAbstractButton*>())
            checkMnemonic(button->text(), seen);
        for (const QLabel* label : tab_->findChildren<QLabel*>())
            if (label->buddy())
                checkMnemonic(label->text(), seen);
        QVERIFY(seen.size() >= 12);
    }

    void commands_areThoseOfTheToolbar()
    {
        const QList<CopyCommand> commands = tab_->commands();
        QCOMPARE(commands.size(), 4);
        QCOMPARE(commands[0].id, "ID_mnuSelectCopyFrFile");
        QCOMPARE(commands[1].id, "ID_mnuSelectCopyToFile");
        QCOMPARE(commands[2].text, "Auto Match Fields");
        QCOMPARE(commands[3].tip, "Help with Copying Records between From and To File");
        prompt_->expectFile({"C:\\PEOPLE.DBF"});
        commands[0].procedure();
        QCOMPARE(tab_->Label3[0]->text(), "C:\\PEOPLE.DBF");
    }

    // Opening and closing.

    void openFrom_listsTheFields()
    {
        openFrom("C:\\PEOPLE.DBF");
        QCOMPARE(tab_->Label3[0]->text(), "C:\\PEOPLE.DBF");
        QVERIFY(!tab_->Label3[0]->isHidden());
        QCOMPARE(tab_->CMBRECORD[0]->currentText(), "PEOPLE.DBF");
        QCOMPARE(tab_->CMBRECORD[0]->count(), 0);
        QCOMPARE(tab_->List3[0]->lines(),
                 (QStringList{"NAME - Text - 20", "CITY - Text - 30", "AGE - Double - 8"}));
        QCOMPARE(tab_->From.Record, "PEOPLE");
        QCOMPARE(tab_->From.Database, "C:");
        QCOMPARE(tab_->From.FileType, "DBF");
        QCOMPARE(tab_->From.Connect, "dBASE 5.0;");
        QCOMPARE(tab_->From.Fields.names[1], "NAME");
        QCOMPARE(tab_->From.Fields.types[0], short(0));
    }

    void dialog_isAskedAsItWasLeft()
    {
        sandbox_->makeFolders("C:\\data");
        makeTable("C:\\data", kDBase, "X", {{"A", FieldType::Text, 5}});
        openFrom("C:\\data\\X.DBF");
        openTo("C:\\FRIENDS.DBF");
        QCOMPARE(prompt_->fileQuestions[0].title, "Select Database File to Open");
        QCOMPARE(prompt_->fileQuestions[0].filter, kOpenFilter);
        QCOMPARE(prompt_->fileQuestions[0].folder, "");
        QCOMPARE(prompt_->fileQuestions[1].folder, "C:\\data");
    }

    void cancelledDialog_goesOnWithTheWorkFile()  // required: nothing is reported
    {
        globals().WORK_FILE = "C:\\PEOPLE.DBF";
        prompt_->expectFile({});
        tab_->OpenFromBtn->click();
        QCOMPARE(tab_->Label3[0]->text(), "C:\\PEOPLE.DBF");
        QCOMPARE(tab_->List3[0]->count(), 3);
    }

    void fileThatDoesntOpen_isSilent()
    {
        sandbox_->write("C:\\BAD.DBF", "no table");
        openFrom("C:\\BAD.DBF");
        QCOMPARE(tab_->Label3[0]->text(), "C:\\BAD.DBF");
        QCOMPARE(tab_->List3[0]->count(), 0);
        QVERIFY(prompt_->told.isEmpty());
        QVERIFY(tab_->List3[0]->emptyText().contains("could not be opened"));
    }

    void clearLogButton_runsWhatWasSet()
    {
        int cleared = 0;
        tab_->setClearCopyLog([&] { ++cleared; });
        tab_->ClearCopyLogBtn->click();
        QCOMPARE(cleared, 1);
    }

    void closing_forgetsTheSideAndTheMatches()
    {
        openBoth();
        tab_->SelectAllBtn->click();
        QVERIFY(tab_->List3[2]->count() > 0);
        tab_->CloseToBtn->click();
        QCOMPARE(tab_->Label3[1]->text(), "'");
        QVERIFY(tab_->Label3[1]->isHidden());
        QCOMPARE(tab_->CMBRECORD[1]->currentText(), "");
        QCOMPARE(tab_->List3[1]->count(), 0);
        QCOMPARE(tab_->List3[2]->count(), 0);
        QCOMPARE(tab_->List3[0]->count(), 3);
        QCOMPARE(tab_->To.Fields.types[1], short(0));
        QCOMPARE(tab_->To.FilePath, "C:\\FRIENDS.DBF");  // the members stay
        QVERIFY(!tab_->CopyBtn->isEnabled());
    }

    void openingAFile_hidesTheResult()
    {
        openBoth();
        tab_->Label3[2]->show();
        openFrom("C:\\PEOPLE.DBF");
        QVERIFY(tab_->Label3[2]->isHidden());
    }

    // Dropping.

    void droppedFile_isOpenedOnItsSide()
    {
        QMimeData file;
        file.setUrls(
            {QUrl::fromLocalFile(QString::fromStdString(sandbox_->native("C:\\PEOPLE.DBF")))});
        QVERIFY(drop("ToPane", file));
        QCOMPARE(tab_->Label3[1]->text(), "C:\\PEOPLE.DBF");
        QCOMPARE(tab_->List3[1]->count(), 3);
        QCOMPARE(tab_->List3[0]->count(), 0);
    }

    void droppedText_isRefused_andTheReasonIsSaid()
    {
        sandbox_->write("C:\\a.txt", "text");
        QMimeData file;
        file.setUrls({QUrl::fromLocalFile(QString::fromStdString(sandbox_->native("C:\\a.txt")))});
        const QSignalSpy status(tab_.get(), &CopyTab::statusText);
        QVERIFY(!drop("FromPane", file));
        QCOMPARE(status[0][0].toString(), "Only DBF, DB, MDB, XLS and WK4 files can be copied.");
        QVERIFY(tab_->Label3[0]->isHidden());
    }

    // Matching.

    void handMatch_withoutHighlights_isRefused()
    {
        openBoth();
        tab_->SelectBtn->click();
        QCOMPARE(prompt_->told,
                 QStringList{"Please Select From and To Database File Fields to Match"});
        QCOMPARE(prompt_->toldTitles, QStringList{kProgramTitle});
        QCOMPARE(tab_->List3[2]->count(), 0);
    }

    void handMatch_joinsTheHighlights_alsoTwice()
    {
        openBoth();
        tab_->List3[0]->highlight(0);
        tab_->List3[1]->highlight(1);
        tab_->SelectBtn->click();
        tab_->SelectBtn->click();
        const QString line = "NAME - Text - 20  =  NAME - Text - 20";
        QCOMPARE(tab_->List3[2]->lines(), (QStringList{line, line}));
        QVERIFY(tab_->CopyBtn->isEnabled());
        QVERIFY(tab_->CancelBtn->isEnabled());
    }

    void handMatch_withOneHighlight_leavesTheOtherHalfEmpty()
    {
        openBoth();
        tab_->List3[1]->highlight(0);
        tab_->SelectBtn->click();
        QCOMPARE(tab_->List3[2]->lines(), QStringList{"  =  CITY - Text - 30"});
    }

    void cancel_removesTheHighlightedMatch()
    {
        openBoth();
        tab_->SelectAllBtn->click();
        QCOMPARE(tab_->List3[2]->count(), 2);
        tab_->CancelBtn->click();  // nothing is highlighted
        QCOMPARE(tab_->List3[2]->count(), 2);
        tab_->List3[2]->highlight(0);
        tab_->CancelBtn->click();
        QCOMPARE(tab_->List3[2]->lines(), QStringList{"CITY - Text - 30  =  CITY - Text - 30"});
        QVERIFY(tab_->CopyBtn->isEnabled());
        tab_->List3[2]->highlight(0);
        QVERIFY(QTest::qWaitForWindowActive(tab_.get()));
        tab_->List3[2]->setFocus();
        QTest::keyClick(tab_->List3[2], Qt::Key_Delete);
        QCOMPARE(tab_->List3[2]->count(), 0);
        QVERIFY(!tab_->CancelBtn->isEnabled());
        QVERIFY(!tab_->CopyBtn->isEnabled());
    }

    void matchAll_pairsByName_andTwiceGivesTheSame()
    {
        openBoth();
        tab_->SelectAllBtn->click();
        const QStringList once = tab_->List3[2]->lines();
        QCOMPARE(once, (QStringList{"NAME - Text - 20  =  NAME - Text - 20",
                                    "CITY - Text - 30  =  CITY - Text - 30"}));
        tab_->SelectAllBtn->click();
        QCOMPARE(tab_->List3[2]->lines(), once);
        QVERIFY(tab_->CopyBtn->isEnabled());
    }

    void matchAll_ofEmptyLists_leavesTheButtons()
    {
        tab_->SelectAllBtn->click();
        QCOMPARE(tab_->List3[2]->count(), 0);
        QVERIFY(!tab_->CopyBtn->isEnabled());
    }

    void matchAll_pastTheRange_isTold_andKeepsWhatItFound()
    {
        openFrom("C:\\PEOPLE.DBF");
        for (int i = 0; i < 202; ++i)
            tab_->To.Fields.add(i == 0 ? "NAME" : QString("T%1").arg(i), 8, 8);
        tab_->SelectAllBtn->click();
        QCOMPARE(prompt_->told.size(), 1);
        QVERIFY(prompt_->told[0].startsWith("Error - 9 - "));
        QCOMPARE(tab_->List3[2]->count(), 1);
        QVERIFY(!tab_->CopyBtn->isEnabled());
    }

    // The record source.

    void recordClick_reloads_andLosesTheMatches()
    {
        makeShop();
        openFrom("C:\\PEOPLE.DBF");
        openTo("C:\\shop.mdb");
        QComboBox& records = *tab_->CMBRECORD[1];
        QCOMPARE(records.count(), 2);
        const int members = records.findText("Members");
        records.setCurrentIndex(members);
        tab_->CMBRECORD_Click(1);
        QCOMPARE(records.currentIndex(), members);
        QCOMPARE(tab_->To.Record, "Members");
        QCOMPARE(tab_->List3[1]->lines(),
                 (QStringList{"NAME - Text - 20", "AGE - Double - 8", "CODE - Long - 4"}));
        tab_->SelectAllBtn->click();
        QVERIFY(tab_->List3[2]->count() > 0);
        records.setCurrentIndex(records.findText("Places"));
        tab_->CMBRECORD_Click(1);
        QCOMPARE(tab_->List3[2]->count(), 0);
        QCOMPARE(tab_->List3[1]->lines(), QStringList{"PLACE - Text - 30"});
        QCOMPARE(tab_->List3[0]->count(), 3);
    }

    void recordChosenByKey_reloads()
    {
        makeShop();
        openTo("C:\\shop.mdb");
        QComboBox& records = *tab_->CMBRECORD[1];
        const QString first = tab_->To.Record;
        QTest::keyClick(&records, Qt::Key_Down);
        QVERIFY(tab_->To.Record != first);
        QCOMPARE(records.currentText(), tab_->To.Record);
    }

    // The active query.

    void queryBox_withoutAQueryWindow_doesNothing()
    {
        tab_->CHKCPYQRY->click();
        QVERIFY(!tab_->COPY_FROM_QUERY);
        QVERIFY(tab_->CHKCPYQRY->isChecked());
    }

    void queryBox_onTheOpenFile_isSet_andEachClickResetsIt()
    {
        openFrom("C:\\PEOPLE.DBF");
        globals().QUERYWINDOW_FLG = true;
        queryMembers().QueryFile = "c:\\people.dbf";
        tab_->CHKCPYQRY->click();
        QVERIFY(tab_->COPY_FROM_QUERY);
        tab_->CHKCPYQRY->click();
        QVERIFY(!tab_->COPY_FROM_QUERY);
    }

    void queryBox_withNoFromFile_opensTheQuerys()
    {
        globals().QUERYWINDOW_FLG = true;
        queryMembers().QueryFile = "C:\\PEOPLE.DBF";
        tab_->CHKCPYQRY->click();
        QVERIFY(tab_->COPY_FROM_QUERY);
        QCOMPARE(tab_->Label3[0]->text(), "C:\\PEOPLE.DBF");
        QCOMPARE(tab_->List3[0]->count(), 3);
    }

    void queryBox_onAnotherFile_staysTicked_andSaysNothing()
    {
        openFrom("C:\\PEOPLE.DBF");
        globals().QUERYWINDOW_FLG = true;
        queryMembers().QueryFile = "C:\\FRIENDS.DBF";
        tab_->CHKCPYQRY->click();
        QVERIFY(tab_->CHKCPYQRY->isChecked());
        QVERIFY(!tab_->COPY_FROM_QUERY);
        QCOMPARE(tab_->Label3[0]->text(), "C:\\PEOPLE.DBF");
        QVERIFY(prompt_->told.isEmpty());
    }

    // Copying.

    void refusedQuestion_endsWithoutAWord()
    {
        openBoth();
        tab_->SelectAllBtn->click();
        prompt_->expectQuestion("Do you want to Append - PEOPLE.DBF Records to FRIENDS.DBF", false);
        tab_->CopyBtn->click();
        QVERIFY(prompt_->told.isEmpty());
        QVERIFY(tab_->Label3[2]->isHidden());
    }

    void copy_appends_andSaysSo()
    {
        givePeople();
        openBoth();
        tab_->SelectAllBtn->click();
        const QSignalSpy status(tab_.get(), &CopyTab::statusText);
        answerAppendToFriends();
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Successful");
        QVERIFY(!tab_->Label3[2]->isHidden());
        QCOMPARE(readRows("C:", kDBase, "FRIENDS"),
                 (QList<QStringList>{{"Rome", "Ann"}, {"Oslo", "Bob"}}));
        QCOMPARE(status.size(), 2);
        QVERIFY(status[0][0].toString().contains("PEOPLE.DBF"));
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void emptySource_isUnsuccessful_andStillLogged()
    {
        int logged = 0;
        upcalls().WriteCopyLog = [&] { ++logged; };
        globals().LOG_COPY = true;
        openBoth();
        tab_->SelectAllBtn->click();
        answerAppendToFriends();
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Unsuccessful");
        QVERIFY(prompt_->told.isEmpty());
        QCOMPARE(logged, 1);
        QVERIFY(readRows("C:", kDBase, "FRIENDS").isEmpty());
    }

    void log_isWrittenOnlyWhenAskedFor()
    {
        int logged = 0;
        upcalls().WriteCopyLog = [&] { ++logged; };
        givePeople();
        openBoth();
        tab_->SelectAllBtn->click();
        answerAppendToFriends();
        tab_->CopyBtn->click();
        QCOMPARE(logged, 0);
    }

    void mismatch_isAskedWithItsLineHighlighted_andRefusalCopiesNothing()
    {
        givePeople();
        makeTable("C:", kDBase, "ODD", {{"ID", FieldType::Double}, {"LAST", FieldType::Text, 20}});
        openFrom("C:\\PEOPLE.DBF");
        openTo("C:\\ODD.DBF");
        matchByHand(1, 1);  // CITY stands below a Text, LAST below a Double
        answerAppend("ODD.DBF");
        prompt_->expectQuestion("Do you want to Copy CITY to LAST", false);
        tab_->CopyBtn->click();
        QCOMPARE(tab_->List3[2]->highlighted(), 0);
        QCOMPARE(prompt_->told, QStringList{"       File not Copied"});
        QVERIFY(tab_->Label3[2]->isHidden());
        QVERIFY(readRows("C:", kDBase, "ODD").isEmpty());
    }

    void acceptedMismatch_copies()
    {
        givePeople();
        makeTable("C:", kDBase, "ODD", {{"ID", FieldType::Double}, {"LAST", FieldType::Text, 20}});
        openFrom("C:\\PEOPLE.DBF");
        openTo("C:\\ODD.DBF");
        matchByHand(1, 1);
        answerAppend("ODD.DBF");
        prompt_->expectQuestion("Do you want to Copy CITY to LAST", true);
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Successful");
        QCOMPARE(readRows("C:", kDBase, "ODD")[1][1], "Oslo");
    }

    void backup_isOfferedBeforeTheCopy_underTheTargetsName()
    {
        QStringList saved;
        upcalls().SaveFileAs = [&](const QString& path) { saved << path; };
        globals().PROMPT_SAVE_COPYTO = true;
        givePeople();
        openBoth();
        globals().FILE_EXT = "XLS";
        tab_->SelectAllBtn->click();
        answerAppendToFriends();
        tab_->CopyBtn->click();
        QCOMPARE(saved, QStringList{"C:\\FRIENDS.DBF\\FRIENDS"});
        QCOMPARE(globals().FILE_EXT, "DBF");
        QCOMPARE(tab_->Label3[2]->text(), "Copy Successful");
    }

    void windowOfTheFromFile_isClosedFirst()
    {
        QWidget main;
        QWidget window;
        main.setWindowTitle("main");
        window.setWindowTitle("C:\\PEOPLE.DBF");
        const WindowEntry mainEntry(&main);
        const WindowEntry entry(&window);
        window.show();
        givePeople();
        openBoth();
        tab_->SelectAllBtn->click();
        answerAppendToFriends();
        tab_->CopyBtn->click();
        QCOMPARE(prompt_->told,
                 QStringList{"Window Displaying Database must be Closed to Send - C:\\PEOPLE.DBF"});
        QVERIFY(!window.isVisible());
        QCOMPARE(tab_->Label3[2]->text(), "Copy Successful");
    }

    void failureOnTheWay_keepsTheRecordsBefore()
    {
        makeTable("C:", kDBase, "NOTES", {{"NOTE", FieldType::Memo}});
        appendRows("C:", kDBase, "NOTES", {{"short"}, {"longer than ten characters"}, {"third"}});
        makeTable("C:", kDBase, "SHORT", {{"NOTE", FieldType::Text, 10}});
        openFrom("C:\\NOTES.DBF");
        openTo("C:\\SHORT.DBF");
        tab_->SelectAllBtn->click();
        prompt_->expectQuestion("Do you want to Append - NOTES.DBF Records to SHORT.DBF", true);
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Unsuccessful");
        QVERIFY(prompt_->told.isEmpty());
        QCOMPARE(readRows("C:", kDBase, "SHORT"), (QList<QStringList>{{"short"}}));
    }

    /// The whole road: a DBF's records into an Access table.
    void dbfRecords_goIntoAnAccessTable()
    {
        givePeople();
        makeShop();
        openFrom("C:\\PEOPLE.DBF");
        openTo("C:\\shop.mdb");
        tab_->CMBRECORD[1]->setCurrentIndex(tab_->CMBRECORD[1]->findText("Members"));
        tab_->CMBRECORD_Click(1);
        tab_->SelectAllBtn->click();
        matchByHand(1, 2);
        QCOMPARE(
            tab_->List3[2]->lines(),
            (QStringList{"NAME - Text - 20  =  NAME - Text - 20",
                         "CITY - Text - 30  =  AGE - Double - 8",  // both stand below a Text 20
                         "AGE - Double - 8  =  AGE - Double - 8",
                         "CITY - Text - 30  =  CODE - Long - 4"}));
        prompt_->expectQuestion("Do you want to Append - PEOPLE.DBF Records to Members", true);
        prompt_->expectQuestion("Do you want to Copy CITY to CODE", true);
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Successful");
        QCOMPARE(readRows("C:\\shop.mdb", kAccess, "Members"),
                 (QList<QStringList>{{"Ann", "30", "0"}, {"Bob", "41.5", "0"}}));
    }

    void protectedTarget_isOpenedWithItsPassword()
    {
        const QString corpus = qEnvironmentVariable("VELNOR_CORPUS");
        if (corpus.isEmpty())
            QSKIP("needs the corpus (VELNOR_CORPUS)");
        sandbox_->copyIn((corpus + "/jet/own-jet3-password.mdb").toStdString(), "C:\\locked.mdb");
        prompt_->expectDialog("Login", [](QDialog& dialog) {
            dialog.findChild<QLineEdit*>("txtPassword")->setText("Geheim97");
            dialog.findChild<QPushButton*>("OKBtn")->click();
            return dialog.result();
        });
        openTo("C:\\locked.mdb");
        QCOMPARE(tab_->To.Connect, ";pwd=Geheim97");
        QCOMPARE(tab_->To.Password, "Geheim97");
        QCOMPARE(tab_->CMBRECORD[1]->count(), 3);
        QVERIFY(tab_->List3[1]->count() > 0);
    }

    void accessTables_areCopiedWithoutAPassword()
    {
        makeShop();
        appendRows("C:\\shop.mdb", kAccess, "Places", {{"Rome"}});
        openFrom("C:\\shop.mdb");
        openTo("C:\\shop.mdb");
        for (int index : {0, 1}) {
            QComboBox& records = *tab_->CMBRECORD[index];
            records.setCurrentIndex(records.findText("Places"));
            tab_->CMBRECORD_Click(index);
        }
        tab_->SelectAllBtn->click();
        prompt_->expectQuestion("Do you want to Append - Places Records to Places", true);
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Successful");
        QCOMPARE(readRows("C:\\shop.mdb", kAccess, "Places"),
                 (QList<QStringList>{{"Rome"}, {"Rome"}}));
        QCOMPARE(tab_->From.Connect, ";pwd=");
        QCOMPARE(tab_->To.Connect, "");
        tab_->CMBRECORD_Click(0);  // the connects of the copy still open both sides
        QCOMPARE(tab_->List3[0]->lines(), QStringList{"PLACE - Text - 30"});
        QVERIFY(tab_->CMBRECORD[0]->count() == 2);
    }

    void passwordOfAnotherFile_doesntKeepAnUnprotectedOneShut()
    {
        makeShop();
        globals().DATABASE_PASSWORD = "of another file";
        openFrom("C:\\shop.mdb");
        QCOMPARE(tab_->From.Connect, ";pwd=of another file");
        QCOMPARE(tab_->CMBRECORD[0]->count(), 2);
        QVERIFY(tab_->List3[0]->count() > 0);
    }

    void cancelledLogin_leavesTheSideEmpty()
    {
        const QString corpus = qEnvironmentVariable("VELNOR_CORPUS");
        if (corpus.isEmpty())
            QSKIP("needs the corpus (VELNOR_CORPUS)");
        sandbox_->copyIn((corpus + "/jet/own-jet3-password.mdb").toStdString(), "C:\\locked.mdb");
        const auto cancel = [](QDialog& dialog) {
            dialog.findChild<QPushButton*>("CancelBtn")->click();
            return dialog.result();
        };
        prompt_->expectDialog("Login", cancel);
        prompt_->expectDialog("Login", cancel);  // loading the fields asks again
        openTo("C:\\locked.mdb");
        QCOMPARE(tab_->CMBRECORD[1]->count(), 0);
        QCOMPARE(tab_->List3[1]->count(), 0);
        QVERIFY(prompt_->told.isEmpty());
    }

private:
    void openFrom(const QString& path)
    {
        prompt_->expectFile({path}, "Select Database File to Open");
        tab_->OpenFromBtn->click();
    }
    void openTo(const QString& path)
    {
        prompt_->expectFile({path}, "Select Database File to Open");
        tab_->OpenToBtn->click();
    }
    void openBoth()
    {
        openFrom("C:\\PEOPLE.DBF");
        openTo("C:\\FRIENDS.DBF");
    }
    /// Drags onto a pane and drops there, when the pane takes it.
    bool drop(const char* paneName, const QMimeData& data)
    {
        auto* pane = tab_->findChild<QWidget*>(paneName);
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QCoreApplication::sendEvent(pane, &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent dropped({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(pane, &dropped);
        return true;
    }
    void givePeople()
    {
        appendRows("C:", kDBase, "PEOPLE", {{"Ann", "Rome", 30.0}, {"Bob", "Oslo", 41.5}});
    }
    void makeShop()
    {
        makeAccessFile("C:\\shop.mdb");
        makeTable(
            "C:\\shop.mdb", kAccess, "Members",
            {{"NAME", FieldType::Text, 20}, {"AGE", FieldType::Double}, {"CODE", FieldType::Long}});
        makeTable("C:\\shop.mdb", kAccess, "Places", {{"PLACE", FieldType::Text, 30}});
    }
    void matchByHand(int from, int to)
    {
        tab_->List3[0]->highlight(from);
        tab_->List3[1]->highlight(to);
        tab_->SelectBtn->click();
    }
    void answerAppend(const QString& target = "FRIENDS.DBF")
    {
        prompt_->expectQuestion("Do you want to Append - PEOPLE.DBF Records to " + target, true);
    }
    /// The fields of the two files stand in another order. The types of the lines above are
    /// compared, so both matches are asked about, although their own types are the same.
    void answerAppendToFriends()
    {
        answerAppend();
        prompt_->expectQuestion("Do you want to Copy NAME to NAME", true);
        prompt_->expectQuestion("Do you want to Copy CITY to CITY", true);
    }
    static void checkMnemonic(const QString& text, QSet<QString>& seen)
    {
        const auto at = text.indexOf('&');
        if (at < 0)
            return;
        const QString letter = text.mid(at + 1, 1).toUpper();
        QVERIFY2(!seen.contains(letter), qPrintable(text));
        QVERIFY2(!QString("FEVOCQUWH").contains(letter), qPrintable(text));  // menus have these
        seen.insert(letter);
    }

    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<ScriptedPrompt> prompt_;
    std::unique_ptr<CopyTab> tab_;
};

QTEST_MAIN(TstCopyTab)
#include "tst_copy_tab.moc"
