// Opening, sharing and closing of databases, and what is done to whole files.
#include "tests/access/model/model_fixture.h"

namespace velnor::test {
namespace {

class DatabaseTest : public ModelTest {
protected:
    int errorOfOpening(std::string_view name, std::string_view connect = "Memory;",
                       bool readOnly = true, bool exclusive = false)
    {
        return errorOf([&] { workspace.OpenDatabase(name, exclusive, readOnly, connect); });
    }
};

TEST_F(DatabaseTest, whatIsNotThereHasItsNumber)
{
    EXPECT_EQ(errorOfOpening("C:\\none.mem"), 3024);
    EXPECT_EQ(errorOfOpening("C:\\no folder\\data.mem"), 3044);
    EXPECT_EQ(errorOfOpening("Q:\\data.mem"), 3044);
    EXPECT_EQ(errorOfOpening("C:\\folder"), 3024);  // a folder is no file
    EXPECT_EQ(errorOfOpening(kPath, "MemoryFolder;"), 3044);
    EXPECT_EQ(errorOfOpening(kPath, "Unheard Of 7.0;"), 3170);
}

TEST_F(DatabaseTest, remembersItsNameAndConnect)
{
    Database db = workspace.OpenDatabase(kPath, false, true, "Memory;codepage=437");
    EXPECT_EQ(db.Name(), kPath);
    EXPECT_EQ(db.Connect(), "Memory;codepage=437");
    EXPECT_FALSE(db.Updatable());
}

TEST_F(DatabaseTest, databasesOfOneFileShareItsStore)
{
    Database one = open();
    Database two = workspace.OpenDatabase("c:\\\\DATA.mem", false, false, "Memory;");
    EXPECT_EQ(driver.opened, 1);
    fillPeople(one);
    EXPECT_EQ(two.OpenRecordset("people", RecordsetType::Table).RecordCount(), 3);
}

TEST_F(DatabaseTest, aReaderIsCarriedOverWhenAWriterComes)
{
    {
        Database db = open();
        fillPeople(db);
        db.Close();
    }
    Database reader = open(true);
    Recordset rs = reader.OpenRecordset("PEOPLE");
    rs.MoveNext();
    ASSERT_EQ(shown(rs.value(1)), "Carl");
    Recordset behind = reader.OpenRecordset("PEOPLE");
    while (!behind.Eof())
        behind.MoveNext();

    Database writer = open();
    EXPECT_TRUE(writer.Updatable());
    EXPECT_FALSE(reader.Updatable());
    EXPECT_EQ(shown(rs.value(1)), "Carl");
    behind.MovePrevious();
    EXPECT_EQ(shown(behind.value(1)), "Bea");
    Recordset more = writer.OpenRecordset("PEOPLE");
    addPerson(more, 9, "Zoe", 9);
    rs.MoveLast();
    EXPECT_EQ(shown(rs.value(1)), "Zoe");
    EXPECT_EQ(errorOf([&] { rs.Edit(); }), 3027);
}

TEST_F(DatabaseTest, aReaderStaysWhenTheWriterIsRefused)
{
    {
        Database db = open();
        fillPeople(db);
        db.Close();
    }
    Database reader = open(true);
    Recordset rs = reader.OpenRecordset("PEOPLE");
    const auto elsewhere = files.open(kPath, OpenMode::Read);
    ASSERT_TRUE(elsewhere->tryLock(LockKind::Shared));
    EXPECT_EQ(errorOf([&] { open(); }), 3045);
    EXPECT_EQ(shown(rs.value(1)), "Ann");
    rs.MoveNext();
    EXPECT_EQ(shown(rs.value(1)), "Carl");
}

TEST_F(DatabaseTest, exclusiveStandsAlone)
{
    {
        Database alone = open(false, true);
        EXPECT_EQ(errorOfOpening(kPath), 3045);
        EXPECT_EQ(errorOfOpening(kPath, "Memory;", true, true), 3045);
    }
    Database shared = open(true);
    EXPECT_EQ(errorOfOpening(kPath, "Memory;", true, true), 3045);
    shared.Close();
    EXPECT_EQ(errorOfOpening(kPath, "Memory;", true, true), 0);
}

TEST_F(DatabaseTest, anotherProgramsLockIs3045)
{
    const auto elsewhere = files.open(kPath, OpenMode::ReadWrite);
    ASSERT_TRUE(elsewhere->tryLock(LockKind::Exclusive));
    EXPECT_EQ(errorOfOpening(kPath), 3045);
    elsewhere->unlock();
    EXPECT_EQ(errorOfOpening(kPath), 0);
}

TEST_F(DatabaseTest, aFileThatMayOnlyBeReadOpensSo)
{
    {
        Database db = open();
        fillPeople(db);
        db.Close();
    }
    files.setReadOnly(kPath, true);
    Database db = open();
    EXPECT_FALSE(db.Updatable());
    Recordset rs = db.OpenRecordset("PEOPLE");
    EXPECT_EQ(errorOf([&] { rs.AddNew(); }), 3027);
    EXPECT_EQ(errorOf([&] { db.TableDefs().Delete("PEOPLE"); }), 3027);
}

TEST_F(DatabaseTest, aWrongPasswordIs3031AlsoWhenTheFileIsOpenAlready)
{
    driver.database(kPath).password = "right";
    EXPECT_EQ(errorOfOpening(kPath, "Memory;pwd=wrong"), 3031);
    EXPECT_EQ(errorOfOpening(kPath, "Memory;"), 3031);
    Database db = workspace.OpenDatabase(kPath, false, false, "Memory;pwd=right");
    EXPECT_EQ(errorOfOpening(kPath, "Memory;pwd=wrong"), 3031);
    EXPECT_EQ(errorOfOpening(kPath, "Memory;"), 3031);
    EXPECT_EQ(errorOfOpening(kPath, "Memory;pwd=right"), 0);
}

TEST_F(DatabaseTest, closingCommitsAndEndsItsRecordsets)
{
    Database db = open();
    fillPeople(db);
    Recordset rs = db.OpenRecordset("PEOPLE");
    Field& name = rs.Fields()["NAME"];
    EXPECT_EQ(shown(name.Value()), "Ann");
    const int before = driver.database(kPath).commits;
    db.Close();
    EXPECT_EQ(driver.database(kPath).commits, before + 1);
    EXPECT_TRUE(rs.Eof());
    EXPECT_EQ(errorOf([&] { rs.MoveNext(); }), 3420);
    EXPECT_EQ(errorOf([&] { rs.AddNew(); }), 3420);
    EXPECT_EQ(errorOf([&] { (void)rs.value(0); }), 3420);
    EXPECT_EQ(errorOf([&] { rs.Update(); }), 3420);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("PEOPLE"); }), 3420);
    EXPECT_EQ(errorOf([&] { db.TableDefs(); }), 3420);
    db.Close();  // a second time does nothing
    rs.Close();
    EXPECT_EQ(errorOfOpening(kPath, "Memory;", false, true), 0);
}

TEST_F(DatabaseTest, aRecordsetThatOutlivesItsDatabaseIsClosed)
{
    std::optional<Recordset> rs;
    {
        Database db = open();
        fillPeople(db);
        rs.emplace(db.OpenRecordset("PEOPLE"));
    }
    EXPECT_EQ(errorOf([&] { rs->MoveFirst(); }), 3420);
}

TEST_F(DatabaseTest, muchWrittenIsCommittedOnTheWay)
{
    Database db = open();
    TableDef table = db.CreateTableDef("T");
    table.Fields().Append(table.CreateField("M", 12));
    db.TableDefs().Append(table);
    const int before = driver.database(kPath).commits;
    Recordset rs = db.OpenRecordset("T");
    const std::string text(100'000, 'x');
    for (int i = 0; i < 200; ++i) {  // 20 MB
        rs.AddNew();
        rs.setValue(0, ValueView::text(text));
        rs.Update();
    }
    const int commits = driver.database(kPath).commits - before;
    EXPECT_GE(commits, 1);
    EXPECT_LE(commits, 3);
}

TEST_F(DatabaseTest, statementsAreToldFromTables)
{
    Database db = open();
    fillPeople(db);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("SELECT * FROM PEOPLE"); }), 0);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("  select\tNAME FROM PEOPLE"); }), 0);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("SELECTED"); }), 3078);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("DELETE * FROM PEOPLE"); }), 3075);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("PEOPLE.DBF"); }), 3078);
}

TEST_F(DatabaseTest, aFolderTakesTableNamesWithAndWithoutExtension)
{
    Database db = workspace.OpenDatabase("C:\\folder", false, false, "MemoryFolder;");
    makePeople(db);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("people.dbf"); }), 0);
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("PEOPLE"); }), 0);
    EXPECT_EQ(errorOf([&] { db.TableDefs().Item("PEOPLE.DBF"); }), 3265);
}

class WholeFileTest : public DatabaseTest {
protected:
    MemoryDriver access{{""}};
    DriverAdded accessAdded{access};
};

TEST_F(WholeFileTest, createdDatabasesAreOpenAndWriteable)
{
    Database db = workspace.CreateDatabase("C:\\new.mdb", kGeneralLocale);
    EXPECT_TRUE(db.Updatable());
    EXPECT_EQ(db.TableDefs().Count(), 0);
    EXPECT_EQ(errorOf([&] { workspace.CreateDatabase("C:\\NEW.mdb", kGeneralLocale); }), 3204);
    EXPECT_EQ(errorOf([&] { workspace.CreateDatabase("C:\\none\\x.mdb", kGeneralLocale); }), 3044);
}

TEST_F(WholeFileTest, compactingMakesACopyWithThePassword)
{
    {
        Database db = workspace.CreateDatabase("C:\\a.mdb", ";pwd=secret");
        makePeople(db);
        EXPECT_EQ(errorOf([&] {
                      CompactDatabase(files, "C:\\a.mdb", "C:\\b.mdb", "", 0, ";pwd=secret");
                  }),
                  3356);
        db.Close();
    }
    EXPECT_EQ(errorOf([&] { CompactDatabase(files, "C:\\a.mdb", "C:\\b.mdb"); }), 3031);
    CompactDatabase(files, "C:\\a.mdb", "C:\\b.mdb", "", 0, ";pwd=secret");
    EXPECT_EQ(errorOfOpening("C:\\b.mdb", ""), 3031);
    Database copy = workspace.OpenDatabase("C:\\b.mdb", false, true, ";pwd=secret");
    EXPECT_EQ(copy.TableDefs().Count(), 1);
    EXPECT_EQ(
        errorOf([&] { CompactDatabase(files, "C:\\a.mdb", "C:\\a.mdb", "", 0, ";pwd=secret"); }),
        3204);
    EXPECT_EQ(errorOf([&] { CompactDatabase(files, "C:\\z.mdb", "C:\\y.mdb"); }), 3024);
}

TEST_F(WholeFileTest, repairNeedsTheFileAlone)
{
    Database db = workspace.CreateDatabase("C:\\a.mdb", "");
    EXPECT_EQ(errorOf([&] { RepairDatabase(files, "C:\\a.mdb"); }), 3356);
    db.Close();
    const auto elsewhere = files.open("C:\\a.mdb", OpenMode::Read);
    ASSERT_TRUE(elsewhere->tryLock(LockKind::Shared));
    EXPECT_EQ(errorOf([&] { RepairDatabase(files, "C:\\a.mdb"); }), 3356);
    elsewhere->unlock();
    RepairDatabase(files, "C:\\a.mdb");
    EXPECT_EQ(access.repaired, 1);
}

}  // namespace
}  // namespace velnor::test
