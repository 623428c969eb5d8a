#include <QTest>
#include <QWidget>

#include "core/window_list.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;

namespace {

/// A window that writes down what happens to it.
struct Shown {
    Shown(QString name, QStringList& log) : caption(std::move(name))
    {
        entry = WindowEntry(OpenWindow{[this] { return caption; },
                                       [this, &log] { log << "front " + caption; },
                                       [this, &log] {
                                           log << "close " + caption;
                                           entry = WindowEntry();
                                       }});
    }
    QString caption;
    WindowEntry entry;
};

}  // namespace

class WindowListTest : public QObject {
    Q_OBJECT

private slots:
    void closesTheWindowOfAFile_afterTellingSo()
    {
        testing::ScriptedPrompt prompt;
        QStringList log;
        Shown main("Velnor", log), first("C:\\a.dbf", log), second("C:\\b.dbf", log);
        QVERIFY(CloseWindowOfFile("C:\\b.dbf"));
        QCOMPARE(log, (QStringList{"front C:\\b.dbf", "close C:\\b.dbf"}));
        QCOMPARE(prompt.told,
                 QStringList{"Window Displaying Database must be Closed to Send - C:\\b.dbf"});
        QCOMPARE(prompt.toldTitles, QStringList{"Velnor 3.0 - The Database File Copier"});
        QCOMPARE(openCaptions(), (QStringList{"Velnor", "C:\\a.dbf"}));
    }

    void withoutAMatchNothingIsSaid()
    {
        testing::ScriptedPrompt prompt;
        QStringList log;
        QVERIFY(!CloseWindowOfFile("C:\\b.dbf"));
        Shown main("Velnor", log), first("C:\\a.dbf", log);
        QVERIFY(!CloseWindowOfFile("C:\\b.dbf"));
        QVERIFY(!CloseWindowOfFile("C:\\A.DBF"));  // the caption as it stands
        QVERIFY(log.isEmpty() && prompt.told.isEmpty());
    }

    void theMainWindowIsNeverClosed()
    {
        testing::ScriptedPrompt prompt;
        QStringList log;
        Shown main("C:\\a.dbf", log);
        QVERIFY(!CloseWindowOfFile("C:\\a.dbf"));
    }

    void theFirstOfTwoMatchesIsClosed()
    {
        testing::ScriptedPrompt prompt;
        QStringList log;
        Shown main("Velnor", log), first("X", log), second("X", log);
        QVERIFY(CloseWindowOfFile("X"));
        QCOMPARE(openCaptions(), (QStringList{"Velnor", "X"}));
        first.caption = "Y";
        QCOMPARE(openCaptions(), (QStringList{"Velnor", "X"}));
    }

    void aWidgetIsKnownByItsTitleAtTheMoment()
    {
        testing::ScriptedPrompt prompt;
        QWidget main, child;
        WindowEntry mainEntry(&main), childEntry(&child);
        child.setWindowTitle("C:\\b.dbf");
        child.show();
        QVERIFY(CloseWindowOfFile("C:\\b.dbf"));
        QVERIFY(!child.isVisible());
    }
};

QTEST_MAIN(WindowListTest)
#include "tst_window_list.moc"
