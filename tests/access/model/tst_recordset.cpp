// Moving among records, orders and Seek.
#include "tests/access/model/model_fixture.h"

namespace velnor::test {
namespace {

using ::testing::ElementsAre;

class RecordsetTest : public ModelTest {
protected:
    RecordsetTest() : db(open()) { fillPeople(db); }
    void addMany(int count)
    {
        Recordset rs = db.OpenRecordset("PEOPLE");
        for (int i = 0; i < count; ++i)
            addPerson(rs, 100 + i, std::string("P").append(std::to_string(i)), i % 100);
    }
    static void seek(Recordset& rs, std::string_view how, ValueView key)
    {
        rs.Seek(how, {&key, 1});
    }
    Database db;
};

TEST_F(RecordsetTest, opensOnTheFirstRecord)
{
    Recordset rs = db.OpenRecordset("PEOPLE");
    EXPECT_FALSE(rs.Bof());
    EXPECT_FALSE(rs.Eof());
    EXPECT_EQ(shown(rs.value(1)), "Ann");
    EXPECT_EQ(shown(rs.Fields()["name"].Value()), "Ann");
    EXPECT_EQ(rs.Fields()[2].Type(), 2);
}

TEST_F(RecordsetTest, anEmptyTableHasNoRecordAnywhere)
{
    db.TableDefs().Delete("PEOPLE");
    makePeople(db);
    Recordset rs = db.OpenRecordset("PEOPLE");
    EXPECT_TRUE(rs.Bof());
    EXPECT_TRUE(rs.Eof());
    EXPECT_EQ(rs.RecordCount(), 0);
    EXPECT_EQ(rs.PercentPosition(), 0);
    EXPECT_EQ(errorOf([&] { rs.MoveFirst(); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.MoveLast(); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.MoveNext(); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.MovePrevious(); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.Move(1); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.Edit(); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.Delete(); }), 3021);
    EXPECT_EQ(errorOf([&] { (void)rs.value(0); }), 3021);
    EXPECT_EQ(errorOf([&] { (void)rs.bookmark(); }), 3021);
}

TEST_F(RecordsetTest, movesOverBothEndsAndBack)
{
    Recordset rs = db.OpenRecordset("PEOPLE");
    rs.MovePrevious();
    EXPECT_TRUE(rs.Bof());
    EXPECT_FALSE(rs.Eof());
    EXPECT_EQ(errorOf([&] { (void)rs.value(0); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.MovePrevious(); }), 3021);
    rs.MoveNext();
    EXPECT_EQ(shown(rs.value(1)), "Ann");
    rs.MoveLast();
    EXPECT_EQ(shown(rs.value(1)), "Bea");
    rs.MoveNext();
    EXPECT_TRUE(rs.Eof());
    EXPECT_EQ(errorOf([&] { rs.MoveNext(); }), 3021);
    rs.MovePrevious();
    EXPECT_EQ(shown(rs.value(1)), "Bea");
}

TEST_F(RecordsetTest, moveGoesByAnyDistance)
{
    addMany(500);
    Recordset rs = db.OpenRecordset("PEOPLE");
    rs.Move(2);
    EXPECT_EQ(shown(rs.value(1)), "Bea");
    rs.Move(200);
    EXPECT_EQ(shown(rs.value(1)), "P199");
    rs.Move(-200);
    EXPECT_EQ(shown(rs.value(1)), "Bea");
    rs.Move(0);
    EXPECT_EQ(shown(rs.value(1)), "Bea");
    rs.Move(100000);
    EXPECT_TRUE(rs.Eof());
    EXPECT_EQ(errorOf([&] { rs.Move(1); }), 3021);
    rs.Move(-1);
    EXPECT_EQ(shown(rs.value(1)), "P499");
    rs.Move(-100000);
    EXPECT_TRUE(rs.Bof());
    rs.Move(1);
    EXPECT_EQ(shown(rs.value(1)), "Ann");
    rs.Move(INT64_MIN);
    EXPECT_TRUE(rs.Bof());
    rs.MoveNext();
    rs.Move(INT64_MAX);
    EXPECT_TRUE(rs.Eof());
}

TEST_F(RecordsetTest, aDynasetCountsWhatItHasMetUntilTheEndWasSeen)
{
    Recordset rs = db.OpenRecordset("PEOPLE");
    EXPECT_EQ(rs.RecordCount(), 1);
    rs.MoveNext();
    EXPECT_EQ(rs.RecordCount(), 2);
    rs.MovePrevious();
    EXPECT_EQ(rs.RecordCount(), 2);
    rs.MoveLast();
    rs.MoveFirst();
    EXPECT_EQ(rs.RecordCount(), 3);
    addPerson(rs, 7, "Dan", 7);
    EXPECT_EQ(rs.RecordCount(), 4);
    rs.Delete();
    EXPECT_EQ(rs.RecordCount(), 3);
    EXPECT_EQ(db.OpenRecordset("PEOPLE", RecordsetType::Table).RecordCount(), 3);
}

TEST_F(RecordsetTest, percentPositionRunsFromZeroToAHundred)
{
    Recordset rs = db.OpenRecordset("PEOPLE");
    EXPECT_EQ(rs.PercentPosition(), 0);
    rs.MoveNext();
    EXPECT_EQ(rs.PercentPosition(), 50);
    rs.MoveNext();
    EXPECT_EQ(rs.PercentPosition(), 100);
    rs.MoveNext();
    EXPECT_EQ(rs.PercentPosition(), 100);
    Recordset table = db.OpenRecordset("PEOPLE", RecordsetType::Table);
    table.Index("ByName");
    seek(table, "=", ValueView::text("Bea"));
    EXPECT_EQ(table.PercentPosition(), 50);
    EXPECT_EQ(shown(table.value(1)), "Bea");
}

TEST_F(RecordsetTest, ordinalsAreKeptWhereTheyAreCheap)
{
    Recordset rs = db.OpenRecordset("PEOPLE");
    EXPECT_EQ(rs.ordinal(), 0);
    EXPECT_TRUE(rs.moveToOrdinal(2));
    EXPECT_EQ(rs.ordinal(), 2);
    EXPECT_EQ(shown(rs.value(1)), "Bea");
    EXPECT_FALSE(rs.moveToOrdinal(3));
    EXPECT_FALSE(rs.moveToOrdinal(-1));
    EXPECT_EQ(shown(rs.value(1)), "Bea");
    EXPECT_EQ(rs.ordinal(), 2);
    rs.MoveNext();
    EXPECT_EQ(rs.ordinal(), -1);
    rs.MovePrevious();
    EXPECT_EQ(rs.ordinal(), 2);
    EXPECT_TRUE(rs.moveToOrdinal(0));
    EXPECT_TRUE(rs.moveToOrdinal(1));
    EXPECT_EQ(shown(rs.value(1)), "Carl");
}

TEST_F(RecordsetTest, bookmarksFindTheirRecordWhileItIsThere)
{
    Recordset rs = db.OpenRecordset("PEOPLE");
    rs.MoveNext();
    const auto carl = rs.bookmark();
    rs.MoveLast();
    EXPECT_TRUE(rs.moveToBookmark(carl));
    EXPECT_EQ(shown(rs.value(1)), "Carl");
    rs.Delete();
    rs.MoveFirst();
    EXPECT_FALSE(rs.moveToBookmark(carl));
    EXPECT_EQ(shown(rs.value(1)), "Ann");
}

TEST_F(RecordsetTest, anIndexOrdersATableCursor)
{
    Recordset rs = db.OpenRecordset("PEOPLE", RecordsetType::Table);
    EXPECT_EQ(rs.Index(), "");
    EXPECT_THAT(column(rs, 0), ElementsAre("3", "1", "2"));
    rs.Index("byname");
    EXPECT_EQ(rs.Index(), "ByName");
    EXPECT_EQ(shown(rs.value(1)), "Ann");
    EXPECT_THAT(column(rs, 1), ElementsAre("Ann", "Bea", "Carl"));
    rs.Index("PrimaryKey");
    EXPECT_THAT(column(rs, 0), ElementsAre("1", "2", "3"));
    rs.MovePrevious();
    EXPECT_EQ(shown(rs.value(0)), "3");
    rs.Index("");
    EXPECT_THAT(column(rs, 0), ElementsAre("3", "1", "2"));
}

TEST_F(RecordsetTest, anUnknownIndexIs3015AndLeavesTheOrder)
{
    Recordset rs = db.OpenRecordset("PEOPLE", RecordsetType::Table);
    rs.Index("ByName");
    rs.MoveNext();
    EXPECT_EQ(errorOf([&] { rs.Index("Nothing"); }), 3015);
    EXPECT_EQ(rs.Index(), "ByName");
    EXPECT_EQ(shown(rs.value(1)), "Bea");
    Recordset dynaset = db.OpenRecordset("PEOPLE");
    EXPECT_EQ(errorOf([&] { dynaset.Index("ByName"); }), 3251);
}

TEST_F(RecordsetTest, seekFindsByEveryComparison)
{
    Recordset rs = db.OpenRecordset("PEOPLE", RecordsetType::Table);
    rs.Index("PrimaryKey");
    const auto found = [&](std::string_view how, int key) {
        seek(rs, how, ValueView::integer(key));
        return rs.NoMatch() ? std::string("none") : shown(rs.value(0));
    };
    EXPECT_EQ(found("=", 2), "2");
    EXPECT_EQ(found(">=", 2), "2");
    EXPECT_EQ(found(">", 2), "3");
    EXPECT_EQ(found("<=", 2), "2");
    EXPECT_EQ(found("<", 2), "1");
    EXPECT_EQ(found("=", 9), "none");
    EXPECT_EQ(found(">", 3), "none");
    EXPECT_EQ(found("<", 1), "none");
}

TEST_F(RecordsetTest, seekGoesOnFromWhatItFound)
{
    Recordset rs = db.OpenRecordset("PEOPLE", RecordsetType::Table);
    rs.Index("ByName");
    seek(rs, "=", ValueView::text("BEA"));
    ASSERT_FALSE(rs.NoMatch());
    rs.MoveNext();
    EXPECT_EQ(shown(rs.value(1)), "Carl");
    rs.MoveNext();
    EXPECT_TRUE(rs.Eof());
}

TEST_F(RecordsetTest, afterAFruitlessSeekThereIsNoCurrentRecord)
{
    Recordset rs = db.OpenRecordset("PEOPLE", RecordsetType::Table);
    rs.Index("PrimaryKey");
    seek(rs, "=", ValueView::integer(9));
    EXPECT_TRUE(rs.NoMatch());
    EXPECT_FALSE(rs.Eof());
    EXPECT_EQ(errorOf([&] { (void)rs.value(0); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.MoveNext(); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.Delete(); }), 3021);
    rs.MoveFirst();
    EXPECT_EQ(shown(rs.value(0)), "1");
}

TEST_F(RecordsetTest, seekKeysAreTurnedIntoTheKindOfTheirField)
{
    Recordset rs = db.OpenRecordset("PEOPLE", RecordsetType::Table);
    rs.Index("PrimaryKey");
    seek(rs, "=", ValueView::text("2"));
    EXPECT_FALSE(rs.NoMatch());
    EXPECT_EQ(errorOf([&] { seek(rs, "=", ValueView::text("two")); }), 3421);
    EXPECT_EQ(errorOf([&] { seek(rs, "==", ValueView::integer(2)); }), 3001);
    EXPECT_EQ(errorOf([&] { rs.Seek("=", {}); }), 3001);
    const ValueView two[] = {ValueView::integer(1), ValueView::integer(2)};
    EXPECT_EQ(errorOf([&] { rs.Seek("=", two); }), 3001);
}

TEST_F(RecordsetTest, seekNeedsAnIndexAndATable)
{
    Recordset rs = db.OpenRecordset("PEOPLE", RecordsetType::Table);
    EXPECT_EQ(errorOf([&] { seek(rs, "=", ValueView::integer(1)); }), 3019);
    Recordset dynaset = db.OpenRecordset("PEOPLE");
    EXPECT_EQ(errorOf([&] { seek(dynaset, "=", ValueView::integer(1)); }), 3251);
}

TEST_F(RecordsetTest, recordsOfOtherWritersAreSeenAtTheNextMove)
{
    Recordset reader = db.OpenRecordset("PEOPLE");
    reader.MoveLast();
    Database other = open();
    Recordset writer = other.OpenRecordset("PEOPLE");
    addPerson(writer, 8, "Eve", 8);
    reader.MoveNext();
    EXPECT_EQ(shown(reader.value(1)), "Eve");
}

TEST_F(RecordsetTest, aSnapshotIsForReading)
{
    Recordset rs = db.OpenRecordset("PEOPLE", RecordsetType::Snapshot);
    EXPECT_EQ(errorOf([&] { rs.AddNew(); }), 3027);
    rs.MoveLast();
    EXPECT_EQ(rs.RecordCount(), 3);
}

TEST_F(RecordsetTest, fieldsOutsideTheRecordAre3265)
{
    Recordset rs = db.OpenRecordset("PEOPLE");
    EXPECT_EQ(errorOf([&] { (void)rs.value(3); }), 3265);
    EXPECT_EQ(errorOf([&] { (void)rs.value(-1); }), 3265);
    EXPECT_EQ(errorOf([&] { rs.Fields()["NOTHING"]; }), 3265);
    EXPECT_EQ(errorOf([&] { rs.Fields().Append(Field()); }), 3251);
    EXPECT_EQ(errorOf([&] { (void)db.TableDefs()["PEOPLE"].Fields()[0].Value(); }), 3251);
}

}  // namespace
}  // namespace velnor::test
