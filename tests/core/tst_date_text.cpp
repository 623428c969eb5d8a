#include <fcntl.h>
#include <sys/stat.h>

#include <QTest>

#include "core/date_text.h"
#include "core/globals.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;

class DateTextTest : public QObject {
    Q_OBJECT

private slots:
    void init() { resetGlobals(); }

    void stampsOfAnAfternoon()
    {
        testing::Sandbox box;
        RefreshDateStamps();
        const auto& G = globals();
        QCOMPARE(G.STAMP_DATE, "20041118");
        QCOMPARE(G.STAMP_TIME, "130810");
        QCOMPARE(G.STAMP_KEY, "20041118130810");
        QCOMPARE(G.STAMP_DISPLAY, "11-18-2004 1:08:10 PM");
    }

    void displayTime_data()
    {
        QTest::addColumn<int>("hour");
        QTest::addColumn<QString>("stamp");
        QTest::addColumn<QString>("display");
        QTest::newRow("the noon hour shows as 0") << 12 << "121500"
                                                  << "01-02-2003 0:15:00 PM";
        QTest::newRow("the midnight hour shows as 0") << 0 << "001500"
                                                      << "01-02-2003 0:15:00 AM";
        QTest::newRow("morning") << 9 << "091500"
                                 << "01-02-2003 9:15:00 AM";
        QTest::newRow("late evening") << 23 << "231500"
                                      << "01-02-2003 11:15:00 PM";
    }
    void displayTime()
    {
        QFETCH(int, hour);
        QFETCH(QString, stamp);
        QFETCH(QString, display);
        testing::Sandbox box;
        box.clock().time = {2003, 1, 2, hour, 15, 0};
        RefreshDateStamps();
        QCOMPARE(globals().STAMP_DATE, "20030102");
        QCOMPARE(globals().STAMP_TIME, stamp);
        QCOMPARE(globals().STAMP_DISPLAY, display);
    }

    void keyOfADateText_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("key");
        QTest::newRow("the time is not padded") << "1/2/03 9:05:00"
                                                << "20030102 9:05:00";
        QTest::newRow("century before") << "12/31/99 23:00:00"
                                        << "19991231 23:00:00";
        QTest::newRow("80 is this century") << "12/31/80 1:00:00"
                                            << "20801231 1:00:00";
        QTest::newRow("81 is the one before") << "12/31/81 1:00:00"
                                              << "19811231 1:00:00";
        QTest::newRow("a year of four digits stays") << "1/2/2003 9:05:00"
                                                     << "20030102 9:05:00";
        QTest::newRow("a year of one digit stays") << "1/2/3 9:05:00"
                                                   << "30102 9:05:00";
        QTest::newRow("without a blank two characters are lost") << "3/4/05"
                                                                 << "0304 ";
        QTest::newRow("blank only behind") << "1/2/03 "
                                           << "20030102 ";
        QTest::newRow("nothing") << ""
                                 << "";
        QTest::newRow("one character") << "x"
                                       << "";
        QTest::newRow("no date") << "tomorrow morning"
                                 << "";
        QTest::newRow("one slash") << "1/2003 9:00:00"
                                   << "";
    }
    void keyOfADateText()
    {
        QFETCH(QString, source);
        QFETCH(QString, key);
        QCOMPARE(DateKeyFromText(source), key);
    }

    void stampAsItIsShown()
    {
        QCOMPARE(StampToDisplay("20041118130810"), "11/18/2004 13:08:10");
        QCOMPARE(StampToDisplay("20041118"), "11/18/2004 ::");
        QCOMPARE(StampToDisplay(""), "// ::");
    }

    void dateOfAFile()
    {
        testing::Sandbox box;
        box.write("C:\\data\\a.dbf", "x");
        const timespec stamp{1100783290, 0};  // 2004-11-18 13:08:10 UTC
        const timespec times[2]{stamp, stamp};
        QCOMPARE(utimensat(AT_FDCWD, box.native("C:\\data\\a.dbf").c_str(), times, 0), 0);
        QCOMPARE(FileDateText("C:\\data\\A.DBF"), "11/18/04 13:08:10");
        QCOMPARE(DateKeyFromText(FileDateText("C:\\data\\A.DBF")), "20041118 13:08:10");
    }

    void dateOfAMissingFileIsEmpty_andNothingIsSaid()
    {
        testing::Sandbox box;
        testing::ScriptedPrompt prompt;
        QCOMPARE(FileDateText("C:\\no\\a.dbf"), "");
        QCOMPARE(FileDateText("Q:\\a.dbf"), "");
        QCOMPARE(FileDateText(""), "");
        QVERIFY(prompt.told.isEmpty());
    }
};

QTEST_GUILESS_MAIN(DateTextTest)
#include "tst_date_text.moc"
