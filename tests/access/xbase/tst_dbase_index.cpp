// MDX and NDX indexes: made, kept right by every change, walked, searched and dropped.
#include "tests/access/xbase/index_testing.h"

namespace {

using namespace velnor;
using namespace velnor::xbase_testing;

class DbaseIndex : public ::testing::Test {
protected:
    void makeTable(const char* with)
    {
        word = with;
        store = openStore(files, word);
        store->createTable(peopleLayout());
    }
    void reopen()
    {
        store->commit();
        store.reset();
        store = openStore(files, word);
    }
    std::string textOf(std::string_view path)
    {
        const auto file = files.open(path, OpenMode::Read);
        std::string text(file->size(), '\0');
        file->readAt(0, {reinterpret_cast<std::uint8_t*>(text.data()), text.size()});
        return text;
    }
    MemoryFileSystem files{256u << 20};
    std::unique_ptr<Store> store;
    std::string word;
};

void numbersWalk(Store& store, const std::string& index, const std::vector<int>& expected)
{
    std::vector<int> seen;
    const auto cursor = store.cursor("T", index);
    for (bool on = cursor->first(); on; on = cursor->next())
        seen.push_back(static_cast<int>(*integerOf(cursor->field(1))));
    EXPECT_EQ(seen, expected);
    seen.clear();
    for (bool on = cursor->last(); on; on = cursor->previous())
        seen.push_back(static_cast<int>(*integerOf(cursor->field(1))));
    std::reverse(seen.begin(), seen.end());
    EXPECT_EQ(seen, expected);
}

TEST_F(DbaseIndex, numbersAreOrderedByTheirParts_alsoBelowZero)
{
    makeTable("dBASE 5.0;");
    store->addIndex("T", indexDef("UP", {"QTY"}));
    IndexDef down = indexDef("DOWN", {"QTY"});
    down.fields[0].descending = true;
    store->addIndex("T", down);
    for (const int n : {2131, -16, 2100, 0, 3, -2100, 20, -3, 999999, 7})
        insertPerson(*store, "x", n, 1);
    reopen();
    std::vector<int> expected{-2100, -16, -3, 0, 3, 7, 20, 2100, 2131, 999999};
    numbersWalk(*store, "UP", expected);
    std::reverse(expected.begin(), expected.end());
    numbersWalk(*store, "DOWN", expected);
    const auto cursor = store->cursor("T", "DOWN");
    const ValueView key = ValueView::integer(20);
    ASSERT_TRUE(cursor->seek(Comparison::Equal, std::span(&key, 1)));
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(*integerOf(cursor->field(1)), 7);
}

TEST_F(DbaseIndex, tagsStandInTheOrderOfTheirMaking)
{
    makeTable("dBASE 5.0;");
    for (const char* name : {"M", "C", "X", "D", "A"})
        store->addIndex("T", indexDef(name, {"NAME"}));
    store->dropIndex("T", "X");
    reopen();
    std::string names;
    for (const IndexDef& def : store->layout("T").indexes)
        names += def.name;
    EXPECT_EQ(names, "MCDA");
    for (const char* name : {"M", "C", "D", "A"})
        store->dropIndex("T", name);
    EXPECT_FALSE(files.fileExists("C:\\T.MDX"));
    EXPECT_EQ(store->layout("T").indexes.size(), 0u);
}

TEST_F(DbaseIndex, theHeaderNotesFieldsThatAreKeysByThemselves)
{
    makeTable("dBASE 5.0;");
    store->addIndex("T", indexDef("A", {"NAME"}));
    store->addIndex("T", indexDef("B", {"CITY", "NAME"}));
    store->addIndex("T", indexDef("C", {"NAME"}));
    const auto marks = [this] {
        const std::string head = textOf("C:\\T.DBF");
        return std::string{head[28] & 1 ? '1' : '0', head[63] ? '1' : '0',
                           head[32 * 4 + 31] ? '1' : '0'};
    };
    EXPECT_EQ(marks(), "110");
    store->dropIndex("T", "A");
    EXPECT_EQ(marks(), "110");
    store->dropIndex("T", "C");
    EXPECT_EQ(marks(), "100");
    store->dropIndex("T", "B");
    EXPECT_EQ(marks(), "000");
}

TEST_F(DbaseIndex, theProductionMarkStaysWhileTheOtherKindIsThere)
{
    makeTable("dBASE 5.0;");
    store->addIndex("T", indexDef("A", {"NAME"}));
    store.reset();
    store = openStore(files, "FoxPro 2.6;");
    store->addIndex("T", indexDef("B", {"NAME"}));
    store->dropIndex("T", "B");
    EXPECT_FALSE(files.fileExists("C:\\T.CDX"));
    store.reset();
    store = openStore(files, "dBASE 5.0;");
    EXPECT_EQ(store->layout("T").indexes.size(), 1u);
}

TEST_F(DbaseIndex, aFortyEighthTagIsRefused)
{
    makeTable("dBASE IV;");
    for (int i = 0; i < 47; ++i)
        store->addIndex("T", indexDef("I" + std::to_string(i), {"NAME"}));
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("MORE", {"NAME"})); }), 3018);
    EXPECT_EQ(store->layout("T").indexes.size(), 47u);
    EXPECT_EQ(faultsOf(*store, "T"), std::vector<std::string>{});
}

TEST_F(DbaseIndex, logicalAndLongKeysAreRefused)
{
    store = openStore(files);
    TableLayout layout = layoutOf(
        "T", {fieldDef("FLAG", FieldType::Boolean), fieldDef("WIDE", FieldType::Text, 120)});
    store->createTable(layout);
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("A", {"FLAG"})); }), 3018);
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("A", {"WIDE"})); }), 3018);
    EXPECT_FALSE(files.fileExists("C:\\T.MDX"));
}

TEST_F(DbaseIndex, aUniqueIndexRefusesEqualKeys)
{
    for (const char* kind : {"dBASE 5.0;", "dBASE III;"}) {
        makeTable(kind);
        IndexDef unique = indexDef("A", {"NAME"});
        unique.unique = true;
        store->addIndex("T", unique);
        insertPerson(*store, "Anna", 1, 1);
        EXPECT_EQ(errorOf([&] { insertPerson(*store, "Anna", 2, 2); }), 3022);
        reopen();
        EXPECT_EQ(errorOf([&] { insertPerson(*store, "Anna", 2, 2); }), 3022);
        EXPECT_EQ(store->recordCount("T"), 1);
        store->dropTable("T");
    }
}

TEST_F(DbaseIndex, anInfListsTheFilesOfDbaseThree_andGoesWithTheLast)
{
    makeTable("dBASE III;");
    IndexDef unique = indexDef("NO", {"QTY"});
    unique.unique = true;
    store->addIndex("T", indexDef("CITY", {"CITY"}));
    store->addIndex("T", unique);
    store->addIndex("T", indexDef("NAME", {"NAME"}));
    EXPECT_EQ(textOf("C:\\T.INF"),
              "[dBASE III]\r\nNDX1=CITY.NDX\r\nUNDX1=NO.NDX\r\nNDX2=NAME.NDX\r\n");
    store->dropIndex("T", "CITY");
    EXPECT_EQ(textOf("C:\\T.INF"), "[dBASE III]\r\nUNDX1=NO.NDX\r\nNDX1=NAME.NDX\r\n");
    EXPECT_FALSE(files.fileExists("C:\\CITY.NDX"));
    reopen();
    EXPECT_EQ(store->layout("T").indexes.size(), 2u);
    store->dropIndex("T", "NO");
    store->dropIndex("T", "NAME");
    EXPECT_FALSE(files.fileExists("C:\\T.INF"));
}

TEST_F(DbaseIndex, recordsWithoutADayComeLast)
{
    for (const char* kind : {"dBASE 5.0;", "dBASE III;"}) {
        makeTable(kind);
        store->addIndex("T", indexDef("DAYS", {"DAY"}));
        insertPerson(*store, "none", 1, 0);
        insertPerson(*store, "late", 1, 9);
        insertPerson(*store, "soon", 1, 3);
        EXPECT_EQ(namesBy(*store, "DAYS"), (std::vector<std::string>{"soon", "late", "none"}));
        store->dropTable("T");
    }
}

TEST_F(DbaseIndex, indexesOfTheOtherWordAreNotListed_butKeptRight)
{
    makeTable("dBASE 5.0;");
    store->addIndex("T", indexDef("A", {"NAME"}));
    insertPerson(*store, "Anna", 1, 1);
    store->commit();
    store.reset();
    store = openStore(files, "FoxPro 3.0;");
    EXPECT_EQ(store->layout("T").indexes.size(), 0u);
    insertPerson(*store, "Bert", 1, 1);
    store->commit();
    store.reset();
    store = openStore(files, "dBASE 5.0;");
    EXPECT_EQ(namesBy(*store, "A"), (std::vector<std::string>{"Anna", "Bert"}));
}

TEST_F(DbaseIndex, randomChanges_leaveEveryMdxTagRight)
{
    makeTable("dBASE 5.0;");
    for (const IndexDef& def : severalIndexes())
        store->addIndex("T", def);
    RandomChanges(*store, 20000).run();
}

TEST_F(DbaseIndex, randomChanges_leaveEveryNdxRight)
{
    makeTable("dBASE III;");
    for (const IndexDef& def : severalIndexes())
        if (def.condition.empty() && def.name != "FALLS")
            store->addIndex("T", def);
    RandomChanges(*store, 20000).run();
}

}  // namespace
