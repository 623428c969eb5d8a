// The tip of the day.
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "assist/quik_tip1.h"
#include "core/globals.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;
using namespace velnor::testing;

class TstQuickTips : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        prompt_ = std::make_unique<ScriptedPrompt>();
        resetGlobals();
        globals().APP_PATH = "C:\\app";
        sandbox_->write("C:\\app\\TIPHELP.TXT", "one\r\ntwo\r\n\r\nthree\r\n");
    }
    void cleanup()
    {
        prompt_.reset();
        sandbox_.reset();
    }

    void words_areThoseOfTheDialog()
    {
        QuikTip1 tips;
        QCOMPARE(tips.windowTitle(), "Quick Tip of the Day");
        QCOMPARE(tips.Label1->text(), "Did you know...");
        QCOMPARE(QString(tips.chkLoadTipsAtStartup->text()).remove('&'),
                 "Do not Show Tips at Startup");
        QCOMPARE(tips.chkLoadTipsAtStartup->toolTip(),
                 "Check if you do not want to display these quick tips at Start Up");
        QCOMPARE(tips.OKBtn->toolTip(), "Close Quick Tip Window");
        QCOMPARE(tips.NextTipBtn->toolTip(), "View Next Quick Tip");
    }

    void theFlag_livesAsLongAsTheWindow()
    {
        {
            QuikTip1 tips;
            QVERIFY(globals().QUIKTIP_OPEN);
        }
        QVERIFY(!globals().QUIKTIP_OPEN);
    }

    void nextTip_goesRound_overTheLinesThatHaveText()
    {
        QuikTip1 tips;
        const QString first = tips.lblTipText->text();
        QStringList seen{first};
        for (int i = 0; i < 2; ++i) {
            tips.NextTipBtn->click();
            seen << tips.lblTipText->text();
        }
        seen.sort();
        QCOMPARE(seen, (QStringList{"one", "three", "two"}));
        tips.NextTipBtn->click();
        QCOMPARE(tips.lblTipText->text(), first);
    }

    void anotherDay_beginsWithAnotherTip()
    {
        const QString today = QuikTip1().lblTipText->text();
        sandbox_->clock().time.day += 1;
        QVERIFY(QuikTip1().lblTipText->text() != today);
    }

    void okTakesTheCheckBox_otherWaysOutDont()
    {
        {
            QuikTip1 tips;
            QVERIFY(!tips.chkLoadTipsAtStartup->isChecked());
            tips.chkLoadTipsAtStartup->click();
            tips.reject();
            QVERIFY(globals().SHOW_TIPS);
        }
        {
            QuikTip1 tips;
            tips.chkLoadTipsAtStartup->click();
            tips.OKBtn->click();
            QVERIFY(!globals().SHOW_TIPS);
        }
        QuikTip1 tips;
        QVERIFY(tips.chkLoadTipsAtStartup->isChecked());
        tips.chkLoadTipsAtStartup->click();
        tips.OKBtn->click();
        QVERIFY(globals().SHOW_TIPS);
    }

    void aMissingFile_isTold_andTheDialogSaysHowToMakeIt()
    {
        sandbox_->files().remove("C:\\app\\TIPHELP.TXT");
        QuikTip1 tips;
        QCOMPARE(prompt_->told, QStringList{"       Error Loading Quick Tips File"});
        QVERIFY(tips.lblTipText->text().endsWith(
            "using NotePad with 1 tip per line. Then place it in the same directory as the "
            "application. "));
        tips.NextTipBtn->click();  // there is none
        QVERIFY(tips.lblTipText->text().contains("NotePad"));
    }

    void anEmptyName_isToldInItsOwnWords()
    {
        QuikTip1 tips;
        QVERIFY(!tips.LoadTips(""));
        QCOMPARE(prompt_->told, QStringList{"         Error Loading Quick Tips File"});
    }

private:
    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<ScriptedPrompt> prompt_;
};

QTEST_MAIN(TstQuickTips)
#include "tst_quick_tips.moc"
