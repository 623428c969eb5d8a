// Recordsets over statements: their kinds, what writers beside them do, several databases,
// cancelling.
#include "tests/access/sql/sql_fixture.h"

using namespace velnor;
using namespace velnor::test;
using ::testing::ElementsAre;

class SqlRecordset : public SqlTest {};

TEST_F(SqlRecordset, dynasetCountsWhatItHasMet_untilMoveLast)
{
    Recordset rs = db.OpenRecordset("SELECT ID FROM ORDERS WHERE ID > 1 ORDER BY ID");
    EXPECT_EQ(rs.RecordCount(), 1);
    rs.MoveLast();
    EXPECT_EQ(rs.RecordCount(), 4);
    EXPECT_EQ(shown(rs.value(0)), "5");
    rs.MovePrevious();
    EXPECT_EQ(shown(rs.value(0)), "4");
    EXPECT_DOUBLE_EQ(rs.PercentPosition(), 100.0 * 2 / 3);
    rs.MoveFirst();
    rs.Move(2);
    EXPECT_EQ(shown(rs.value(0)), "4");
    const auto mark = rs.bookmark();
    rs.MoveFirst();
    EXPECT_TRUE(rs.moveToBookmark(mark));
    EXPECT_EQ(shown(rs.value(0)), "4");
    EXPECT_TRUE(rs.moveToOrdinal(1));
    EXPECT_EQ(shown(rs.value(0)), "3");
    EXPECT_FALSE(rs.moveToOrdinal(4));
}

TEST_F(SqlRecordset, answersAreForReadingOnly)
{
    Recordset rs = db.OpenRecordset("SELECT ID FROM ORDERS");
    EXPECT_EQ(errorOf([&] { rs.AddNew(); }), 3027);
    EXPECT_EQ(errorOf([&] { rs.Edit(); }), 3027);
    EXPECT_EQ(errorOf([&] { rs.Delete(); }), 3027);
    EXPECT_EQ(errorOf([&] { rs.Index("PrimaryKey"); }), 3251);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("SELECT ID FROM ORDERS", RecordsetType::Table); }),
              3251);
}

TEST_F(SqlRecordset, emptyAnswerStandsNowhere)
{
    Recordset rs = db.OpenRecordset("SELECT ID FROM ORDERS WHERE ID > 99");
    EXPECT_TRUE(rs.Bof());
    EXPECT_TRUE(rs.Eof());
    EXPECT_EQ(errorOf([&] { rs.MoveFirst(); }), 3021);
    EXPECT_EQ(errorOf([&] { rs.value(0); }), 3021);
}

TEST_F(SqlRecordset, forwardOnlyGoesForwards)
{
    EXPECT_THAT(answer("SELECT ID FROM ORDERS ORDER BY ID DESC", RecordsetType::ForwardOnly),
                ElementsAre("5", "4", "3", "2", "1"));
    Recordset rs = db.OpenRecordset("SELECT ID FROM ORDERS", RecordsetType::ForwardOnly);
    rs.MoveNext();
    EXPECT_EQ(errorOf([&] { rs.MovePrevious(); }), 3251);
    EXPECT_EQ(errorOf([&] { rs.MoveFirst(); }), 3251);
}

// A copy from a statement into the table it reads must not meet its own records.
TEST_F(SqlRecordset, recordsAddedLaterDoNotComeIn)
{
    Recordset rs = db.OpenRecordset("SELECT ID FROM ORDERS WHERE ID > 0");
    Recordset target = db.OpenRecordset("ORDERS");
    int copied = 0;
    for (; !rs.Eof() && copied < 100; rs.MoveNext(), ++copied) {
        target.AddNew();
        target.setValue(0, ValueView::integer(rs.value(0).asInteger() + 1000));
        target.Update();
    }
    EXPECT_EQ(copied, 5);
    EXPECT_EQ(db.TableDefs()["ORDERS"].RecordCount(), 10);
}

// Records of one table are kept by name, not copied: what is changed in them shows.
TEST_F(SqlRecordset, fieldsOfOneTableAreReadFromTheTable)
{
    Recordset rs = db.OpenRecordset("SELECT City, ID FROM ORDERS WHERE ID = 1");
    Recordset table = db.OpenRecordset("ORDERS");
    table.Edit();
    table.setValue(1, ValueView::text("Quito"));
    table.Update();
    rs.MoveFirst();
    EXPECT_EQ(shown(rs.value(0)), "Quito");
    Recordset made = db.OpenRecordset("SELECT City & '', ID FROM ORDERS WHERE ID = 1");
    table.Edit();
    table.setValue(1, ValueView::text("Oslo"));
    table.Update();
    EXPECT_EQ(shown(made.value(0)), "Quito");
}

TEST_F(SqlRecordset, deletedRecordHasNoValues)
{
    Recordset rs = db.OpenRecordset("SELECT ID FROM ORDERS ORDER BY ID");
    rs.MoveNext();
    Recordset table = db.OpenRecordset("ORDERS");
    table.MoveNext();
    table.Delete();
    rs.MoveFirst();
    rs.MoveNext();
    EXPECT_EQ(errorOf([&] { rs.value(0); }), 3167);
    rs.MoveNext();
    EXPECT_EQ(shown(rs.value(0)), "3");
}

// A store that was open for reading becomes writeable: the answer goes on over the new one.
TEST_F(SqlRecordset, answerLivesThroughAReopeningOfTheFile)
{
    db.Close();
    Database reader = open(true);
    Recordset rs = reader.OpenRecordset("SELECT ID FROM ORDERS ORDER BY ID");
    Recordset sums = reader.OpenRecordset("SELECT Region, Count(*) FROM ORDERS GROUP BY Region");
    Recordset forward = reader.OpenRecordset("SELECT ID FROM ORDERS", RecordsetType::ForwardOnly);
    rs.MoveNext();
    Database writer = open(false);
    EXPECT_EQ(shown(rs.value(0)), "2");
    rs.MoveNext();
    EXPECT_EQ(shown(rs.value(0)), "3");
    sums.MoveLast();
    EXPECT_EQ(shown(sums.value(0)), "West");
    EXPECT_EQ(errorOf([&] { forward.MoveNext(); }), 3021);
}

// A snapshot of a whole table keeps the names of its records: later ones do not come in, changed
// values show, a removed record says so.
TEST_F(SqlRecordset, snapshotOfATableSettlesWhichRecordsItHas)
{
    Recordset rs = db.OpenRecordset("ORDERS", RecordsetType::Snapshot);
    Recordset table = db.OpenRecordset("ORDERS");
    table.AddNew();
    table.setValue(0, ValueView::integer(90));
    table.Update();
    table.MoveNext();
    table.Delete();
    rs.MoveLast();
    EXPECT_EQ(rs.RecordCount(), 5);
    EXPECT_EQ(shown(rs.value(0)), "5");
    rs.moveToOrdinal(1);
    EXPECT_EQ(errorOf([&] { rs.value(0); }), 3167);
    EXPECT_EQ(errorOf([&] { rs.Edit(); }), 3027);
    EXPECT_EQ(errorOf([&] { rs.Index("PrimaryKey"); }), 3251);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("NONE", RecordsetType::Snapshot); }), 3078);
}

TEST_F(SqlRecordset, closedDatabaseClosesItsAnswers)
{
    Recordset rs = db.OpenRecordset("SELECT ID FROM ORDERS");
    db.Close();
    EXPECT_EQ(errorOf([&] { rs.MoveNext(); }), 3420);
}

TEST_F(SqlRecordset, tableOfARunningAnswerIsNotDropped)
{
    Recordset rs = db.OpenRecordset("SELECT ID FROM ORDERS");
    EXPECT_EQ(errorOf([&] { db.TableDefs().Delete("ORDERS"); }), 3045);
    rs.Close();
    EXPECT_EQ(errorOf([&] { db.TableDefs().Delete("ORDERS"); }), 0);
}

TEST_F(SqlRecordset, statementsReachIntoAttachedDatabases)
{
    const std::uint8_t marker[] = {'M'};
    files.put("C:\\other.mem", marker);
    Database other = workspace.OpenDatabase("C:\\other.mem", false, false, "Memory;");
    TableDef table = other.CreateTableDef("HEADS");
    table.Fields().Append(table.CreateField("Region", 10, 10));
    table.Fields().Append(table.CreateField("Bonus", 4));
    other.TableDefs().Append(table);
    Recordset rows = other.OpenRecordset("HEADS");
    rows.AddNew();
    rows.setValue(0, ValueView::text("east"));
    rows.setValue(1, ValueView::integer(7));
    rows.Update();
    rows.Close();
    db.attach("b", other);
    EXPECT_THAT(
        answer("SELECT o.ID, b.HEADS.Bonus FROM ORDERS AS o INNER JOIN b.[HEADS] ON o.Region = "
               "HEADS.Region ORDER BY o.ID"),
        ElementsAre("1|7", "3|7"));
    EXPECT_EQ(numberOf("SELECT * FROM c.[HEADS]"), 3078);
    EXPECT_EQ(errorOf([&] { db.attach("B", other); }), 3367);
    other.Close();
    EXPECT_EQ(numberOf("SELECT * FROM b.[HEADS]"), 3420);
}

TEST_F(SqlRecordset, filesOfAFolderAreTablesWithAndWithoutTheirExtension)
{
    Database folder = workspace.OpenDatabase("C:\\folder", false, false, "MemoryFolder;");
    TableDef table = folder.CreateTableDef("ITEMS");
    table.Fields().Append(table.CreateField("NAME", 10, 10));
    folder.TableDefs().Append(table);
    for (const char* statement :
         {"SELECT NAME FROM ITEMS", "SELECT NAME FROM [ITEMS.DBF]",
          "SELECT [ITEMS.DBF].[NAME] FROM [ITEMS.DBF]", "SELECT ITEMS.NAME FROM [ITEMS.DBF]",
          "SELECT ITEMS.NAME FROM ITEMS.DBF"}) {
        Recordset rs = folder.OpenRecordset(statement);
        EXPECT_EQ(rs.Fields()[0].Name(), "NAME") << statement;
    }
}

TEST_F(SqlRecordset, cancelledStatementStops)
{
    bool stop = false;
    int asked = 0;
    db.queryOptions({1u << 20, [&] { return ++asked > 3 && stop; }});
    const char* const kLong =
        "SELECT Count(*) FROM ORDERS a, ORDERS b, ORDERS c, ORDERS d, ORDERS e, "
        "ORDERS f, ORDERS g WHERE a.ID + b.ID + c.ID + d.ID + e.ID + f.ID > g.ID";
    stop = true;
    EXPECT_EQ(numberOf(kLong), 3059);
    stop = false;
    EXPECT_EQ(answer(kLong).size(), 1u);
}

// Exactness: values come back as they are in the table, whatever the statement compares with.
TEST_F(SqlRecordset, amountsAndDatesComeBackExactly)
{
    Recordset table = db.OpenRecordset("ORDERS");
    table.AddNew();
    table.setValue(0, ValueView::integer(50));
    table.setValue(4, ValueView::integer(1));
    table.setValue(3, ValueView::currency(9223372036854775807));
    table.setValue(5, ValueView::date(-1.25));
    table.Update();
    for (const auto type : {RecordsetType::Snapshot, RecordsetType::ForwardOnly}) {
        Recordset rs = db.OpenRecordset("SELECT Total, Day FROM ORDERS WHERE ID = 50", type);
        EXPECT_EQ(rs.value(0).asCurrency(), 9223372036854775807);
        EXPECT_EQ(rs.value(1).asDate(), -1.25);
    }
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Day = #12/29/1899 6:00:00#"),
                ElementsAre("50"));
    EXPECT_THAT(
        answer("SELECT ID FROM ORDERS WHERE Day > #12/29/1899# AND Day < #12/29/1899 7:00:00#"),
        ElementsAre("50"));
}
