#include <QTest>

#include "core/text.h"
#include "tests/core/error_of.h"

using namespace velnor;
using namespace velnor::text;
using velnor::testing::errorOf;

class TextTest : public QObject {
    Q_OBJECT

private slots:
    void positionsCountFromOne()
    {
        QCOMPARE(mid("abcdef", 1, 2), "ab");
        QCOMPARE(mid("abcdef", 3), "cdef");
        QCOMPARE(mid("abcdef", 6, 10), "f");
        QCOMPARE(mid("abcdef", 7, 1), "");
        QCOMPARE(mid("abcdef", 100), "");
        QCOMPARE(mid("abcdef", 2, 0), "");
        QCOMPARE(left("abc", 2), "ab");
        QCOMPARE(left("abc", 9), "abc");
        QCOMPARE(right("abc", 2), "bc");
        QCOMPARE(right("abc", 0), "");
    }

    void badPositionsAreError5()
    {
        QCOMPARE(errorOf([] { mid("abc", 0, 1); }), 5);
        QCOMPARE(errorOf([] { mid("abc", 1, -1); }), 5);
        QCOMPARE(errorOf([] { left("abc", -1); }), 5);
        QCOMPARE(errorOf([] { right("abc", -1); }), 5);
        QCOMPARE(errorOf([] { instr("abc", "a", 0); }), 5);
    }

    void findsFromTheStartAndFromTheEnd()
    {
        QCOMPARE(instr("a-b-c", "-"), 2);
        QCOMPARE(instr("a-b-c", "-", 3), 4);
        QCOMPARE(instr("a-b-c", "x"), 0);
        QCOMPARE(instr("a-b-c", "B"), 0);
        QCOMPARE(instr("abc", "a", 4), 0);
        QCOMPARE(instr("", "a"), 0);
        QCOMPARE(instr("abc", ""), 1);
        QCOMPARE(instrRev("a-b-c", "-"), 4);
        QCOMPARE(instrRev("a-b-c", "x"), 0);
        QCOMPARE(instrRev("", "x"), 0);
    }

    void onlyBlanksAreTrimmed()
    {
        QCOMPARE(trim("  a b  "), "a b");
        QCOMPARE(trim("\ta\t"), "\ta\t");
        QCOMPARE(ltrim("  a "), "a ");
        QCOMPARE(rtrim("  a "), "  a");
        QCOMPARE(trim("   "), "");
    }

    void valueOfALeadingNumber_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<double>("value");
        QTest::newRow("nothing") << "" << 0.0;
        QTest::newRow("no number") << "abc" << 0.0;
        QTest::newRow("number, then letters") << "12abc" << 12.0;
        QTest::newRow("blanks inside") << "1 2" << 12.0;
        QTest::newRow("blanks, tabs and line feeds") << " \t\n1\t5 " << 15.0;
        QTest::newRow("a carriage return ends it") << "1\r5" << 1.0;
        QTest::newRow("minus") << "-3" << -3.0;
        QTest::newRow("plus") << "+3" << 3.0;
        QTest::newRow("point first") << ".5" << 0.5;
        QTest::newRow("point last") << "5." << 5.0;
        QTest::newRow("two points") << "1.2.3" << 1.2;
        QTest::newRow("a comma ends it") << "1,234" << 1.0;
        QTest::newRow("exponent") << "1.5e3x" << 1500.0;
        QTest::newRow("exponent D") << "1D2" << 100.0;
        QTest::newRow("exponent without digits") << "2e" << 2.0;
        QTest::newRow("sign of an exponent without digits") << "2e+" << 2.0;
        QTest::newRow("sign alone") << "-" << 0.0;
        QTest::newRow("point alone") << "." << 0.0;
        QTest::newRow("hexadecimal") << "&H1F" << 31.0;
        QTest::newRow("hexadecimal of 16 bits has a sign") << "&hFFFF" << -1.0;
        QTest::newRow("hexadecimal of 32 bits") << "&H10000" << 65536.0;
        QTest::newRow("hexadecimal colour") << "&H80000005" << -2147483643.0;
        QTest::newRow("octal") << "&o17" << 15.0;
        QTest::newRow("ampersand alone") << "&" << 0.0;
        QTest::newRow("hexadecimal without digits") << "&Hxyz" << 0.0;
        QTest::newRow("too small") << "1e-999" << 0.0;
        QTest::newRow("other digits") << QString::fromUtf8("١٢") << 0.0;
    }
    void valueOfALeadingNumber()
    {
        QFETCH(QString, source);
        QFETCH(double, value);
        QCOMPARE(val(source), value);
    }

    void tooLargeANumberIsError6()
    {
        QCOMPARE(errorOf([] { val("1e999"); }), 6);
        QCOMPARE(errorOf([] { val("&H100000000"); }), 6);
    }

    void numbersAsText_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QString>("withBlank");
        QTest::newRow("zero") << 0.0 << "0"
                              << " 0";
        QTest::newRow("minus zero") << -0.0 << "0"
                                    << " 0";
        QTest::newRow("whole") << 5.0 << "5"
                               << " 5";
        QTest::newRow("negative") << -5.0 << "-5"
                                  << "-5";
        QTest::newRow("half") << 0.5 << "0.5"
                              << " .5";
        QTest::newRow("minus half") << -0.5 << "-0.5"
                                    << "-.5";
        QTest::newRow("a tenth") << 0.1 << "0.1"
                                 << " .1";
        QTest::newRow("15 digits") << 1.0 / 3 << "0.333333333333333"
                                   << " .333333333333333";
        QTest::newRow("rounded up") << 0.1 + 0.2 << "0.3"
                                    << " .3";
        QTest::newRow("largest plain") << 999999999999999.0 << "999999999999999"
                                       << " 999999999999999";
        QTest::newRow("with exponent") << 1e15 << "1E+15"
                                       << " 1E+15";
        QTest::newRow("digits and exponent") << 1.25e300 << "1.25E+300"
                                             << " 1.25E+300";
        QTest::newRow("small") << 0.00001 << "0.00001"
                               << " .00001";
        QTest::newRow("smaller") << 1.25e-20 << "1.25E-20"
                                 << " 1.25E-20";
        QTest::newRow("point inside") << 1234.5678 << "1234.5678"
                                      << " 1234.5678";
    }
    void numbersAsText()
    {
        QFETCH(double, number);
        QFETCH(QString, plain);
        QFETCH(QString, withBlank);
        QCOMPARE(cstr(number), plain);
        QCOMPARE(str(number), withBlank);
    }

    void countsOf16BitsOverflowWithError6()
    {
        QCOMPARE(narrow16(32767), short(32767));
        QCOMPARE(narrow16(-32768), short(-32768));
        QCOMPARE(errorOf([] { narrow16(32768); }), 6);
        QCOMPARE(errorOf([] { narrow16(-32769); }), 6);
    }

    void thousandsHaveCommas()
    {
        QCOMPARE(thousands(0), "0");
        QCOMPARE(thousands(999), "999");
        QCOMPARE(thousands(1000), "1,000");
        QCOMPARE(thousands(1234567), "1,234,567");
        QCOMPARE(thousands(-123456), "-123,456");
    }
};

QTEST_GUILESS_MAIN(TextTest)
#include "tst_text.moc"
