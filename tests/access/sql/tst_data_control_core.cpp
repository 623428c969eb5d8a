// The Data control without a window: opening, events and their order, saving bound fields.
#include "access/data_control.h"
#include "tests/access/sql/sql_fixture.h"

using namespace velnor;
using namespace velnor::test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// A box of a window: its text, and whether somebody typed.
class Box final : public DataBinding {
public:
    Box(int field, std::vector<std::string>& events) : field_(field), events_(events) {}
    void type(const std::string& typed)
    {
        text = typed;
        typed_ = true;
    }
    bool changed() const override { return typed_; }
    void save(Recordset& records) override
    {
        events_.push_back("save " + text);
        records.setValue(field_, ValueView::text(text));
    }
    void show(const Recordset& records) override
    {
        text = shown(records.value(field_));
        typed_ = false;
        events_.push_back("show " + text);
    }
    void clear() override
    {
        text = "-";
        typed_ = false;
    }
    std::string text;

private:
    int field_;
    std::vector<std::string>& events_;
    bool typed_ = false;
};

}  // namespace

class DataControlCore : public SqlTest {
protected:
    DataControlCore() : data1(workspace), city(1, events)
    {
        data1.Connect = "Memory;";
        data1.DatabaseName = kPath;
        data1.RecordSource = "ORDERS";
        data1.onReposition = [this] { events.push_back("Reposition"); };
        data1.onValidate = [this](DataAction& action, bool& save) {
            events.push_back("Validate " + std::to_string(static_cast<int>(action)) +
                             (save ? " save" : ""));
            if (refuse)
                action = DataAction::Cancel;
            if (forget)
                save = false;
        };
        data1.bind(city);
    }
    std::vector<std::string> taken() { return std::exchange(events, {}); }

    std::vector<std::string> events;
    DataControl data1;
    Box city;
    bool refuse = false, forget = false;
};

TEST_F(DataControlCore, refreshShowsTheFirstRecord_thenRepositions)
{
    EXPECT_EQ(errorOf([&] { data1.Refresh(); }), 0);
    EXPECT_THAT(taken(), ElementsAre("show Boston", "Reposition"));
}

TEST_F(DataControlCore, movesValidateFirst_andRepositionLast)
{
    data1.Refresh();
    taken();
    data1.MoveNext();
    EXPECT_THAT(taken(), ElementsAre("Validate 3", "show boston", "Reposition"));
    data1.MoveLast();
    EXPECT_THAT(taken(), ElementsAre("Validate 4", "show Oslo", "Reposition"));
    data1.MovePrevious();
    data1.MoveFirst();
    EXPECT_THAT(taken(), ElementsAre("Validate 2", "show Null", "Reposition", "Validate 1",
                                     "show Boston", "Reposition"));
}

TEST_F(DataControlCore, movesPassTheEnds_whereTheyAreToldTo)
{
    data1.BOFAction = data1.EOFAction = EndAction::Pass;
    data1.Refresh();
    data1.MoveLast();
    taken();
    data1.MoveNext();
    EXPECT_TRUE(data1.Recordset().Eof());
    EXPECT_EQ(city.text, "-");
    EXPECT_THAT(taken(), ElementsAre("Validate 3", "Reposition"));
    data1.MoveNext();  // it is there already
    EXPECT_THAT(taken(), IsEmpty());
    data1.MoveFirst();
    data1.MovePrevious();
    EXPECT_TRUE(data1.Recordset().Bof());
    EXPECT_EQ(city.text, "-");
}

TEST_F(DataControlCore, moveSavesWhatWasTyped)
{
    data1.Refresh();
    taken();
    city.type("Quito");
    data1.MoveNext();
    EXPECT_THAT(taken(), ElementsAre("Validate 3 save", "save Quito", "show boston", "Reposition"));
    EXPECT_THAT(answer("SELECT City FROM ORDERS WHERE ID = 1"), ElementsAre("Quito"));
    EXPECT_GT(driver.database(kPath).commits, 0);
}

TEST_F(DataControlCore, validateCallsTheStepOff)
{
    data1.Refresh();
    city.type("Quito");
    refuse = true;
    taken();
    data1.MoveNext();
    EXPECT_THAT(taken(), ElementsAre("Validate 3 save"));
    EXPECT_EQ(city.text, "Quito");
    EXPECT_EQ(shown(data1.Recordset().value(1)), "Boston");
}

TEST_F(DataControlCore, validateKeepsTheChangesFromBeingSaved)
{
    data1.Refresh();
    city.type("Quito");
    forget = true;
    data1.MoveNext();
    EXPECT_THAT(answer("SELECT City FROM ORDERS WHERE ID = 1"), ElementsAre("Boston"));
}

TEST_F(DataControlCore, newRecordIsSavedByUpdate_andIsCurrentThen)
{
    data1.Refresh();
    taken();
    data1.AddNew();
    EXPECT_TRUE(data1.adding());
    EXPECT_THAT(taken(), ElementsAre("Validate 5", "show Null"));
    Box id(0, events);
    data1.bind(id);
    id.type("77");
    city.type("Riga");
    data1.Update();
    EXPECT_FALSE(data1.adding());
    EXPECT_EQ(shown(data1.Recordset().value(0)), "77");
    EXPECT_EQ(taken().back(), "Reposition");
    EXPECT_THAT(answer("SELECT City FROM ORDERS WHERE ID = 77"), ElementsAre("Riga"));
    data1.unbind(id);
}

TEST_F(DataControlCore, newRecordNobodyTypedIntoIsDroppedByAMove)
{
    data1.Refresh();
    data1.AddNew();
    data1.MoveNext();
    EXPECT_FALSE(data1.adding());
    EXPECT_EQ(db.TableDefs()["ORDERS"].RecordCount(), 5);
    EXPECT_EQ(city.text, "boston");
}

TEST_F(DataControlCore, failedSaveKeepsTheRecord_andTellsTheError)
{
    int told = 0;
    data1.onError = [&](int number, const std::string&) { told = number; };
    data1.Refresh();
    taken();
    city.type(std::string(30, 'x'));
    data1.MoveNext();
    EXPECT_EQ(told, 3163);
    EXPECT_EQ(city.text, std::string(30, 'x'));
    EXPECT_EQ(shown(data1.Recordset().value(1)), "Boston");
    data1.onError = nullptr;
    EXPECT_EQ(errorOf([&] { data1.MoveNext(); }), 3163);
    data1.UpdateControls();
    EXPECT_EQ(city.text, "Boston");
}

TEST_F(DataControlCore, deletedRecordShowsNothingUntilAMove)
{
    data1.Refresh();
    taken();
    data1.Delete();
    EXPECT_THAT(taken(), ElementsAre("Validate 7"));
    EXPECT_EQ(city.text, "-");
    data1.MoveNext();
    EXPECT_EQ(city.text, "boston");
}

TEST_F(DataControlCore, takesAStatement_forReadingOnly)
{
    data1.Type = RecordsetType::Dynaset;
    data1.RecordSource = "SELECT [City], [Total] FROM [ORDERS] WHERE [Region]  = 'east'";
    data1.Refresh();
    data1.MoveLast();
    EXPECT_EQ(data1.Recordset().RecordCount(), 2);
    EXPECT_EQ(errorOf([&] { data1.AddNew(); }), 3027);
    Recordset other = data1.anotherCursor();
    EXPECT_EQ(shown(other.value(1)), "100.25");
}

TEST_F(DataControlCore, failedRefreshLeavesItClosed)
{
    data1.Refresh();
    data1.RecordSource = "SELECT ID FROM ORDERS WHERE";
    EXPECT_EQ(errorOf([&] { data1.Refresh(); }), 3075);
    EXPECT_FALSE(data1.isOpen());
    data1.RecordSource = "NOTHERE";
    EXPECT_EQ(errorOf([&] { data1.Refresh(); }), 3078);
}
