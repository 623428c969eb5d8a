// Indexes: order, Seek, unique keys. Formats without indexes skip these cases.
#include <algorithm>

#include "tests/access/conformance/driver_conformance.h"

namespace velnor::test {

using ::testing::ElementsAre;

namespace {

/// The field of what Seek finds, or "none".
std::string found(Recordset& rs, std::string_view how, ValueView key, int field = 0)
{
    rs.Seek(how, {&key, 1});
    return rs.NoMatch() ? "none" : shown(rs.value(field));
}

}  // namespace

TEST_P(DriverConformance, anIndexGivesOrderAndSeekInBothDirections)
{
    if (!format().indexes)
        return expectIndexRefused();
    std::vector<velnor::Index> indexes{indexOn("ByName", {{"NAME"}})};
    if (format().fallingIndexes)
        indexes.push_back(indexOn("Down", {{"ID", true}}));
    makeNotes(indexes);
    {
        Recordset rs = records();
        for (const int id : {30, 10, 50, 20, 40})
            addNote(rs, id, std::string(1, static_cast<char>('f' - id / 10)));
    }
    reopen();
    EXPECT_THAT(column(0, primaryKey()), ElementsAre("10", "20", "30", "40", "50"));
    if (format().fallingIndexes)
        EXPECT_THAT(column(0, "Down"), ElementsAre("50", "40", "30", "20", "10"));
    EXPECT_THAT(column(1, "ByName"), ElementsAre("a", "b", "c", "d", "e"));
    Recordset rs = records();
    rs.Index(primaryKey());
    EXPECT_EQ(found(rs, "=", ValueView::integer(30)), "30");
    EXPECT_EQ(found(rs, "=", ValueView::integer(31)), "none");
    EXPECT_EQ(found(rs, ">=", ValueView::integer(31)), "40");
    EXPECT_EQ(found(rs, ">", ValueView::integer(40)), "50");
    EXPECT_EQ(found(rs, "<=", ValueView::integer(29)), "20");
    EXPECT_EQ(found(rs, "<", ValueView::integer(20)), "10");
    EXPECT_EQ(found(rs, "<", ValueView::integer(10)), "none");
    EXPECT_EQ(found(rs, ">", ValueView::integer(50)), "none");
    rs.Index("ByName");
    EXPECT_EQ(found(rs, "=", ValueView::text("C"), 1), format().keysBlindToCase ? "c" : "none");
    EXPECT_EQ(found(rs, "=", ValueView::text("c"), 1), "c");
    rs.MovePrevious();
    EXPECT_EQ(shown(rs.value(1)), "b");
}

TEST_P(DriverConformance, aDuplicateKeyIs3022AndLeavesNoTrace)
{
    if (!format().indexes)
        return expectIndexRefused();
    makeNotes({indexOn("ByName", {{"NAME"}}, true)});
    Recordset rs = records();
    addNote(rs, 1, "one", "note");
    addNote(rs, 2, "two");
    EXPECT_EQ(errorOf([&] { addNote(rs, 1, "other", "lost"); }), 3022);
    rs.CancelUpdate();
    EXPECT_EQ(errorOf([&] { addNote(rs, 3, "one", "lost"); }), 3022);
    rs.CancelUpdate();
    if (format().keysBlindToCase) {
        EXPECT_EQ(errorOf([&] { addNote(rs, 3, "ONE", "lost"); }), 3022);
        rs.CancelUpdate();
    }
    rs.MoveFirst();
    rs.Edit();
    rs.setValue(0, ValueView::integer(2));
    EXPECT_EQ(errorOf([&] { rs.Update(); }), 3022);
    rs.CancelUpdate();
    EXPECT_EQ(rs.RecordCount(), 2);
    rs.Edit();  // a record's own key is no duplicate
    rs.setValue(0, ValueView::integer(1));
    rs.setValue(1, ValueView::text("One"));
    rs.Update();
    rs.Close();
    EXPECT_THAT(column(1, "ByName"), ElementsAre("One", "two"));
    Recordset nameless = records();
    nameless.AddNew();
    EXPECT_EQ(errorOf([&] { nameless.Update(); }), format().primaryKeys ? 3058 : 0);
}

TEST_P(DriverConformance, keysOfSeveralFieldsAreFoundByTheirFirst)
{
    if (!format().indexes)
        return expectIndexRefused();
    const std::string place = format().needsKey ? primaryKey() : "Place";
    velnor::Index index = indexOn(place, {{"CITY"}, {"NUMBER"}});
    index.Primary(format().needsKey);
    makeTable({fieldDef("CITY", FieldType::Text, 20), fieldDef("NUMBER", FieldType::Long)}, kTable,
              {index});
    Recordset rs = records();
    for (const char* city : {"Rome", "Bonn", "Oslo"})
        for (const int number : {3, 1, 2}) {
            rs.AddNew();
            rs.setValue(0, ValueView::text(city));
            rs.setValue(1, ValueView::integer(number));
            rs.Update();
        }
    rs.Index(place);
    EXPECT_EQ(found(rs, "=", ValueView::text("Oslo"), 1), "1");
    const ValueView both[] = {ValueView::text("Bonn"), ValueView::integer(3)};
    rs.Seek("=", both);
    ASSERT_FALSE(rs.NoMatch());
    rs.MoveNext();
    EXPECT_EQ(shown(rs.value(0)), "Oslo");
    EXPECT_EQ(shown(rs.value(1)), "1");
    EXPECT_EQ(found(rs, ">", ValueView::text("Oslo"), 0), "Rome");
    EXPECT_EQ(found(rs, "<=", ValueView::text("Oslo"), 1), "3");
}

TEST_P(DriverConformance, anIndexMadeLaterHoldsWhatWasThere)
{
    if (!format().changesIndexes)
        return expectIndexRefused();
    makeNotes();
    {
        Recordset rs = records();
        for (int i = 0; i < 500; ++i)
            addNote(rs, i, std::string("n").append(std::to_string(i * 7919 % 500)));
        addNote(rs, 500, "n1");
    }
    TableDef& table = db.TableDefs()[kTable];
    EXPECT_EQ(errorOf([&] { table.Indexes().Append(indexOn("Once", {{"NAME"}}, true)); }), 3022);
    table.Indexes().Append(indexOn("ByName", {{"NAME"}}));
    reopen();
    std::vector<std::string> names = column(1, "ByName");
    EXPECT_EQ(names.size(), 501u);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    db.TableDefs()[kTable].Indexes().Delete("ByName");
    reopen();
    EXPECT_FALSE(db.TableDefs()[kTable].Indexes().contains("ByName"));
    Recordset rs = records();
    EXPECT_EQ(errorOf([&] { rs.Index("ByName"); }), 3015);
}

TEST_P(DriverConformance, recordsAreDeletedOnAWalkByIndex)
{
    if (!format().indexes)
        return expectIndexRefused();
    makeNotes();
    Recordset rs = records();
    for (int i = 0; i < 1000; ++i)
        addNote(rs, i * 7 % 1000, "n");
    rs.Index(primaryKey());
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext())
        if (rs.value(0).asInteger() % 2 == 1)
            rs.Delete();
    rs.Close();
    reopen();
    const std::vector<std::string> left = column(0, primaryKey());
    ASSERT_EQ(left.size(), 500u);
    for (std::size_t i = 0; i < left.size(); ++i)
        ASSERT_EQ(left[i], std::to_string(2 * i));
}

TEST_P(DriverConformance, aKeyThatChangesMovesInTheOrder)
{
    if (!format().indexes)
        return expectIndexRefused();
    makeNotes();
    Recordset rs = records();
    for (const int id : {1, 2, 3})
        addNote(rs, id, "n");
    rs.Index(primaryKey());
    rs.MoveFirst();
    rs.Edit();
    rs.setValue(0, ValueView::integer(9));
    rs.Update();
    EXPECT_EQ(shown(rs.value(0)), "9");
    rs.MovePrevious();
    EXPECT_EQ(shown(rs.value(0)), "3");
    rs.Close();
    EXPECT_THAT(column(0, primaryKey()), ElementsAre("2", "3", "9"));
}

}  // namespace velnor::test
