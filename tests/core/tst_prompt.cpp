#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "core/file_types.h"
#include "core/prompt.h"
#include "tests/support/sandbox.h"

using namespace velnor;

namespace {

/// Runs `work` on the modal window of a class as soon as it is up.
template <class Window, class Work> void whenUp(Work work)
{
    QTimer::singleShot(0, qApp, [work] {
        if (auto* window = qobject_cast<Window*>(QApplication::activeModalWidget()))
            work(*window);
        else
            whenUp<Window>(work);
    });
}

}  // namespace

class PromptTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }

    void aMessageLosesTheBlanksThatCentreIt()
    {
        QString text, title;
        whenUp<QMessageBox>([&](QMessageBox& box) {
            text = box.text();
            title = box.windowTitle();
            box.button(QMessageBox::Ok)->click();
        });
        prompt().tell(nullptr, "          File not Found");
        QCOMPARE(text, "File not Found");
        QCOMPARE(title, kProgramTitle);
    }

    void aMessageIsNeverReadAsRichText()
    {
        Qt::TextFormat format = Qt::AutoText;
        whenUp<QMessageBox>([&](QMessageBox& box) {
            format = box.textFormat();
            box.accept();
        });
        prompt().tell(nullptr, "<b>a.dbf</b>");
        QCOMPARE(format, Qt::PlainText);
    }

    void anythingButYesMeansNo()
    {
        whenUp<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });
        QVERIFY(prompt().ask(nullptr, "Append?"));
        whenUp<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::No)->click(); });
        QVERIFY(!prompt().ask(nullptr, "Append?"));
        whenUp<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        QVERIFY(!prompt().ask(nullptr, "Append?"));
        whenUp<QMessageBox>([](QMessageBox& box) { box.close(); });
        QVERIFY(!prompt().ask(nullptr, "Append?"));
    }

    void aChosenFileComesAsAPathOfTheProgram()
    {
        testing::Sandbox box;
        box.write("C:\\My Data\\a.dbf", "x");
        FileQuestion question;
        question.title = "  Select File to Open";
        question.filter = kOpenFilter;
        question.folder = "c:\\MY DATA";
        QString native, title;
        whenUp<QFileDialog>([&](QFileDialog& dialog) {
            title = dialog.windowTitle();
            native = dialog.directory().absolutePath();
            dialog.selectNameFilter(dialogFilters(kOpenFilter)[2]);
            dialog.selectFile("a.dbf");
            static_cast<QDialog&>(dialog).accept();
        });
        const auto chosen = prompt().file(nullptr, question);
        QCOMPARE(title, "Select File to Open");
        QCOMPARE(native.toStdString(), box.native("C:\\My Data"));
        QVERIFY(chosen.has_value());
        QCOMPARE(*chosen, QStringList{"C:\\My Data\\a.dbf"});
        QCOMPARE(question.folder, "C:\\My Data");
        QCOMPARE(question.filterIndex, 3);
    }

    void aCancelledDialogGivesNothing_andChangesNothing()
    {
        testing::Sandbox box;
        FileQuestion question;
        question.filter = kOpenFilter;
        question.filterIndex = 2;
        question.folder = "C:\\";
        QString selected;
        whenUp<QFileDialog>([&](QFileDialog& dialog) {
            selected = dialog.selectedNameFilter();
            dialog.reject();
        });
        QVERIFY(!prompt().file(nullptr, question));
        QCOMPARE(selected, "Paradox");
        QCOMPARE(question.filterIndex, 2);
        QCOMPARE(question.folder, "C:\\");
    }

    void aNewNameThatDiffersInCaseOnlyAsksBeforeItReplaces()
    {
        testing::Sandbox box;
        box.write("C:\\Data\\CUSTOMER.DBF", "x");
        FileQuestion question;
        question.save = true;
        question.folder = "C:\\Data";
        question.defaultExtension = "dbf";
        QStringList asked;
        const auto choose = [](QFileDialog& open) {
            open.selectFile("customer");
            static_cast<QDialog&>(open).accept();
        };
        whenUp<QFileDialog>([&](QFileDialog& dialog) {
            whenUp<QMessageBox>([&](QMessageBox& no) {
                asked << no.text();
                whenUp<QFileDialog>([&](QFileDialog& again) {
                    whenUp<QMessageBox>([&](QMessageBox& yes) {
                        asked << yes.text();
                        yes.button(QMessageBox::Yes)->click();
                    });
                    choose(again);
                });
                no.button(QMessageBox::No)->click();
            });
            choose(dialog);
        });
        const auto chosen = prompt().file(nullptr, question);
        QVERIFY(chosen.has_value());
        QCOMPARE(*chosen, QStringList{"C:\\Data\\customer.dbf"});
        const QString text = "C:\\Data\\customer.dbf already exists. Do you want to replace it?";
        QCOMPARE(asked, (QStringList{text, text}));
    }

    void theWaitPointerRestsWhilePeopleAreAsked()
    {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        Qt::CursorShape shape = Qt::WaitCursor;
        whenUp<QMessageBox>([&](QMessageBox& box) {
            shape = QGuiApplication::overrideCursor()->shape();
            box.accept();
        });
        prompt().tell(nullptr, "Ready");
        QCOMPARE(shape, Qt::ArrowCursor);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        QGuiApplication::restoreOverrideCursor();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void aFolderOnAMissingDriveDoesNotStopTheDialog()
    {
        testing::Sandbox box;
        FileQuestion question;
        question.folder = "Q:\\gone";
        bool shown = false;
        whenUp<QFileDialog>([&](QFileDialog& dialog) {
            shown = true;
            dialog.reject();
        });
        QVERIFY(!prompt().file(nullptr, question));
        QVERIFY(shown);
    }
};

QTEST_MAIN(PromptTest)
#include "tst_prompt.moc"
