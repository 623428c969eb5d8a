// From match lines to positions, questions and connects.
#include <QTest>

#include "copy/copy_engine.h"
#include "copy/field_line.h"
#include "platform/run_error.h"

using namespace velnor;

namespace {

constexpr short kLong = 4;
constexpr short kDate = 8;
constexpr short kText = 10;

}  // namespace

class TstCopyEngine : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        from_ = {};
        to_ = {};
        from_.add("ID", kLong, 4);
        from_.add("CITY", kText, 30);
        from_.add("BORN", kDate, 8);
        to_.add("TOWN", kText, 40);
        to_.add("ID", kLong, 4);
        to_.add("DAY", kDate, 8);
        matches_ = {};
    }

    void lines_becomePositions()
    {
        build({match(1, 0), match(0, 1)});
        QCOMPARE(matches_.MatchFrom[0], short(1));
        QCOMPARE(matches_.MatchTo[0], short(0));
        QCOMPARE(matches_.MatchFrom[1], short(0));
        QCOMPARE(matches_.MatchTo[1], short(1));
        QCOMPARE(fieldPairs(matches_, 2), (std::vector<FieldPair>{{1, 0}, {0, 1}}));
    }

    void lines_areFoundBlindToCaseAndOuterBlanks()
    {
        build({"  city - text - 30  =    day - date - 8 "});
        QCOMPARE(matches_.MatchFrom[0], short(1));
        QCOMPARE(matches_.MatchTo[0], short(2));
    }

    void lineThatFindsNothing_meansTheFirstField()
    {
        build({"GONE - Text - 1  =  LOST - Text - 1"});
        QCOMPARE(matches_.MatchFrom[0], short(0));
        QCOMPARE(matches_.MatchTo[0], short(0));
    }

    void equalsSignInAName_meansTheFirstField()
    {
        from_.add("A=B", kText, 5);
        build({matchLine("A=B - Text - 5", to_.lines[2])});
        QCOMPARE(matches_.MatchFrom[0], short(0));
        QCOMPARE(matches_.MatchTo[0], short(0));
    }

    void oneSidedMatch_meansTheFirstFieldOfTheOtherSide()
    {
        build({matchLine({}, to_.lines[2])});
        QCOMPARE(matches_.MatchFrom[0], short(0));
        QCOMPARE(matches_.MatchTo[0], short(2));
    }

    void building_clearsWhatStoodThere()
    {
        matches_.MatchFrom[5] = 7;
        matches_.MatchFrom[301] = 7;
        build({match(1, 0)});
        QCOMPARE(matches_.MatchFrom[5], short(0));
        QCOMPARE(matches_.MatchFrom[301], short(7));  // the last element is not reached
    }

    void theArrays_hold302Matches()
    {
        QStringList lines;
        for (int i = 0; i < 302; ++i)
            lines << match(1, 2);
        build(lines);
        QCOMPARE(matches_.MatchTo[301], short(2));
        lines << match(1, 2);
        QVERIFY_THROWS_EXCEPTION(RunError, build(lines));
    }

    void typesAreCompared_oneLineAbove()  // required: the arrays start at 1
    {
        // Lines 0 and 0: both read the cleared element, though ID is a Long and TOWN a Text.
        build({match(0, 0)});
        QVERIFY(check({}));
        QVERIFY(asked_.isEmpty());
        // CITY (Text) to DAY (Date): above them stand ID (Long) and ID (Long).
        build({match(1, 2)});
        QVERIFY(check({}));
        QVERIFY(asked_.isEmpty());
        // BORN to DAY, both Date: above them stand CITY (Text) and ID (Long).
        build({match(2, 2)});
        QVERIFY(check({true}));
        QCOMPARE(asked_, QStringList{"Do you want to Copy BORN to DAY"});
    }

    void eachMismatch_isAskedOnce_withItsLine()
    {
        build({match(0, 0), match(2, 2), match(0, 1)});
        QVERIFY(check({true, true}));
        QCOMPARE(lines_, (QList<int>{1, 2}));
        QCOMPARE(asked_,
                 (QStringList{"Do you want to Copy BORN to DAY", "Do you want to Copy ID to ID"}));
    }

    void refusal_endsTheQuestions()
    {
        build({match(2, 2), match(0, 1)});
        QVERIFY(!check({false, true}));
        QCOMPARE(asked_.size(), 1);
    }

    void questionOfAnEmptySide_hasNoName()
    {
        build({matchLine({}, to_.lines[1])});
        from_.close();
        QVERIFY(check({true}));
        QCOMPARE(asked_, QStringList{"Do you want to Copy  to ID"});
    }

    void fromConnect_alwaysNamesAPassword()
    {
        QCOMPARE(copyFromConnect("Access 2000;", ""), ";pwd=");
        QCOMPARE(copyFromConnect("Access 2000;", "x"), ";pwd=x");
        QCOMPARE(copyFromConnect(";pwd=x", "y"), ";pwd=x");
        QCOMPARE(copyFromConnect("dBASE 5.0;", "x"), "dBASE 5.0;");
    }

    void toConnect_namesAPassword_whenAnyIsInHand()  // required: the sides differ
    {
        QCOMPARE(copyToConnect("Access 2000;", "", ""), "");
        QCOMPARE(copyToConnect("Access 2000;", "to", ""), "");
        QCOMPARE(copyToConnect("Access 2000;", "to", "other"), ";pwd=to");
        QCOMPARE(copyToConnect("Access 2000;", "", "other"), ";pwd=");
        QCOMPARE(copyToConnect("Excel 8.0;", "to", "other"), "Excel 8.0;");
    }

private:
    QString match(int from, int to) const { return matchLine(from_.lines[from], to_.lines[to]); }
    void build(const QStringList& lines)
    {
        count_ = int(lines.size());
        buildFieldMatches(lines, from_.lines, to_.lines, matches_);
    }
    bool check(QList<bool> answers)
    {
        asked_.clear();
        lines_.clear();
        return checkFieldTypes(matches_, count_, from_, to_,
                               [&](int line, const QString& question) {
                                   lines_ << line;
                                   asked_ << question;
                                   return answers.isEmpty() ? false : answers.takeFirst();
                               });
    }

    FieldList from_;
    FieldList to_;
    MatchArrays matches_;
    int count_ = 0;
    QStringList asked_;
    QList<int> lines_;
};

QTEST_GUILESS_MAIN(TstCopyEngine)
#include "tst_copy_engine.moc"
