// Records: added, changed, removed, counted and walked.
#include <map>
#include <random>

#include "tests/access/conformance/driver_conformance.h"

namespace velnor::test {

using ::testing::ElementsAre;

TEST_P(DriverConformance, recordsAreAddedChangedAndDeleted)
{
    if (!format().deletes)
        return expectDeleteRefused();
    makeNotes();
    {
        Recordset rs = records();
        addNote(rs, 1, "one", "first");
        addNote(rs, 2, "two");
        addNote(rs, 3, "three", "third");
        rs.MoveFirst();
        rs.MoveNext();
        rs.Edit();
        rs.setValue(1, ValueView::text("TWO"));
        rs.Update();
        rs.MoveFirst();
        rs.Delete();
        EXPECT_EQ(rs.RecordCount(), 2);
        rs.MoveNext();
        EXPECT_EQ(shown(rs.value(1)), "TWO");
    }
    reopen();
    EXPECT_EQ(db.TableDefs()[kTable].RecordCount(), 2);
    EXPECT_THAT(column(1), ElementsAre("TWO", "three"));
    EXPECT_THAT(column(2), ElementsAre("Null", "third"));
}

TEST_P(DriverConformance, anEmptyTableHasNoRecord)
{
    makeNotes();
    Recordset rs = records();
    EXPECT_TRUE(rs.Bof());
    EXPECT_TRUE(rs.Eof());
    EXPECT_EQ(rs.RecordCount(), 0);
    EXPECT_EQ(errorOf([&] { rs.MoveFirst(); }), 3021);
    EXPECT_FALSE(rs.moveToOrdinal(0));
}

TEST_P(DriverConformance, walkingBackMeetsTheSameRecords)
{
    if (!format().deletes)
        return expectDeleteRefused();
    makeNotes();
    Recordset rs = records();
    for (int i = 0; i < 700; ++i)
        addNote(rs, i, std::string(static_cast<std::size_t>(i % 60), 'n'));
    rs.MoveFirst();
    for (int i = 0; i < 700; ++i) {
        if (i % 3 == 1)
            rs.Delete();
        rs.MoveNext();
    }
    std::vector<std::string> forth, back;
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext())
        forth.push_back(shown(rs.value(0)));
    for (rs.MoveLast(); !rs.Bof(); rs.MovePrevious())
        back.push_back(shown(rs.value(0)));
    EXPECT_EQ(rs.RecordCount(), static_cast<std::int64_t>(forth.size()));
    std::reverse(back.begin(), back.end());
    EXPECT_EQ(forth, back);
    EXPECT_EQ(forth.size(), 467u);
    for (const std::size_t n : {0u, 1u, 100u, 466u, 233u}) {
        ASSERT_TRUE(rs.moveToOrdinal(static_cast<std::int64_t>(n)));
        EXPECT_EQ(shown(rs.value(0)), forth[n]);
    }
    EXPECT_FALSE(rs.moveToOrdinal(467));
}

TEST_P(DriverConformance, theEndsAreCrossedAndComeBackFrom)
{
    makeNotes();
    Recordset rs = records();
    addNote(rs, 1, "one");
    addNote(rs, 2, "two");
    rs.MoveFirst();
    rs.MovePrevious();
    EXPECT_TRUE(rs.Bof());
    rs.MoveNext();
    EXPECT_EQ(shown(rs.value(0)), "1");
    rs.MoveLast();
    rs.MoveNext();
    EXPECT_TRUE(rs.Eof());
    rs.MovePrevious();
    EXPECT_EQ(shown(rs.value(0)), "2");
}

TEST_P(DriverConformance, aCursorSeesTheRowsOfAnotherWriter)
{
    makeNotes();
    Recordset writer = records();
    addNote(writer, 1, "one");
    Database other = open();
    Recordset reader = other.OpenRecordset(kTable, RecordsetType::Table);
    reader.MoveLast();
    addNote(writer, 2, "two", "note");
    reader.MoveNext();
    ASSERT_FALSE(reader.Eof());
    EXPECT_EQ(shown(reader.value(1)), "two");
    EXPECT_EQ(shown(reader.value(2)), "note");
    if (!format().edits)
        return;
    writer.MoveFirst();
    writer.Edit();
    writer.setValue(1, ValueView::text("ONE"));
    writer.Update();
    reader.MoveFirst();
    EXPECT_EQ(shown(reader.value(1)), "ONE");
    if (!format().deletes)
        return;
    writer.Delete();
    reader.MoveFirst();
    EXPECT_EQ(shown(reader.value(1)), "two");
    EXPECT_EQ(reader.RecordCount(), 1);
}

TEST_P(DriverConformance, recordsThatGrowKeepTheirPlaceAndTheirBookmarks)
{
    if (!format().edits)
        return expectEditRefused();
    makeNotes();
    Recordset rs = records();
    for (int i = 0; i < 300; ++i)
        addNote(rs, i, "x");
    std::vector<Recordset::Bookmark> marks;
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext())
        marks.push_back(rs.bookmark());
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) {
        rs.Edit();
        rs.setValue(1, ValueView::text(std::string(60, 'y')));
        rs.Update();
        ASSERT_EQ(shown(rs.value(1)), std::string(60, 'y'));
    }
    ASSERT_EQ(rs.RecordCount(), 300);
    for (int i = 0; i < 300; ++i) {
        ASSERT_TRUE(rs.moveToBookmark(marks[static_cast<std::size_t>(i)]));
        ASSERT_EQ(shown(rs.value(0)), std::to_string(i));
        ASSERT_EQ(rs.value(1).asText().size(), 60u);
    }
}

TEST_P(DriverConformance, aTableEmptiedTakesNewRecords)
{
    if (!format().deletes)
        return expectDeleteRefused();
    makeNotes();
    Recordset rs = records();
    for (int i = 0; i < 200; ++i)
        addNote(rs, i, "old", "old note");
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext())
        rs.Delete();
    EXPECT_EQ(rs.RecordCount(), 0);
    addNote(rs, 7, "new", "new note");
    rs.Close();
    reopen();
    EXPECT_THAT(column(0), ElementsAre("7"));
    EXPECT_THAT(column(2), ElementsAre("new note"));
}

TEST_P(DriverConformance, aRefusedRecordLeavesNoTrace)
{
    makeNotes();
    Recordset rs = records();
    addNote(rs, 1, "one");
    rs.AddNew();
    EXPECT_EQ(errorOf([&] { rs.setValue(1, ValueView::text(std::string(61, 'x'))); }), 3163);
    EXPECT_EQ(errorOf([&] { rs.setValue(0, ValueView::text("no number")); }), 3421);
    rs.CancelUpdate();
    EXPECT_EQ(rs.RecordCount(), 1);
}

TEST_P(DriverConformance, aReadOnlyDatabaseRefusesToWrite)
{
    makeNotes();
    {
        Recordset rs = records();
        addNote(rs, 1, "one");
    }
    db.Close();
    db = open(true);
    EXPECT_FALSE(db.Updatable());
    Recordset rs = records();
    EXPECT_EQ(shown(rs.value(1)), "one");
    EXPECT_EQ(errorOf([&] { rs.AddNew(); }), 3027);
    EXPECT_EQ(errorOf([&] { rs.Edit(); }), 3027);
    EXPECT_EQ(errorOf([&] { rs.Delete(); }), 3027);
    EXPECT_EQ(errorOf([&] { db.TableDefs().Delete(listed(kTable)); }), 3027);
}

TEST_P(DriverConformance, randomWorkEndsAsTheSameWorkOnAMap)
{
    if (!format().edits)
        return expectEditRefused();
    makeNotes();
    std::mt19937 random(11);
    std::map<int, std::pair<std::string, std::string>> expected;
    {
        Recordset rs = records();
        std::map<int, Recordset::Bookmark> marks;
        int next = 0;
        for (int step = 0; step < 1500; ++step) {
            const std::string name(1 + random() % 60, static_cast<char>('a' + step % 26));
            const std::string note(random() % 4 ? 0 : memoLength(1 + random() % 6000), 'm');
            if (expected.empty() || random() % 3 == 0) {
                addNote(rs, next, name, note);
                marks[next] = rs.lastModified();
                expected[next++] = {name, note};
                continue;
            }
            auto chosen = expected.lower_bound(static_cast<int>(random()) % next);
            if (chosen == expected.end())
                chosen = expected.begin();
            ASSERT_TRUE(rs.moveToBookmark(marks.at(chosen->first)));
            ASSERT_EQ(shown(rs.value(0)), std::to_string(chosen->first));
            if (format().deletes && random() % 4 == 0) {
                rs.Delete();
                marks.erase(chosen->first);
                expected.erase(chosen);
                continue;
            }
            rs.Edit();
            rs.setValue(1, ValueView::text(name));
            rs.setValue(2, note.empty() ? ValueView::null() : ValueView::text(note));
            rs.Update();
            chosen->second = {name, note};
        }
        ASSERT_EQ(rs.RecordCount(), static_cast<std::int64_t>(expected.size()));
    }
    reopen();
    std::map<int, std::pair<std::string, std::string>> found;
    Recordset rs = records();
    for (; !rs.Eof(); rs.MoveNext())
        found[std::stoi(shown(rs.value(0)))] = {
            shown(rs.value(1)), rs.value(2).isNull() ? "" : std::string(rs.value(2).asText())};
    EXPECT_TRUE(found == expected);
}

}  // namespace velnor::test
