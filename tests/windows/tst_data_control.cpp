// The Data control: opening by three texts, moving, and letting go.
#include <QTest>

#include "access/workspace.h"
#include "core/attempt.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"
#include "windows/data_control.h"

using namespace velnor;
using namespace velnor::testing;

class TstDataControl : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        sandbox_->makeFolders("C:\\data");
        makeTable("C:\\data", kDBase, "ITEMS", {{"NAME", FieldType::Text, 10}});
        appendRows("C:\\data", kDBase, "ITEMS", {{"a"}, {"b"}, {"c"}});
        control_ = std::make_unique<DataControl>(workspace());
        control_->Connect = kDBase;
        control_->DatabaseName = "C:\\data";
        control_->RecordSource = "ITEMS.DBF";
        control_->ReadOnly = true;
        control_->Type = RecordsetType::Table;
        control_->onReposition = [this] { ++repositions_; };
        repositions_ = 0;
    }
    void cleanup()
    {
        control_.reset();
        sandbox_.reset();
    }

    void refresh_standsOnTheFirstRecord_andTellsIt()
    {
        control_->Refresh();
        QVERIFY(control_->isOpen());
        QCOMPARE(control_->Recordset().RecordCount(), std::int64_t(3));
        QCOMPARE(here(), "a");
        QCOMPARE(repositions_, 1);
    }

    void moves_stopAtBothEnds()
    {
        control_->Refresh();
        control_->MovePrevious();
        QCOMPARE(here(), "a");
        control_->MoveNext();
        QCOMPARE(here(), "b");
        control_->Move(40);
        QCOMPARE(here(), "c");
        control_->MoveNext();
        QCOMPARE(here(), "c");
        control_->Move(-40);
        QCOMPARE(here(), "a");
        control_->MoveLast();
        QCOMPARE(here(), "c");
    }

    void anotherCursor_movesByItself()
    {
        control_->Refresh();
        Recordset other = control_->anotherCursor();
        other.MoveLast();
        QCOMPARE(here(), "a");
    }

    void failedRefresh_leavesItClosed_andTheTextsStand()
    {
        control_->Refresh();
        control_->RecordSource = "NOTHERE.DBF";
        QVERIFY(attempt([&] { control_->Refresh(); }).number != 0);
        QVERIFY(!control_->isOpen());
        QCOMPARE(control_->RecordSource, std::string("NOTHERE.DBF"));
        QCOMPARE(attempt([&] { control_->Recordset(); }).number, 91);
    }

    void closedControl_letsTheFileGo()
    {
        control_->Refresh();
        control_->close();
        const Outcome alone = attempt([&] {
            auto database = workspace().OpenDatabase("C:\\data", true, false, kDBase);
            database.Close();
        });
        QCOMPARE(alone.number, 0);
    }

    void unknownIndex_isRefused_andTheOrderStays()
    {
        control_->Refresh();
        QVERIFY(attempt([&] { control_->SetIndex("NOSUCH"); }).number != 0);
        QCOMPARE(here(), "a");
    }

private:
    QString here()
    {
        const auto text = control_->Recordset().value(0).asText();
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).trimmed();
    }
    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<DataControl> control_;
    int repositions_ = 0;
};

QTEST_MAIN(TstDataControl)
#include "tst_data_control.moc"
