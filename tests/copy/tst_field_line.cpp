// The texts of fields and matches.
#include <QTest>

#include "copy/field_line.h"
#include "platform/run_error.h"

using namespace velnor;

class TstFieldLine : public QObject {
    Q_OBJECT
private slots:
    void fieldLine_isNameTypeAndSize()
    {
        QCOMPARE(fieldLine("CITY", 10, 30), "CITY - Text - 30");
        QCOMPARE(fieldLine("NOTE", 12, 0), "NOTE - Memo - 0");
    }

    void fieldLine_ofUnnamedType_hasAnEmptyTypeName()
    {
        QCOMPARE(fieldLine("X", 13, 4), "X -  - 4");
    }

    void name_endsBeforeTheFirstHyphenAndItsBlank_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << "CITY - Text - 30"
                               << "CITY";
        QTest::newRow("hyphen at the second place") << "A-B - Text - 5"
                                                    << "";
        QTest::newRow("hyphen further on") << "ZIP-CODE - Text - 5"
                                           << "ZI";
        QTest::newRow("blank inside") << "Ship To - Text - 5"
                                      << "Ship To";
    }
    void name_endsBeforeTheFirstHyphenAndItsBlank()
    {
        QFETCH(QString, line);
        QFETCH(QString, name);
        QCOMPARE(fieldLineName(line), name);
    }

    void name_ofLineThatBeginsWithAHyphen_isError5()
    {
        try {
            fieldLineName("-X - Text - 5");
            QFAIL("no error");
        } catch (const RunError& error) {
            QCOMPARE(error.number(), 5);
        }
    }

    void matchLine_joinsWithTwoBlanksOnEachSide()
    {
        QCOMPARE(matchLine("CITY - Text - 30", "TOWN - Text - 40"),
                 "CITY - Text - 30  =  TOWN - Text - 40");
    }

    void split_givesBackBothLines()
    {
        const MatchHalves halves = splitMatchLine("CITY - Text - 30  =  TOWN - Text - 40");
        QCOMPARE(halves.from, "CITY - Text - 30");
        QCOMPARE(halves.to.trimmed(), "TOWN - Text - 40");
    }

    void split_ofOneSidedMatch_leavesTheOtherEmpty()
    {
        QCOMPARE(splitMatchLine("CITY - Text - 30  =  ").from, "CITY - Text - 30");
        QCOMPARE(splitMatchLine("CITY - Text - 30  =  ").to.trimmed(), "");
        QCOMPARE(splitMatchLine("  =  TOWN - Text - 40").from, "");
        QCOMPARE(splitMatchLine("  =  TOWN - Text - 40").to.trimmed(), "TOWN - Text - 40");
    }

    void split_atEqualsSignInAName_cutsThere()  // required: such a match means the first field
    {
        QCOMPARE(splitMatchLine("ABCD=E - Text - 5  =  X - Text - 5").from, "AB");
        QCOMPARE(splitMatchLine("=E - Text - 5  =  X - Text - 5").from, "");
        QCOMPARE(splitMatchLine("A=E - Text - 5  =  X - Text - 5").from, "");
    }
};

QTEST_GUILESS_MAIN(TstFieldLine)
#include "tst_field_line.moc"
