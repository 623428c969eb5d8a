// Copying by the button: questions, backup, result, log, and protected files.
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include "core/window_list.h"
#include "tests/copy/copy_tab_case.h"

using namespace velnor;
using namespace velnor::testing;

class TstCopyRoad : public QObject, CopyTabCase {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

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

    void emptySource_isUnsuccessful()
    {
        openBoth();
        tab_->SelectAllBtn->click();
        answerAppendToFriends();
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Unsuccessful");
        QVERIFY(prompt_->told.isEmpty());
        QVERIFY(readRows("C:", kDBase, "FRIENDS").isEmpty());
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

    void aFullSheet_goesOnInAFurtherOne_andTheStatusNamesIt()
    {
        givePeople();
        makeAlmostFullSheet("C:\\list.wk4");
        openFrom("C:\\PEOPLE.DBF");
        openTo("C:\\list.wk4");
        tab_->SelectAllBtn->click();
        const QSignalSpy status(tab_.get(), &CopyTab::statusText);
        prompt_->expectQuestion("Do you want to Append - PEOPLE.DBF Records to " +
                                    tab_->CMBRECORD[1]->currentText(),
                                true);
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Successful");
        QCOMPARE(status.last()[0].toString(),
                 "Copy successful: 2 records appended. The sheet was full; records went on in "
                 "List_2.");
        QCOMPARE(readRows("C:\\list.wk4", kLotus, "List_2:"), QList<QStringList>{{"Bob"}});
    }

    void aTableOfFoxPro_isCopied()  // dBASE refuses it
    {
        makeTable("C:", kFoxPro, "FOX", {{"NAME", FieldType::Text, 20}});
        appendRows("C:", kFoxPro, "FOX", {{"vixen"}});
        openFrom("C:\\FOX.DBF");
        openTo("C:\\FRIENDS.DBF");
        QCOMPARE(tab_->List3[0]->lines(), QStringList{"NAME - Text - 20"});
        matchByHand(0, 1);
        prompt_->expectQuestion("Do you want to Append - FOX.DBF Records to FRIENDS.DBF", true);
        prompt_->expectQuestion("Do you want to Copy NAME to NAME", true);
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Successful");
        QCOMPARE(readRows("C:", kDBase, "FRIENDS"), (QList<QStringList>{{"", "vixen"}}));
    }

    void protectedTarget_isOpenedWithItsPassword()
    {
        makeLocked("C:\\locked.mdb", "Geheim97");
        prompt_->expectDialog("Login", [](QDialog& dialog) {
            dialog.findChild<QLineEdit*>("txtPassword")->setText("Geheim97");
            dialog.findChild<QPushButton*>("OKBtn")->click();
            return dialog.result();
        });
        openTo("C:\\locked.mdb");
        QCOMPARE(tab_->To.Connect, ";pwd=Geheim97");
        QCOMPARE(tab_->To.Password, "Geheim97");
        QCOMPARE(tab_->CMBRECORD[1]->count(), 1);
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
        makeLocked("C:\\locked.mdb", "Geheim97");
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

    /// One slot holds the password of every file: the first one's doesn't fit the second, so that
    /// one is asked for as well, and each side keeps its own.
    void twoFilesWithDifferentPasswords_areBothAskedFor()
    {
        makeLocked("C:\\first.mdb", "Geheim97");
        makeLocked("C:\\second.mdb", "password");
        const auto give = [this](const QString& password) {
            prompt_->expectDialog("Login", [password](QDialog& dialog) {
                dialog.findChild<QLineEdit*>("txtPassword")->setText(password);
                dialog.findChild<QPushButton*>("OKBtn")->click();
                return dialog.result();
            });
        };
        give("Geheim97");
        openFrom("C:\\first.mdb");
        give("password");
        openTo("C:\\second.mdb");
        QCOMPARE(prompt_->dialogsRun, (QStringList{"Login", "Login"}));
        QCOMPARE(tab_->From.Password, "Geheim97");
        QCOMPARE(tab_->To.Password, "password");
        QVERIFY(tab_->List3[0]->count() > 0);
        QVERIFY(tab_->List3[1]->count() > 0);
        QVERIFY(prompt_->told.isEmpty());
    }

private:
    static constexpr const char* kLotus = "Lotus WK4;";

    /// A sheet List with room for one record more.
    static void makeAlmostFullSheet(const QString& file)
    {
        Workspace workspace(*host().files);
        workspace.CreateDatabase(file.toStdString(), std::string(kGeneralLocale) + kLotus).Close();
        makeTable(file, kLotus, "List", {{"NAME", FieldType::Text, 20}});
        QList<QVariantList> rows;
        for (int row = 2; row < 8192; ++row)  // under the line of names
            rows << QVariantList{"x"};
        appendRows(file, kLotus, "List:", rows);
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
};

QTEST_MAIN(TstCopyRoad)
#include "tst_copy_road.moc"
