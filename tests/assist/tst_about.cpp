// The about box.
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "assist/about1.h"
#include "core/globals.h"
#include "core/upcalls.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;
using namespace velnor::testing;

class TstAbout : public QObject {
    Q_OBJECT
private slots:
    void init() { resetGlobals(); }
    void cleanup() { resetUpcalls(); }

    void aRightClickOnAText_opensTheMakersPage()
    {
        QStringList shown;
        upcalls().DisplayFile = [&](const QString& path) { shown << path; };
        About1 about;
        QCOMPARE(about.windowTitle(), "About Velnor");
        QCOMPARE(about.SysBtn->toolTip(), "Get System Information");
        for (QLabel* text : about.Label1) {
            QTest::mouseClick(text, Qt::LeftButton);
            QVERIFY(shown.isEmpty());
            QTest::mouseClick(text, Qt::RightButton);
            QCOMPARE(shown, QStringList{kMakersPage});
            shown.clear();
        }
    }

    void systemInformation_isStarted_orSaidToBeUnavailable()
    {
        ScriptedPrompt prompt;
        About1 about;
        about.SysBtn->click();
        QCOMPARE(prompt.told, QStringList{"System Information Is Unavailable At This Time"});
        int started = 0;
        about.startSystemInformation = [&] {
            ++started;
            return true;
        };
        about.SysBtn->click();
        QCOMPARE(started, 1);
        QCOMPARE(prompt.told.size(), 1);
    }

    void theFlag_livesAsLongAsTheWindow()
    {
        {
            About1 about;
            QVERIFY(globals().ABOUT_OPEN);
        }
        QVERIFY(!globals().ABOUT_OPEN);
    }
};

QTEST_MAIN(TstAbout)
#include "tst_about.moc"
