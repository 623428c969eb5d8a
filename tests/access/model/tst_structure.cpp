// Tables, fields and indexes: drafts, and changes of what is stored.
#include "tests/access/model/model_fixture.h"

namespace velnor::test {
namespace {

using ::testing::ElementsAre;

class StructureTest : public ModelTest {
protected:
    StructureTest() : db(open()) {}
    std::vector<std::string> fieldNames(TableDef& table)
    {
        std::vector<std::string> names;
        for (Field& field : table.Fields())
            names.push_back(field.Name());
        return names;
    }
    Database db;
};

TEST_F(StructureTest, aDraftReachesTheFileWhenItIsAppended)
{
    TableDef table = db.CreateTableDef("T");
    table.Fields().Append(table.CreateField("A", 10, 20));
    EXPECT_EQ(table.RecordCount(), 0);
    EXPECT_FALSE(db.TableDefs().contains("T"));
    db.TableDefs().Append(table);
    EXPECT_TRUE(db.TableDefs().contains("t"));
    EXPECT_EQ(open(true).TableDefs()["T"].Fields()["a"].Size(), 20);
}

TEST_F(StructureTest, indexesMayFollowTheTable)
{
    TableDef table = db.CreateTableDef("T");
    table.Fields().Append(table.CreateField("A", 4));
    db.TableDefs().Append(table);
    Index index = table.CreateIndex("ByA");
    index.Unique(true);
    index.Fields().Append(index.CreateField("A"));
    index.descending("a", true);
    table.Indexes().Append(index);

    Database other = open(true);
    Index& read = other.TableDefs()["T"].Indexes()["ByA"];
    EXPECT_TRUE(read.Unique());
    EXPECT_FALSE(read.Primary());
    ASSERT_EQ(read.Fields().Count(), 1);
    EXPECT_EQ(read.Fields()[0].Name(), "A");
    EXPECT_TRUE(read.def().fields.at(0).descending);
}

TEST_F(StructureTest, sizesOfFixedTypesAreFilledIn)
{
    TableDef table = db.CreateTableDef("T");
    EXPECT_EQ(table.CreateField("A", 4).Size(), 4);
    EXPECT_EQ(table.CreateField("A", 7).Size(), 8);
    EXPECT_EQ(table.CreateField("A", 12).Size(), 0);
    EXPECT_EQ(table.CreateField("A", 10).Size(), 255);
    EXPECT_EQ(errorOf([&] { table.CreateField("A", 10, 256); }), 3001);
    EXPECT_EQ(errorOf([&] { table.CreateField("A", 13); }), 3001);
}

TEST_F(StructureTest, namesAreChecked)
{
    TableDef table = db.CreateTableDef("T");
    EXPECT_EQ(errorOf([&] { table.CreateField("", 4); }), 3008);
    EXPECT_EQ(errorOf([&] { table.CreateField(std::string(65, 'x'), 4); }), 3008);
    EXPECT_EQ(errorOf([&] { table.CreateField(std::string(64, 'x'), 4); }), 0);
    EXPECT_EQ(errorOf([&] { table.CreateField("a\nb", 4); }), 3008);
    table.Fields().Append(table.CreateField("A", 4));
    EXPECT_EQ(errorOf([&] { table.Fields().Append(table.CreateField("a", 4)); }), 3191);
    EXPECT_EQ(errorOf([&] { db.TableDefs().Append(db.CreateTableDef("NOTHING")); }), 3001);
    TableDef nameless = db.CreateTableDef("");
    nameless.Fields().Append(nameless.CreateField("A", 4));
    EXPECT_EQ(errorOf([&] { db.TableDefs().Append(nameless); }), 3125);
    db.TableDefs().Append(table);
    TableDef twin = db.CreateTableDef("t");
    twin.Fields().Append(twin.CreateField("A", 4));
    EXPECT_EQ(errorOf([&] { db.TableDefs().Append(twin); }), 3010);
}

TEST_F(StructureTest, aFormatThatCutsNamesRefusesTwoThatBecomeEqual)
{
    Database folder = workspace.OpenDatabase("C:\\folder", false, false, "MemoryFolder;");
    TableDef table = folder.CreateTableDef("T");
    Field longName = table.CreateField("CUSTOMERNAME1", 4);
    EXPECT_EQ(longName.Name(), "CUSTOMERNA");
    table.Fields().Append(longName);
    EXPECT_EQ(errorOf([&] { table.Fields().Append(table.CreateField("CUSTOMERNAME2", 4)); }), 3191);
}

TEST_F(StructureTest, tooManyFieldsAre3190)
{
    driver.fileTraits.maxFields = 2;
    TableDef table = db.CreateTableDef("T");
    for (const char* name : {"A", "B", "C"})
        table.Fields().Append(table.CreateField(name, 4));
    EXPECT_EQ(errorOf([&] { db.TableDefs().Append(table); }), 3190);
}

TEST_F(StructureTest, indexesAreChecked)
{
    makePeople(db);
    TableDef& table = db.TableDefs()["PEOPLE"];
    EXPECT_EQ(errorOf([&] { table.Indexes().Append(table.CreateIndex("Empty")); }), 3018);
    Index stranger = table.CreateIndex("X");
    stranger.Fields().Append(stranger.CreateField("NOBODY"));
    EXPECT_EQ(errorOf([&] { table.Indexes().Append(stranger); }), 3018);
    Index second = table.CreateIndex("Second");
    second.Primary(true);
    second.Fields().Append(second.CreateField("AGE"));
    EXPECT_EQ(errorOf([&] { table.Indexes().Append(second); }), 3367);
    Index twin = table.CreateIndex("byname");
    twin.Fields().Append(twin.CreateField("AGE"));
    EXPECT_EQ(errorOf([&] { table.Indexes().Append(twin); }), 3367);
}

TEST_F(StructureTest, aUniqueIndexOnEqualValuesIs3022)
{
    fillPeople(db);
    {
        Recordset rs = db.OpenRecordset("PEOPLE");
        addPerson(rs, 4, "Ann", 1);
    }
    TableDef& table = db.TableDefs()["PEOPLE"];
    Index names = table.CreateIndex("Names");
    names.Unique(true);
    names.Fields().Append(names.CreateField("NAME"));
    EXPECT_EQ(errorOf([&] { table.Indexes().Append(names); }), 3022);
    EXPECT_EQ(table.Indexes().Count(), 2);
}

TEST_F(StructureTest, fieldsComeAndGoInAStoredTable)
{
    fillPeople(db);
    TableDef& table = db.TableDefs()["PEOPLE"];
    table.Fields().Append(table.CreateField("CITY", 10, 30));
    EXPECT_THAT(fieldNames(table), ElementsAre("ID", "NAME", "AGE", "CITY"));
    table.Fields().Delete("age");
    EXPECT_THAT(fieldNames(table), ElementsAre("ID", "NAME", "CITY"));
    EXPECT_EQ(errorOf([&] { table.Fields().Delete("AGE"); }), 3265);
    EXPECT_EQ(errorOf([&] { table.Fields().Delete("NAME"); }), 3018);
    EXPECT_EQ(table.Fields().Count(), 3);
    table.Indexes().Delete("ByName");
    table.Fields().Delete("NAME");
    Recordset rs = db.OpenRecordset("PEOPLE");
    EXPECT_EQ(rs.fieldCount(), 2);
    EXPECT_EQ(shown(rs.value(0)), "3");
    EXPECT_TRUE(rs.value(1).isNull());
}

TEST_F(StructureTest, theStructureOfATableInUseStays)
{
    fillPeople(db);
    TableDef& table = db.TableDefs()["PEOPLE"];
    Database reader = open(true);
    Recordset rs = reader.OpenRecordset("people");
    EXPECT_EQ(errorOf([&] { table.Fields().Append(table.CreateField("X", 4)); }), 3045);
    EXPECT_EQ(errorOf([&] { table.Fields().Delete("AGE"); }), 3045);
    EXPECT_EQ(errorOf([&] { table.Indexes().Delete("ByName"); }), 3045);
    EXPECT_EQ(errorOf([&] { db.TableDefs().Delete("PEOPLE"); }), 3045);
    rs.Close();
    db.TableDefs().Delete("PEOPLE");
    EXPECT_FALSE(db.TableDefs().contains("PEOPLE"));
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("PEOPLE"); }), 3078);
}

TEST_F(StructureTest, refreshShowsWhatOthersDid)
{
    Database other = open();
    EXPECT_EQ(other.TableDefs().Count(), 0);
    makePeople(db);
    EXPECT_EQ(other.TableDefs().Count(), 0);
    other.TableDefs().Refresh();
    ASSERT_EQ(other.TableDefs().Count(), 1);
    TableDef& seen = other.TableDefs()[0];
    EXPECT_EQ(seen.Fields().Count(), 3);
    db.TableDefs()["PEOPLE"].Fields().Append(seen.CreateField("MORE", 4));
    seen.Fields().Refresh();
    EXPECT_EQ(seen.Fields().Count(), 4);
}

TEST_F(StructureTest, itemsOutsideACollectionAre3265)
{
    makePeople(db);
    EXPECT_EQ(errorOf([&] { db.TableDefs()["NOBODY"]; }), 3265);
    EXPECT_EQ(errorOf([&] { db.TableDefs()[1]; }), 3265);
    EXPECT_EQ(errorOf([&] { db.TableDefs()[-1]; }), 3265);
    EXPECT_EQ(errorOf([&] { db.TableDefs().Delete("NOBODY"); }), 3265);
}

TEST_F(StructureTest, aTableDefOutlivesItsDatabaseWithAnError)
{
    makePeople(db);
    TableDef table = db.TableDefs()["PEOPLE"];
    db.Close();
    EXPECT_EQ(table.Name(), "PEOPLE");
    EXPECT_EQ(errorOf([&] { table.RecordCount(); }), 3420);
}

}  // namespace
}  // namespace velnor::test
