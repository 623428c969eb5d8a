// Automatic matching by name, then by type and size.
#include <QTest>

#include "copy/field_match.h"
#include "platform/run_error.h"

using namespace velnor;

namespace {

constexpr short kLong = 4;
constexpr short kDouble = 7;
constexpr short kDate = 8;
constexpr short kText = 10;

struct Given {
    QString name;
    short type;
    int size;
};

FieldList listOf(std::initializer_list<Given> fields)
{
    FieldList list;
    for (const Given& field : fields)
        list.add(field.name, field.type, field.size);
    return list;
}

FieldList numbered(const QString& letter, int count, short type, int size)
{
    FieldList list;
    for (int i = 1; i <= count; ++i)
        list.add(letter + QString::number(i), type, size);
    return list;
}

using Pairs = std::vector<FieldPair>;

Pairs matched(const FieldList& from, const FieldList& to)
{
    Pairs pairs;
    matchFields(from, to, pairs);
    return pairs;
}

/// The error number of a run, 0 when it ends well.
int errorOf(const FieldList& from, const FieldList& to, Pairs& pairs)
{
    try {
        matchFields(from, to, pairs);
        return 0;
    } catch (const RunError& error) {
        return error.number();
    }
}

}  // namespace

class TstFieldMatch : public QObject {
    Q_OBJECT
private slots:
    void list_keepsElementZeroClear_andStopsAt301()
    {
        FieldList list = numbered("F", 301, kText, 5);
        QCOMPARE(list.types[0], short(0));
        QCOMPARE(list.names[1], "F1");
        QCOMPARE(list.sizes[301], 5);
        QVERIFY_THROWS_EXCEPTION(RunError, list.add("F302", kText, 5));
        QCOMPARE(list.lines.size(), 301);
        QCOMPARE(list.count, short(301));
    }

    void close_clearsElementsAndLines_butNotTheCount()
    {
        FieldList list = numbered("F", 3, kText, 5);
        list.close();
        QCOMPARE(list.types[3], short(0));
        QVERIFY(list.names[1].isEmpty());
        QVERIFY(list.lines.isEmpty());
        QCOMPARE(list.count, short(3));
    }

    void equalNames_pair_whateverTheirTypes()
    {
        const FieldList from = listOf({{"ID", kLong, 4}, {"CITY", kText, 30}});
        const FieldList to = listOf({{"CITY", kDate, 8}, {"ID", kText, 9}});
        QCOMPARE(matched(from, to), (Pairs{{0, 1}, {1, 0}}));
    }

    void namesThatDifferInCase_dontPairByName()
    {
        const FieldList from = listOf({{"X", kLong, 4}, {"city", kText, 30}});
        const FieldList to = listOf({{"X", kLong, 4}, {"CITY", kDate, 8}, {"Q", kText, 30}});
        // "city" finds no namesake; it takes the first free line below a Long, which is CITY.
        QCOMPARE(matched(from, to), (Pairs{{0, 0}, {1, 1}}));
    }

    void namesCutAtAHyphen_areEqualToEachOther()
    {
        const FieldList from = listOf({{"A-B", kText, 5}});
        const FieldList to = listOf({{"ID", kLong, 4}, {"X-Y", kDate, 8}});
        QCOMPARE(matched(from, to), (Pairs{{0, 1}}));
    }

    void matchingTwice_givesTheSame()
    {
        const FieldList from = listOf({{"ID", kLong, 4}, {"CITY", kText, 30}});
        const FieldList to = listOf({{"TOWN", kText, 30}, {"ID", kLong, 4}});
        QCOMPARE(matched(from, to), matched(from, to));
    }

    void firstFromLine_withoutNamesake_takesTheFirstToLine()  // both read element 0
    {
        const FieldList from = listOf({{"CITY", kText, 30}});
        const FieldList to = listOf({{"BORN", kDate, 8}, {"TOWN", kText, 30}});
        QCOMPARE(matched(from, to), (Pairs{{0, 0}}));
    }

    void laterLines_pairByTheTypeOfTheLineAbove()  // required: the arrays start at 1
    {
        const FieldList from = listOf({{"ID", kLong, 4}, {"A", kText, 30}, {"B", kDouble, 8}});
        const FieldList to =
            listOf({{"ID", kLong, 4}, {"P", kDate, 8}, {"Q", kText, 30}, {"R", kDate, 8}});
        // A stands below a Long: the first free To line below a Long is P.
        // B stands below Text 30: R does, too.
        QCOMPARE(matched(from, to), (Pairs{{0, 0}, {1, 1}, {2, 3}}));
    }

    void nearSizes_neverPair()
    {
        const FieldList from = listOf({{"ID", kText, 10}, {"A", kText, 30}});
        const FieldList to = listOf({{"ID", kText, 11}, {"B", kText, 30}});
        QCOMPARE(matched(from, to), (Pairs{{0, 0}}));
    }

    void takenLines_arePassedByTheTypePass()
    {
        const FieldList from = listOf({{"P", kText, 5}, {"A", kText, 5}, {"B", kText, 5}});
        const FieldList to = listOf({{"P", kText, 5}, {"Q", kText, 5}, {"R", kText, 5}});
        QCOMPARE(matched(from, to), (Pairs{{0, 0}, {1, 1}, {2, 2}}));
    }

    void namePass_takesALineThatTheTypePassHasTaken()
    {
        const FieldList from = listOf({{"A", kText, 5}, {"P", kText, 5}});
        const FieldList to = listOf({{"P", kText, 5}});
        QCOMPARE(matched(from, to), (Pairs{{0, 0}, {1, 0}}));
    }

    void differentTypes_findNothing_butForTheFirstLine()
    {
        const FieldList from = numbered("F", 4, kText, 5);
        const FieldList to = numbered("T", 4, kDate, 8);
        QCOMPARE(matched(from, to), (Pairs{{0, 0}}));
    }

    void emptyLists_findNothing()
    {
        QVERIFY(matched({}, numbered("T", 3, kText, 5)).empty());
        QVERIFY(matched(numbered("F", 3, kText, 5), {}).empty());
    }

    void moreThan201ToLines_areARangeError_inTheTypePass()
    {
        const FieldList from = listOf({{"T1", kText, 5}, {"NONE", kText, 5}, {"T2", kText, 5}});
        Pairs pairs;
        QCOMPARE(errorOf(from, numbered("T", 202, kDate, 8), pairs), 9);
        QCOMPARE(pairs, (Pairs{{0, 0}}));  // what was found before stays
        pairs.clear();
        QCOMPARE(errorOf(from, numbered("T", 201, kDate, 8), pairs), 0);
        QCOMPARE(pairs, (Pairs{{0, 0}, {2, 1}}));
    }

    void moreThan201ToLines_areNoError_whileTheNamesakesComeEarly()
    {
        Pairs pairs;
        QCOMPARE(errorOf(numbered("T", 201, kText, 5), numbered("T", 300, kText, 5), pairs), 0);
        QCOMPARE(pairs.size(), std::size_t(201));
    }

    void namesakeBehindLine200_isFound_thenARangeError()
    {
        Pairs pairs;
        const FieldList from = listOf({{"T202", kText, 5}});
        QCOMPARE(errorOf(from, numbered("T", 202, kText, 5), pairs), 9);
        QCOMPARE(pairs, (Pairs{{0, 201}}));
    }
};

namespace QTest {
template <> char* toString(const Pairs& pairs)
{
    QString text;
    for (const FieldPair& pair : pairs)
        text += QString("%1=%2 ").arg(pair.from).arg(pair.to);
    return qstrdup(qPrintable(text));
}
}  // namespace QTest

QTEST_GUILESS_MAIN(TstFieldMatch)
#include "tst_field_match.moc"
