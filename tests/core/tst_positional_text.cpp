#include <QTest>

#include "core/positional_text.h"
#include "tests/core/error_of.h"

using namespace velnor;
using velnor::testing::errorOf;

class PositionalTextTest : public QObject {
    Q_OBJECT

private slots:
    void numbersShareALine_eachWithItsBlanks()
    {
        PositionalWriter out;
        for (const qint32 value : {0, -120, 9500})
            out.number(value);
        out.endLine();
        out.text("a text");
        out.text("");
        QCOMPARE(out.content(), " 0 -120  9500 \r\na text\r\n\r\n");
    }

    void whatWasWritten_isReadBack()
    {
        PositionalWriter out;
        out.number(-2147483647 - 1);
        out.number(7);
        out.endLine();
        out.text("");
        out.text("me@example.org");
        out.number(1);
        out.endLine();
        PositionalReader in(out.content());
        QCOMPARE(in.number(), -2147483647 - 1);
        QCOMPARE(in.number(), 7);
        QCOMPARE(in.text(), "");
        QCOMPARE(in.text(), "me@example.org");
        QCOMPARE(in.number(), 1);
        QVERIFY(in.atEnd());
        QCOMPARE(errorOf([&] { in.number(); }), 62);
        QCOMPARE(errorOf([&] { in.text(); }), 62);
    }

    void commasBlanksAndLineEndsOfAnyKindSeparateNumbers()
    {
        const QString content = "1,2 3\r4\n5\r\n6 ,7\t8 \r\n9";
        PositionalReader in(content);
        for (int expected = 1; expected <= 9; ++expected)
            QCOMPARE(in.number(), expected);
        QVERIFY(in.atEnd());
    }

    void aTextEndsAtItsComma_andItsRestIsTheNextValue()
    {
        const QString content = "Smith, John\r\nnext one \r\n";
        PositionalReader in(content);
        QCOMPARE(in.text(), "Smith");
        QCOMPARE(in.text(), "John");
        QCOMPARE(in.text(), "next one ");
    }

    void whatIsNoNumber_isNone()
    {
        const QString content = "abc\r\n\r\n,12abc\r\n2.5\r\n";
        PositionalReader in(content);
        QCOMPARE(in.number(), 0);
        QCOMPARE(in.number(), 0);
        QCOMPARE(in.number(), 0);
        QCOMPARE(in.number(), 12);
        QCOMPARE(in.number(), 2);
    }

    void aNumberBeyond32Bits_isAnOverflow()
    {
        for (const QString content : {"2147483648", "-2147483649", "1e300", "1e999"}) {
            PositionalReader in(content);
            QCOMPARE(errorOf([&] { in.number(); }), 6);
        }
    }
};

QTEST_GUILESS_MAIN(PositionalTextTest)
#include "tst_positional_text.moc"
