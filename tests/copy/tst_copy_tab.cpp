// The copy tab at rest, opening and closing its two sides, and files dropped on them.
#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMimeData>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include "tests/copy/copy_tab_case.h"

using namespace velnor;
using namespace velnor::testing;

class TstCopyTab : public QObject, CopyTabCase {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

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

private:
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
};

QTEST_MAIN(TstCopyTab)
#include "tst_copy_tab.moc"
