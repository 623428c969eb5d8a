// The grid's model on real tables: what a cell shows, how far it counts, what it costs.
#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QTest>

#include "access/workspace.h"
#include "core/globals.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"
#include "tests/windows/big_table.h"
#include "windows/recordset_model.h"

using namespace velnor;
using namespace velnor::testing;

class TstRecordsetModel : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        resetGlobals();
        sandbox_->makeFolders("C:\\data");
    }
    void cleanup()
    {
        model_.reset();
        database_.reset();
        sandbox_.reset();
    }

    void model_keepsTheRulesOfModels()
    {
        makeMixed();
        model_ = std::make_unique<RecordsetModel>();
        QAbstractItemModelTester tester(model_.get(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        openTable("MIXED");
        QCOMPARE(model_->rowCount(), 3);
        model_->setRecordset(std::nullopt);
        QCOMPARE(model_->rowCount(), 0);
        QCOMPARE(model_->columnCount(), 0);
    }

    void cells_showValuesAsPeopleReadThem()
    {
        makeMixed();
        openTable("MIXED");
        QCOMPARE(shown(0, 0), "Ada");
        QCOMPARE(shown(0, 1), "12.5");
        QCOMPARE(shown(0, 2), "2/29/2004");
        QCOMPARE(shown(0, 3), "True");
        QCOMPARE(shown(1, 0), "Ben");
    }

    void null_isNothing_withATip()
    {
        makeMixed();
        openTable("MIXED");
        QCOMPARE(shown(1, 2), "");
        QCOMPARE(model_->data(model_->index(1, 2), Qt::ToolTipRole).toString(), "Null: no value");
        QVERIFY(!model_->data(model_->index(0, 2), Qt::ToolTipRole).isValid());
    }

    void memo_isOneLine_withAnEllipsis_andWholeOnRequest()
    {
        makeMixed();
        openTable("MIXED");
        QCOMPARE(shown(0, 4), QString("first line") + QChar(0x2026));
        QCOMPARE(model_->fullText(0, 4), "first line\r\nsecond line");
        QCOMPARE(shown(2, 4).size(), 251);
        QCOMPARE(model_->fullText(2, 4), QString(400, 'x'));
    }

    void numbersStandRight_flagsInTheMiddle_textsLeft()
    {
        makeMixed();
        openTable("MIXED");
        const auto side = [&](int column) {
            return model_->data(model_->index(0, column), Qt::TextAlignmentRole).toInt() &
                   Qt::AlignHorizontal_Mask;
        };
        QCOMPARE(side(0), int(Qt::AlignLeft));
        QCOMPARE(side(1), int(Qt::AlignRight));
        QCOMPARE(side(3), int(Qt::AlignHCenter));
        QCOMPARE(model_->headerData(1, Qt::Horizontal, Qt::TextAlignmentRole).toInt() &
                     Qt::AlignHorizontal_Mask,
                 int(Qt::AlignRight));
    }

    void headers_nameTheFields_andTellTypeAndSize()
    {
        makeMixed();
        openTable("MIXED");
        QCOMPARE(model_->headerData(0, Qt::Horizontal).toString(), "NAME");
        QCOMPARE(model_->headerData(0, Qt::Horizontal, Qt::ToolTipRole).toString(),
                 "NAME\nText, 20 characters");
        QCOMPARE(model_->headerData(2, Qt::Vertical).toInt(), 3);
    }

    void aMillionRows_openAtOnce_andAnyRowIsAtHand()
    {
        sandbox_->write("C:\\data\\BIG.DBF", bigTable(1'000'000));
        QElapsedTimer clock;
        clock.start();
        openTable("BIG");
        QCOMPARE(model_->rowCount(), 1'000'000);
        QCOMPARE(shown(0, 0), "0");
        QCOMPARE(shown(999'999, 0), "999999");
        QCOMPARE(shown(500'000, 1), "name0");
        qInfo("opened, first, last and middle row: %lld ms", clock.restart());
        for (int row = 600'000; row < 600'050; ++row)
            QCOMPARE(shown(row, 0), QString::number(row));
        qInfo("a page of 50 rows: %lld ms", clock.elapsed());
    }

    void backwards_andAcrossTheKeptRows_readsTheSame()
    {
        sandbox_->write("C:\\data\\BIG.DBF", bigTable(3000));
        openTable("BIG");
        for (int row = 2999; row >= 0; row -= 7)
            QCOMPARE(shown(row, 0), QString::number(row));
        for (int row = 0; row < 3000; row += 511)
            QCOMPARE(shown(row, 0), QString::number(row));
    }

    void emptyTable_hasItsColumns_andNoRow()
    {
        makeTable("C:\\data", kDBase, "NONE", {{"NAME", FieldType::Text, 10}});
        openTable("NONE");
        QCOMPARE(model_->rowCount(), 0);
        QCOMPARE(model_->columnCount(), 1);
        QVERIFY(!model_->data(model_->index(0, 0)).isValid());
    }

private:
    void makeMixed()
    {
        makeTable("C:\\data", kDBase, "MIXED",
                  {{"NAME", FieldType::Text, 20},
                   {"AMOUNT", FieldType::Double},
                   {"DAY", FieldType::Date},
                   {"FLAG", FieldType::Boolean},
                   {"NOTE", FieldType::Memo}});
        appendRows("C:\\data", kDBase, "MIXED",
                   {{"Ada", 12.5, "2004-02-29", true, "first line\r\nsecond line"},
                    {"Ben", -3, QVariant(), false, QVariant()},
                    {"Cleo", 0, QVariant(), false, QString(400, 'x')}});
    }
    void openTable(const char* name)
    {
        if (!model_)
            model_ = std::make_unique<RecordsetModel>();
        database_.emplace(workspace().OpenDatabase("C:\\data", false, true, kDBase));
        model_->setRecordset(database_->OpenRecordset(name, RecordsetType::Table));
    }
    QString shown(int row, int column)
    {
        return model_->data(model_->index(row, column)).toString();
    }

    std::unique_ptr<Sandbox> sandbox_;
    std::optional<Database> database_;
    std::unique_ptr<RecordsetModel> model_;
};

QTEST_MAIN(TstRecordsetModel)
#include "tst_recordset_model.moc"
