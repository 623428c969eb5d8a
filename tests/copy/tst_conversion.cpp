// What a value becomes between two field types: the whole table, and the values at its edges.
#include <QTest>

#include "copy/conversion.h"
#include "core/text.h"
#include "platform/run_error.h"

using namespace velnor;

namespace {

constexpr int kBoolean = 1, kByte = 2, kInteger = 3, kLong = 4, kCurrency = 5, kSingle = 6,
              kDouble = 7, kDate = 8, kText = 10, kMemo = 12;

/// The written value as text; "(none)" when nothing is written, "(Null)" for Null.
QString written(ValueView source, int S, int T, int size = 255)
{
    std::string scratch;
    ValueView out;
    if (!convert(source, S, T, size, scratch, out))
        return "(none)";
    switch (out.kind()) {
    case ValueKind::Null:
        return "(Null)";
    case ValueKind::Text:
        return QString::fromUtf8(out.asText().data(), qsizetype(out.asText().size()));
    case ValueKind::Real:
        return QString::number(out.asReal(), 'g', 17);
    case ValueKind::Date:
        return "date " + QString::number(out.asDate());
    case ValueKind::Integer:
        return QString::number(out.asInteger());
    case ValueKind::Boolean:
        return out.asBoolean() ? "true" : "false";
    default:
        return "other";
    }
}

ValueView asText(const char* s)
{
    return ValueView::text(s);
}

}  // namespace

class TstConversion : public QObject {
    Q_OBJECT
private slots:
    void table_data()
    {
        QTest::addColumn<int>("S");
        QTest::addColumn<int>("T");
        QTest::addColumn<int>("rule");
        const auto row = [](const char* name, int S, int T, Conversion rule) {
            QTest::newRow(name) << S << T << int(rule);
        };
        row("same type, not Text", kMemo, kMemo, Conversion::AsItIs);
        row("Text to Text", kText, kText, Conversion::CutText);
        row("Memo to Text", kMemo, kText, Conversion::ToText);
        row("Boolean to Text", kBoolean, kText, Conversion::ToText);
        row("Date to Text", kDate, kText, Conversion::ToText);
        row("Double to Text", kDouble, kText, Conversion::ToText);
        row("Double to Date", kDouble, kDate, Conversion::AsItIs);
        row("Date to Double", kDate, kDouble, Conversion::AsItIs);
        row("Double to Long", kDouble, kLong, Conversion::AsItIs);
        row("Long to Double", kLong, kDouble, Conversion::AsItIs);
        row("Double to Integer", kDouble, kInteger, Conversion::AsItIs);
        row("Integer to Double", kInteger, kDouble, Conversion::AsItIs);
        row("Text to Double", kText, kDouble, Conversion::LeadingNumber);
        row("Text to Long", kText, kLong, Conversion::LeadingNumber);
        row("Text to Integer", kText, kInteger, Conversion::LeadingNumber);
        row("Text to Memo", kText, kMemo, Conversion::NotWritten);
        row("Text to Date", kText, kDate, Conversion::NotWritten);
        row("Text to Byte", kText, kByte, Conversion::NotWritten);
        row("Text to Currency", kText, kCurrency, Conversion::NotWritten);
        row("Text to Single", kText, kSingle, Conversion::NotWritten);
        row("Text to Boolean", kText, kBoolean, Conversion::NotWritten);
        row("Long to Integer", kLong, kInteger, Conversion::NotWritten);
        row("Integer to Long", kInteger, kLong, Conversion::NotWritten);
        row("Long to Date", kLong, kDate, Conversion::NotWritten);
        row("Currency to Double", kCurrency, kDouble, Conversion::NotWritten);
        row("Single to Double", kSingle, kDouble, Conversion::NotWritten);
        row("Boolean to Long", kBoolean, kLong, Conversion::NotWritten);
        row("Memo to Long", kMemo, kLong, Conversion::NotWritten);
    }
    void table()
    {
        QFETCH(int, S);
        QFETCH(int, T);
        QFETCH(int, rule);
        QCOMPARE(int(conversionFor(S, T)), rule);
    }

    void text_isCutToTheTargetsCharacters()
    {
        QCOMPARE(written(asText("0123456789012345678901234567890123456789"), kText, kText, 10),
                 "0123456789");
        QCOMPARE(written(asText("abc"), kText, kText, 10), "abc");
        QCOMPARE(written(asText("\xC3\xA4\xC3\xB6\xC3\xBC"), kText, kText, 2),
                 QString::fromUtf8("\xC3\xA4\xC3\xB6"));
    }

    void nullText_staysNull() { QCOMPARE(written(ValueView::null(), kText, kText, 10), "(Null)"); }

    void memoToText_isNotCut()  // so a longer text fails at the target and ends the copy
    {
        QCOMPARE(written(asText("longer than ten"), kMemo, kText, 10), "longer than ten");
        QCOMPARE(written(ValueView::null(), kMemo, kText, 10), "(Null)");
    }

    void otherTypes_becomeText_data()
    {
        QTest::addColumn<QString>("got");
        QTest::addColumn<QString>("wanted");
        QTest::newRow("Long") << written(ValueView::integer(-12), kLong, kText) << "-12";
        QTest::newRow("Boolean") << written(ValueView::boolean(true), kBoolean, kText) << "True";
        QTest::newRow("Currency") << written(ValueView::currency(123400), kCurrency, kText)
                                  << "12.34";
        QTest::newRow("Double") << written(ValueView::real(0.1 + 0.2), kDouble, kText) << "0.3";
        QTest::newRow("whole Double") << written(ValueView::real(1500), kDouble, kText) << "1500";
        QTest::newRow("Single") << written(ValueView::real(double(0.1f)), kSingle, kText) << "0.1";
        QTest::newRow("Date") << written(ValueView::date(38309.5), kDate, kText)
                              << "11/18/2004 12:00:00 PM";
        QTest::newRow("midnight") << written(ValueView::date(38309), kDate, kText) << "11/18/2004";
    }
    void otherTypes_becomeText()
    {
        QFETCH(QString, got);
        QFETCH(QString, wanted);
        QCOMPARE(got, wanted);
    }

    void textToNumber_takesTheLeadingNumber()
    {
        QCOMPARE(written(asText("12abc"), kText, kLong), "12");
        QCOMPARE(written(asText("abc"), kText, kLong), "0");
        QCOMPARE(written(asText(""), kText, kInteger), "0");
        QCOMPARE(written(asText(" -1.5 "), kText, kDouble), "-1.5");
    }

    void leadingNumber_isThatOfVal_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* s :
             {"12",   " 12", "-12.5", "+7",    "1 2", "1\t2",  "12abc", "abc", "",     "   ",
              ".5",   "-.5", "5.",    "1.2.3", "1-2", "1e3",   "1d2",   "1e",  "&HFF", "&HFFFF",
              "&O17", "--1", "-",     ".",     "1,5", "00012", "nan",   "inf", "0x10"})
            QTest::newRow(s) << s;
    }
    void leadingNumber_isThatOfVal()
    {
        QFETCH(QString, text);
        QCOMPARE(leadingNumber(text.toStdString()), text::val(text));
    }

    void nullTextToNumber_isError94()
    {
        try {
            written(ValueView::null(), kText, kLong);
            QFAIL("no error");
        } catch (const RunError& error) {
            QCOMPARE(error.number(), 94);
        }
    }

    void values_passAsTheyAre()
    {
        QCOMPARE(written(ValueView::real(2.5), kDouble, kDate), "2.5");
        QCOMPARE(written(ValueView::date(2.5), kDate, kDouble), "date 2.5");
        QCOMPARE(written(ValueView::integer(7), kLong, kDouble), "7");
        QCOMPARE(written(ValueView::null(), kDouble, kLong), "(Null)");
    }

    void withoutARule_nothingIsWritten()
    {
        QCOMPARE(written(ValueView::boolean(true), kBoolean, kLong), "(none)");
        QCOMPARE(written(asText("x"), kText, kMemo), "(none)");
    }
};

QTEST_GUILESS_MAIN(TstConversion)
#include "tst_conversion.moc"
