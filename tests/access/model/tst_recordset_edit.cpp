// Adding, changing and removing records.
#include "tests/access/model/model_fixture.h"

namespace velnor::test {
namespace {

using ::testing::ElementsAre;

class EditTest : public ModelTest {
protected:
    EditTest() : db(open())
    {
        fillPeople(db);
        rs.emplace(db.OpenRecordset("PEOPLE"));
    }
    static FieldDef field(FieldType type, int size)
    {
        FieldDef def;
        def.name = "F";
        def.type = type;
        def.size = size;
        return def;
    }
    /// A table with one field of its own.
    Recordset openWith(const FieldDef& def)
    {
        TableDef table = db.CreateTableDef("ONE");
        table.Fields().Append(Field(def));
        db.TableDefs().Append(table);
        return db.OpenRecordset("ONE");
    }
    Database db;
    std::optional<Recordset> rs;
};

TEST_F(EditTest, whatIsNotBegunCannotBeFinished)
{
    EXPECT_EQ(errorOf([&] { rs->Update(); }), 3020);
    EXPECT_EQ(errorOf([&] { rs->CancelUpdate(); }), 3020);
    EXPECT_EQ(errorOf([&] { rs->setValue(1, ValueView::text("X")); }), 3020);
}

TEST_F(EditTest, anAddedRecordIsNotTheCurrentOne)
{
    rs->MoveNext();
    rs->AddNew();
    EXPECT_TRUE(rs->value(0).isNull());
    rs->setValue(0, ValueView::integer(4));
    rs->Fields()["NAME"].Value(ValueView::text("Dan"));
    EXPECT_EQ(shown(rs->value(1)), "Dan");
    rs->Update();
    EXPECT_EQ(shown(rs->value(1)), "Carl");
    EXPECT_TRUE(rs->moveToBookmark(rs->lastModified()));
    EXPECT_EQ(shown(rs->value(1)), "Dan");
    EXPECT_TRUE(rs->value(2).isNull());
}

TEST_F(EditTest, editChangesOnlyWhatWasAssigned)
{
    rs->MoveNext();
    rs->Edit();
    EXPECT_EQ(shown(rs->value(1)), "Carl");
    rs->setValue(1, ValueView::text("Charles"));
    EXPECT_EQ(shown(rs->value(1)), "Charles");
    EXPECT_EQ(shown(rs->value(2)), "10");
    rs->Update();
    EXPECT_EQ(shown(rs->value(1)), "Charles");
    EXPECT_EQ(rs->lastModified(), rs->bookmark());
    EXPECT_THAT(column(*rs, 1), ElementsAre("Ann", "Charles", "Bea"));
}

TEST_F(EditTest, editWithoutAnAssignmentChangesNothing)
{
    rs->Edit();
    rs->Update();
    EXPECT_THAT(column(*rs, 1), ElementsAre("Ann", "Carl", "Bea"));
    EXPECT_EQ(errorOf([&] { rs->Update(); }), 3020);
}

TEST_F(EditTest, aRecordWhoseKeyChangesStaysTheCurrentOne)
{
    Recordset table = db.OpenRecordset("PEOPLE", RecordsetType::Table);
    table.Index("ByName");
    table.Edit();
    table.setValue(1, ValueView::text("Zoe"));
    table.Update();
    EXPECT_EQ(shown(table.value(1)), "Zoe");
    table.MoveNext();
    EXPECT_TRUE(table.Eof());
}

TEST_F(EditTest, cancelAndMovesDropWhatWasAssigned)
{
    rs->AddNew();
    rs->setValue(0, ValueView::integer(5));
    rs->CancelUpdate();
    EXPECT_EQ(shown(rs->value(0)), "3");
    rs->Edit();
    rs->setValue(1, ValueView::text("Changed"));
    rs->MoveNext();
    EXPECT_EQ(errorOf([&] { rs->Update(); }), 3020);
    EXPECT_THAT(column(*rs, 1), ElementsAre("Ann", "Carl", "Bea"));
}

TEST_F(EditTest, deletedRecordsAreGoneUntilAMove)
{
    rs->MoveNext();
    rs->Delete();
    EXPECT_FALSE(rs->Eof());
    EXPECT_FALSE(rs->Bof());
    EXPECT_EQ(errorOf([&] { (void)rs->value(0); }), 3021);
    EXPECT_EQ(errorOf([&] { rs->Edit(); }), 3021);
    EXPECT_EQ(errorOf([&] { rs->Delete(); }), 3021);
    rs->MoveNext();
    EXPECT_EQ(shown(rs->value(1)), "Bea");
    EXPECT_EQ(rs->ordinal(), 1);
}

TEST_F(EditTest, deletingAllByMoveNextEmptiesTheTable)
{
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext())
        rs->Delete();
    EXPECT_TRUE(rs->Eof());
    EXPECT_EQ(rs->RecordCount(), 0);
    EXPECT_EQ(errorOf([&] { rs->MoveFirst(); }), 3021);
    EXPECT_TRUE(rs->Bof());
}

TEST_F(EditTest, aFormatWithoutDeletionRefusesIt)
{
    rs.reset();
    db.Close();
    driver.fileTraits.canDelete = false;
    db = open();
    Recordset table = db.OpenRecordset("PEOPLE");
    EXPECT_EQ(errorOf([&] { table.Delete(); }), 3617);
    EXPECT_EQ(shown(table.value(1)), "Ann");
}

TEST_F(EditTest, aDuplicateKeyIs3022AndTheRecordMayBeMended)
{
    rs->AddNew();
    rs->setValue(0, ValueView::integer(1));
    rs->setValue(1, ValueView::text("Dan"));
    EXPECT_EQ(errorOf([&] { rs->Update(); }), 3022);
    EXPECT_EQ(shown(rs->value(1)), "Dan");
    rs->setValue(0, ValueView::integer(4));
    rs->Update();
    EXPECT_THAT(column(*rs, 0), ElementsAre("3", "1", "2", "4"));
}

TEST_F(EditTest, aPrimaryKeyCannotBeNull)
{
    rs->AddNew();
    rs->setValue(1, ValueView::text("Nobody"));
    EXPECT_EQ(errorOf([&] { rs->Update(); }), 3058);
    rs->CancelUpdate();
    rs->Edit();
    rs->setValue(0, ValueView::null());
    EXPECT_EQ(errorOf([&] { rs->Update(); }), 3058);
}

TEST_F(EditTest, aRefusedValueLeavesTheFieldAsItWas)
{
    rs->Edit();
    EXPECT_EQ(errorOf([&] { rs->setValue(1, ValueView::text("eleven char")); }), 3163);
    EXPECT_EQ(errorOf([&] { rs->setValue(2, ValueView::integer(256)); }), 3421);
    EXPECT_EQ(shown(rs->value(1)), "Ann");
    EXPECT_EQ(shown(rs->value(2)), "30");
}

TEST_F(EditTest, aRequiredFieldNeedsAValue)
{
    FieldDef def = field(FieldType::Text, 9);
    def.required = true;
    Recordset one = openWith(def);
    one.AddNew();
    EXPECT_EQ(errorOf([&] { one.Update(); }), 3314);
    one.setValue(0, ValueView::text(""));
    one.Update();
    EXPECT_EQ(db.OpenRecordset("ONE", RecordsetType::Table).RecordCount(), 1);
}

TEST_F(EditTest, anEmptyTextIsRefusedWhereNoneMayBe)
{
    FieldDef def = field(FieldType::Text, 9);
    def.allowZeroLength = false;
    Recordset one = openWith(def);
    one.AddNew();
    one.setValue(0, ValueView::text(""));
    EXPECT_EQ(errorOf([&] { one.Update(); }), 3315);
    one.setValue(0, ValueView::null());
    one.Update();
}

TEST_F(EditTest, anAutonumberGivesItsValueItself)
{
    FieldDef def = field(FieldType::Long, 4);
    def.required = def.autonumber = true;
    Recordset one = openWith(def);
    for (int i = 0; i < 3; ++i) {
        one.AddNew();
        one.Update();
    }
    Recordset table = db.OpenRecordset("ONE", RecordsetType::Table);
    EXPECT_THAT(column(table, 0), ElementsAre("1", "2", "3"));
}

TEST_F(EditTest, defaultsFillANewRecord)
{
    FieldDef def = field(FieldType::Long, 4);
    def.required = true;
    def.defaultValue = "7";
    Recordset one = openWith(def);
    one.AddNew();
    EXPECT_EQ(shown(one.value(0)), "7");
    one.Update();
}

TEST_F(EditTest, readersCannotWrite)
{
    Database reader = open(true);
    Recordset records = reader.OpenRecordset("PEOPLE");
    EXPECT_EQ(errorOf([&] { records.AddNew(); }), 3027);
    EXPECT_EQ(errorOf([&] { records.Edit(); }), 3027);
    EXPECT_EQ(errorOf([&] { records.Delete(); }), 3027);
}

TEST_F(EditTest, aFieldMayBeAssignedFromAnotherOfTheSameRecord)
{
    rs->Edit();
    rs->setValue(1, ValueView::text("0123456789"));
    rs->setValue(1, ValueView::text(rs->value(1).asText().substr(3)));
    EXPECT_EQ(shown(rs->value(1)), "3456789");
}

}  // namespace
}  // namespace velnor::test
