// The password dialog.
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "access/login.h"
#include "access/workspace.h"
#include "core/globals.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;
using namespace velnor::testing;

class TstLogin : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        prompt_ = std::make_unique<ScriptedPrompt>();
        resetGlobals();
        globals().WORK_FILE = "C:\\locked.mdb";
    }
    void cleanup()
    {
        prompt_.reset();
        sandbox_.reset();
    }

    void load_clearsTheFlag_notThePassword()
    {
        globals().LOGIN_OK_FLG = true;
        globals().DATABASE_PASSWORD = "old";
        const Login login(workspace());
        QCOMPARE(login.windowTitle(), "Login to Database File");
        QVERIFY(login.txtPassword->text().isEmpty());
        QVERIFY(!globals().LOGIN_OK_FLG);
        QCOMPARE(globals().DATABASE_PASSWORD, "old");
    }

    void password_isMasked()
    {
        const Login login(workspace());
        QCOMPARE(login.txtPassword->echoMode(), QLineEdit::Password);
    }

    void tips_areTheControls()
    {
        const Login login(workspace());
        QCOMPARE(login.txtUserName->toolTip(), "User Name to use for Database clearence");
        QCOMPARE(login.txtPassword->toolTip(), "Enter Password to Access the Database");
        QCOMPARE(login.OKBtn->toolTip(), "Proceed to Open File using User ID and Password");
        QCOMPARE(login.CancelBtn->toolTip(), "Exit Database File Login");
    }

    void emptyPassword_neverReachesTheEngine()
    {
        globals().DATABASE_PASSWORD = "old";
        Login login(workspace());
        login.show();
        QTest::mouseClick(login.OKBtn, Qt::LeftButton);
        QCOMPARE(prompt_->told, QStringList{"Invalid Password, try again!"});
        QCOMPARE(prompt_->toldTitles, QStringList{"Login to Database"});
        QVERIFY(login.isVisible());
        QVERIFY(!globals().LOGIN_OK_FLG);
        QCOMPARE(globals().DATABASE_PASSWORD, "old");
    }

    void wrongPassword_leavesTheFlagSet_andTheTextInTheSlot()  // no undoing: required
    {
        makeProtected();
        Login login(workspace());
        login.show();
        QTest::keyClicks(login.txtPassword, "wrong");
        QTest::keyClick(login.txtUserName, Qt::Key_Return);
        QCOMPARE(prompt_->told, QStringList{"Invalid Password, try again!"});
        QVERIFY(login.isVisible());
        QVERIFY(globals().LOGIN_OK_FLG);
        QCOMPARE(globals().DATABASE_PASSWORD, "wrong");
        QCOMPARE(login.txtPassword->selectedText(), "wrong");
    }

    void cancelAfterAWrongPassword_clearsTheFlagOnly()
    {
        makeProtected();
        Login login(workspace());
        login.show();
        QTest::keyClicks(login.txtPassword, "wrong");
        login.OKBtn->click();
        login.CancelBtn->click();
        QVERIFY(!login.isVisible());
        QVERIFY(!globals().LOGIN_OK_FLG);
        QCOMPARE(globals().DATABASE_PASSWORD, "wrong");
    }

    void rightPassword_closesTheDialog()
    {
        makeProtected();
        Login login(workspace());
        login.show();
        QTest::keyClicks(login.txtPassword, "Geheim97");
        QTest::keyClick(login.txtPassword, Qt::Key_Enter);
        QVERIFY(prompt_->told.isEmpty());
        QVERIFY(!login.isVisible());
        QCOMPARE(login.result(), int(QDialog::Accepted));
        QVERIFY(globals().LOGIN_OK_FLG);
        QCOMPARE(globals().DATABASE_PASSWORD, "Geheim97");
    }

    void damagedFile_refusesEveryText()
    {
        sandbox_->write("C:\\locked.mdb", "not a database");
        Login login(workspace());
        login.show();
        QTest::keyClicks(login.txtPassword, "anything");
        login.OKBtn->click();
        QCOMPARE(prompt_->told, QStringList{"Invalid Password, try again!"});
        QVERIFY(login.isVisible());
    }

    void enterOnCancel_isStillOk()
    {
        Login login(workspace());
        login.show();
        login.CancelBtn->setFocus();
        QTest::keyClick(login.CancelBtn, Qt::Key_Return);
        QCOMPARE(prompt_->told.size(), 1);
        QVERIFY(login.isVisible());
    }

    void escape_cancels()
    {
        Login login(workspace());
        login.show();
        globals().LOGIN_OK_FLG = true;
        QTest::keyClick(&login, Qt::Key_Escape);
        QVERIFY(!login.isVisible());
        QVERIFY(!globals().LOGIN_OK_FLG);
    }

    void boldText_reachesTheTextBoxes()
    {
        globals().BOLD_TEXT = true;
        const Login login(workspace());
        QVERIFY(login.txtUserName->font().bold());
        QVERIFY(login.txtPassword->font().bold());
    }

private:
    static void makeProtected() { makeAccessFile("C:\\locked.mdb", "Geheim97"); }

    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<ScriptedPrompt> prompt_;
};

QTEST_MAIN(TstLogin)
#include "tst_login.moc"
