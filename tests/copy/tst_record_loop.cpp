// The record loop on real tables: what is written, what a failure leaves, what the watcher sees.
#include <QTest>

#include "access/engine_error.h"
#include "copy/record_loop.h"
#include "core/attempt.h"
#include "platform/host.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"

using namespace velnor;
using namespace velnor::testing;

class TstRecordLoop : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        sandbox_->makeFolders("C:\\from");
        sandbox_->makeFolders("C:\\to");
    }
    void cleanup() { sandbox_.reset(); }

    void records_areAppended_inTheirOrder()
    {
        makePair({{"NAME", FieldType::Text, 10}, {"AGE", FieldType::Double}},
                 {{"AGE", FieldType::Double}, {"NAME", FieldType::Text, 10}});
        appendRows("C:\\from", kDBase, "A", {{"Ann", 30.0}, {"Bob", 41.5}});
        appendRows("C:\\to", kDBase, "B", {{1.0, "first"}});
        QCOMPARE(copy({{0, 1}, {1, 0}}).number, 0);
        QCOMPARE(tally_.copied, 2);
        QCOMPARE(rows(), (QList<QStringList>{{"1", "first"}, {"30", "Ann"}, {"41.5", "Bob"}}));
    }

    void unmatchedFields_stayAsTheNewRecordHasThem()
    {
        makePair({{"NAME", FieldType::Text, 10}},
                 {{"NAME", FieldType::Text, 10}, {"AGE", FieldType::Double}});
        appendRows("C:\\from", kDBase, "A", {{"Ann"}});
        QCOMPARE(copy({{0, 0}}).number, 0);
        QCOMPARE(rows(), (QList<QStringList>{{"Ann", "(Null)"}}));
    }

    void emptySource_isNoCurrentRecord_andWritesNothing()
    {
        makePair({{"NAME", FieldType::Text, 10}}, {{"NAME", FieldType::Text, 10}});
        QCOMPARE(copy({{0, 0}}).number, 3021);
        QCOMPARE(tally_.copied, 0);
        QVERIFY(rows().isEmpty());
    }

    void longText_isCut_withoutAWord()
    {
        makePair({{"NAME", FieldType::Text, 40}}, {{"NAME", FieldType::Text, 10}});
        appendRows("C:\\from", kDBase, "A", {{QString("0123456789").repeated(4)}});
        QCOMPARE(copy({{0, 0}}).number, 0);
        QCOMPARE(rows(), (QList<QStringList>{{"0123456789"}}));
    }

    void longMemoToText_endsTheCopy_andLeavesTheRecordsBefore()
    {
        makePair({{"NOTE", FieldType::Memo}}, {{"NOTE", FieldType::Text, 10}});
        appendRows("C:\\from", kDBase, "A", {{"one"}, {"two"}, {"far more than ten"}, {"four"}});
        QVERIFY(copy({{0, 0}}).number != 0);
        QCOMPARE(tally_.copied, 2);
        QCOMPARE(rows(), (QList<QStringList>{{"one"}, {"two"}}));
    }

    void textToNumber_takesTheLeadingNumber()
    {
        makePair({{"CODE", FieldType::Text, 10}}, {{"CODE", FieldType::Double}});
        appendRows("C:\\from", kDBase, "A", {{"12abc"}, {"abc"}});
        QCOMPARE(copy({{0, 0}}).number, 0);
        QCOMPARE(rows(), (QList<QStringList>{{"12"}, {"0"}}));
    }

    void datesAndNumbers_becomeText()
    {
        makePair({{"DAY", FieldType::Date}, {"SUM", FieldType::Double}},
                 {{"DAY", FieldType::Text, 20}, {"SUM", FieldType::Text, 20}});
        appendRows("C:\\from", kDBase, "A", {{"2004-11-18", 12.5}});
        QCOMPARE(copy({{0, 0}, {1, 1}}).number, 0);
        QCOMPARE(rows(), (QList<QStringList>{{"11/18/2004", "12.5"}}));
    }

    void doubleAndDate_goIntoEachOther()
    {
        makePair({{"DAY", FieldType::Date}, {"NUMBER", FieldType::Double}},
                 {{"DAY", FieldType::Date}, {"NUMBER", FieldType::Double}});
        appendRows("C:\\from", kDBase, "A", {{"2004-11-18", 38310.0}});
        QCOMPARE(copy({{0, 1}, {1, 0}}).number, 0);
        QCOMPARE(rows(), (QList<QStringList>{{"11/19/2004", "38309"}}));
    }

    void pairsWithoutARule_areLeftUnwritten()
    {
        makePair({{"NAME", FieldType::Text, 10}, {"YES", FieldType::Boolean}},
                 {{"NOTE", FieldType::Memo}, {"SUM", FieldType::Double}});
        appendRows("C:\\from", kDBase, "A", {{"Ann", true}});
        QCOMPARE(copy({{0, 0}, {1, 1}}).number, 0);
        QCOMPARE(rows().size(), 1);
        QVERIFY(rows()[0][0] == "(Null)" || rows()[0][0].isEmpty());
        QCOMPARE(rows()[0][1], "(Null)");
    }

    void fieldMatchedTwice_keepsTheLaterValue()
    {
        makePair({{"A", FieldType::Text, 10}, {"B", FieldType::Text, 10}},
                 {{"T", FieldType::Text, 10}});
        appendRows("C:\\from", kDBase, "A", {{"early", "late"}});
        QCOMPARE(copy({{0, 0}, {1, 0}}).number, 0);
        QCOMPARE(rows(), (QList<QStringList>{{"late"}}));
    }

    void positionOutsideTheFields_isNotFound()
    {
        makePair({{"A", FieldType::Text, 10}}, {{"T", FieldType::Text, 10}});
        appendRows("C:\\from", kDBase, "A", {{"x"}});
        QCOMPARE(copy({{0, 5}}).number, 3265);
        QVERIFY(rows().isEmpty());
    }

    void tableCopiedIntoItself_isDoubled()
    {
        makePair({{"A", FieldType::Text, 10}}, {{"T", FieldType::Text, 10}});
        appendRows("C:\\to", kDBase, "B", {{"x"}, {"y"}});
        CopyJob job{{"C:\\to", kDBase, "B.DBF"}, {"c:\\TO", kDBase, "b"}, {{0, 0}}};
        QCOMPARE(run(job, {}).number, 0);
        QCOMPARE(rows(), (QList<QStringList>{{"x"}, {"y"}, {"x"}, {"y"}}));
    }

    void nullTextToANumber_endsTheCopy()
    {
        makeAccessPair({{"T", FieldType::Text, 10}}, {{"N", FieldType::Long}});
        appendRows("C:\\a.mdb", kAccess, "A", {{"12abc"}, {QVariant()}, {"3"}});
        QCOMPARE(copyInAccess({{0, 0}}).number, 94);
        QCOMPARE(accessRows(), (QList<QStringList>{{"12"}}));
    }

    void nullText_staysNull()
    {
        makeAccessPair({{"T", FieldType::Text, 10}}, {{"N", FieldType::Text, 5}});
        appendRows("C:\\a.mdb", kAccess, "A", {{QVariant()}});
        QCOMPARE(copyInAccess({{0, 0}}).number, 0);
        QCOMPARE(accessRows(), (QList<QStringList>{{"(Null)"}}));
    }

    void booleanToLong_writesNothing()
    {
        makeAccessPair({{"YES", FieldType::Boolean}}, {{"N", FieldType::Long}});
        appendRows("C:\\a.mdb", kAccess, "A", {{true}});
        QCOMPARE(copyInAccess({{0, 0}}).number, 0);
        QCOMPARE(accessRows(), (QList<QStringList>{{"(Null)"}}));
    }

    void booleanToRequiredLong_failsAtUpdate()
    {
        makeAccessPair({{"YES", FieldType::Boolean}}, {{"N", FieldType::Long, 0, true}});
        appendRows("C:\\a.mdb", kAccess, "A", {{true}});
        QCOMPARE(copyInAccess({{0, 0}}).number, 3314);
        QVERIFY(accessRows().isEmpty());
    }

    void duplicateKey_endsTheCopy_andLeavesTheRecordsBefore()
    {
        makeAccessPair({{"N", FieldType::Long}}, {{"N", FieldType::Long}}, "N");
        appendRows("C:\\a.mdb", kAccess, "A", {{1}, {2}, {1}, {3}});
        QCOMPARE(copyInAccess({{0, 0}}).number, 3022);
        QCOMPARE(tally_.copied, 2);
        QCOMPARE(accessRows(), (QList<QStringList>{{"1"}, {"2"}}));
    }

    void tableOfTheSameFile_isCopiedOnce()
    {
        makeAccessPair({{"N", FieldType::Double}}, {{"D", FieldType::Date}});
        appendRows("C:\\a.mdb", kAccess, "A", {{38309.0}, {38309.5}});
        QCOMPARE(copyInAccess({{0, 0}}).number, 0);
        QCOMPARE(accessRows(), (QList<QStringList>{{"11/18/2004"}, {"11/18/2004 12:00:00 PM"}}));
    }

    void doubleBeyondALong_endsTheCopy()
    {
        makeAccessPair({{"N", FieldType::Double}}, {{"N", FieldType::Long}});
        appendRows("C:\\a.mdb", kAccess, "A", {{7.0}, {1e12}});
        QVERIFY(copyInAccess({{0, 0}}).number != 0);
        QCOMPARE(accessRows(), (QList<QStringList>{{"7"}}));
    }

    void watcher_isToldOfCommittedRecords()
    {
        makeNumbers(7);
        QList<qint64> told;
        QList<qsizetype> onDisk;
        const CopyWatch watch{3, [&](std::int64_t copied) {
                                  told << copied;
                                  onDisk << qsizetype(fileSize("C:\\to\\B.DBF"));
                                  return true;
                              }};
        QCOMPARE(run(numbersJob(), watch).number, 0);
        QCOMPARE(told, (QList<qint64>{3, 6}));
        QVERIFY(onDisk[0] >= 3 * 11);  // three records of ten characters and a mark
        QVERIFY(onDisk[1] >= onDisk[0] + 3 * 11);
        QCOMPARE(rows().size(), 7);
    }

    void watcher_isToldLessOften_theMoreRecordsThereAre()
    {
        makeNumbers(300);
        QList<qint64> told;
        const CopyWatch watch{10, [&](std::int64_t copied) {
                                  told << copied;
                                  return true;
                              }};
        QCOMPARE(run(numbersJob(), watch).number, 0);
        QCOMPARE(told.first(3), (QList<qint64>{10, 20, 30}));
        QVERIFY(told.size() < 30);
        for (qsizetype i = 1; i < told.size(); ++i)
            QVERIFY(told[i] - told[i - 1] <= std::max<qint64>(10, told[i] / 8 + 10));
        QCOMPARE(rows().size(), 300);
    }

    void stop_isAskedBetweenCommitsToo()
    {
        makeNumbers(300);
        int asked = 0;
        qint64 told = 0;
        CopyWatch watch{10, [&](std::int64_t copied) {
                            told = copied;
                            return true;
                        }};
        watch.stop = [&] { return ++asked == 20; };
        QCOMPARE(run(numbersJob(), watch).number, 0);
        QVERIFY(tally_.cancelled);
        QCOMPARE(tally_.copied, 200);
        QVERIFY(told < 200);
        QCOMPARE(rows().size(), 200);
    }

    void watcher_canEndTheCopy()
    {
        makeNumbers(7);
        QCOMPARE(run(numbersJob(), {2, [](std::int64_t copied) { return copied < 4; }}).number, 0);
        QVERIFY(tally_.cancelled);
        QCOMPARE(tally_.copied, 4);
        QCOMPARE(rows().size(), 4);
    }

    void watcherThatThrows_leavesTheRecordsBefore()
    {
        makeNumbers(5);
        const CopyWatch watch{2, [](std::int64_t) -> bool {
                                  throw EngineError(EngineErrorNumber::Cancelled, "enough");
                              }};
        QCOMPARE(run(numbersJob(), watch).number, 3059);
        QCOMPARE(rows().size(), 2);
    }

    void missingTarget_isAnError_beforeAnythingIsWritten()
    {
        makeNumbers(2);
        CopyJob job = numbersJob();
        job.to.record = "NOBODY";
        QVERIFY(run(job, {}).number != 0);
        QCOMPARE(tally_.copied, 0);
    }

private:
    void makePair(const QList<MadeField>& from, const QList<MadeField>& to)
    {
        makeTable("C:\\from", kDBase, "A", from);
        makeTable("C:\\to", kDBase, "B", to);
    }
    void makeNumbers(int count)
    {
        makePair({{"A", FieldType::Text, 10}}, {{"T", FieldType::Text, 10}});
        QList<QVariantList> made;
        for (int i = 1; i <= count; ++i)
            made << QVariantList{QString::number(i)};
        appendRows("C:\\from", kDBase, "A", made);
    }
    static CopyJob numbersJob()
    {
        return {{"C:\\from", kDBase, "A"}, {"C:\\to", kDBase, "B"}, {{0, 0}}};
    }
    static void makeAccessPair(const QList<MadeField>& from, const QList<MadeField>& to,
                               const QString& uniqueIndexOn = {})
    {
        makeAccessFile("C:\\a.mdb");
        makeTable("C:\\a.mdb", kAccess, "A", from);
        makeTable("C:\\a.mdb", kAccess, "B", to, uniqueIndexOn);
    }
    Outcome copyInAccess(std::vector<FieldPair> pairs)
    {
        return run({{"C:\\a.mdb", "", "A"}, {"C:\\a.mdb", "", "B"}, std::move(pairs)}, {});
    }
    static QList<QStringList> accessRows() { return readRows("C:\\a.mdb", kAccess, "B"); }
    Outcome copy(std::vector<FieldPair> pairs)
    {
        CopyJob job = numbersJob();
        job.pairs = std::move(pairs);
        return run(job, {});
    }
    Outcome run(const CopyJob& job, const CopyWatch& watch)
    {
        Workspace workspace(*host().files);
        tally_ = {};
        return attempt([&] { runCopy(workspace, job, tally_, watch); });
    }
    std::uint64_t fileSize(std::string_view path) { return sandbox_->files().info(path)->size; }
    static QList<QStringList> rows() { return readRows("C:\\to", kDBase, "B"); }

    std::unique_ptr<Sandbox> sandbox_;
    CopyTally tally_;
};

QTEST_GUILESS_MAIN(TstRecordLoop)
#include "tst_record_loop.moc"
