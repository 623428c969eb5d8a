// CDX indexes: made, kept right by every change, walked and searched.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>

#include "tests/access/xbase/index_testing.h"

namespace {

using namespace velnor;
using namespace velnor::xbase_testing;

constexpr const char* kFox = "FoxPro 3.0;";

class CdxIndex : public ::testing::Test {
protected:
    void makeTable(const char* word = kFox)
    {
        store = openStore(files, word);
        store->createTable(peopleLayout());
    }
    MemoryFileSystem files{256u << 20};
    std::unique_ptr<Store> store;
};

TEST_F(CdxIndex, aNewIndexListsItsFields_andMakesTheFile)
{
    makeTable();
    insertPerson(*store, "Baker", 2, 10);
    store->addIndex("T", indexDef("byname", {"NAME"}));
    store->addIndex("T", indexDef("BOTH", {"NAME", "CITY"}));
    const auto indexes = store->layout("T").indexes;
    ASSERT_EQ(indexes.size(), 2u);
    EXPECT_EQ(indexes[0].name, "BOTH");  // in the order of their names
    EXPECT_EQ(indexes[0].expression, "NAME+CITY");
    EXPECT_EQ(indexes[0].fields[1].name, "CITY");
    EXPECT_EQ(indexes[1].name, "BYNAME");
    EXPECT_TRUE(files.fileExists("C:\\T.CDX"));
    EXPECT_EQ(faultsOf(*store, "T"), std::vector<std::string>{});
}

TEST_F(CdxIndex, theLastIndexTakesItsFileAway_andANewOneMakesItAgain)
{
    makeTable();
    store->addIndex("T", indexDef("A", {"NAME"}));
    store->addIndex("T", indexDef("B", {"QTY"}));
    store->dropIndex("T", "A");
    EXPECT_EQ(store->layout("T").indexes.size(), 1u);
    store->dropIndex("T", "B");
    EXPECT_FALSE(files.fileExists("C:\\T.CDX"));
    EXPECT_EQ(store->layout("T").indexes.size(), 0u);
    insertPerson(*store, "Able", 1, 1);
    store->commit();
    store->addIndex("T", indexDef("A", {"NAME"}));
    EXPECT_EQ(namesBy(*store, "A"), std::vector<std::string>{"Able"});
}

TEST_F(CdxIndex, aTableIsMadeWithItsIndexes_orNotAtAll)
{
    store = openStore(files, kFox);
    TableLayout layout = peopleLayout();
    layout.indexes = {indexDef("A", {"NAME"}), indexDef("B", {"NOTE"})};
    EXPECT_EQ(errorOf([&] { store->createTable(layout); }), 3018);
    EXPECT_FALSE(files.fileExists("C:\\T.DBF"));
    EXPECT_FALSE(files.fileExists("C:\\T.CDX"));
    layout.indexes.pop_back();
    store->createTable(layout);
    EXPECT_EQ(store->layout("T").indexes.size(), 1u);
}

TEST_F(CdxIndex, aTakenNameIsRefused_andAnUnknownOneIsNotFound)
{
    makeTable();
    store->addIndex("T", indexDef("A", {"NAME"}));
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("a", {"QTY"})); }), 3367);
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("C", {"NOTHING"})); }), 3018);
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("C", {"NOTE"})); }), 3018);
    EXPECT_EQ(errorOf([&] { store->dropIndex("T", "B"); }), 3015);
    EXPECT_EQ(errorOf([&] { store->cursor("T", "B"); }), 3015);
}

TEST_F(CdxIndex, walksInOrder_whileRecordsChange)
{
    makeTable();
    store->addIndex("T", indexDef("A", {"NAME"}));
    for (const char* name : {"Dora", "Anna", "Carl", "Bert"})
        insertPerson(*store, name, 1, 1);
    const auto cursor = store->cursor("T", "A");
    ASSERT_TRUE(cursor->first());
    EXPECT_EQ(shown(cursor->field(0)), "'Anna'");
    insertPerson(*store, "Arno", 1, 1);
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(shown(cursor->field(0)), "'Arno'");
    store->writer("T")->remove(4);  // Bert
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(shown(cursor->field(0)), "'Carl'");
    ASSERT_TRUE(cursor->previous());
    EXPECT_EQ(shown(cursor->field(0)), "'Arno'");
    ASSERT_TRUE(cursor->last());
    EXPECT_FALSE(cursor->next());
    ASSERT_TRUE(cursor->previous());
    EXPECT_EQ(shown(cursor->field(0)), "'Dora'");
}

TEST_F(CdxIndex, aChangedKeyMovesTheRecordUnderTheCursor)
{
    makeTable();
    store->addIndex("T", indexDef("A", {"NAME"}));
    for (const char* name : {"Anna", "Bert", "Carl"})
        insertPerson(*store, name, 1, 1);
    const auto cursor = store->cursor("T", "A");
    ASSERT_TRUE(cursor->first());
    const FieldChange change{0, text("Zoe")};
    store->writer("T")->update(cursor->row(), std::span(&change, 1));
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(shown(cursor->field(0)), "'Bert'");
    EXPECT_EQ(namesBy(*store, "A"), (std::vector<std::string>{"Bert", "Carl", "Zoe"}));
}

void seeksAll(Store& store, const std::string& name, bool falls)
{
    const auto cursor = store.cursor("T", name);
    const auto at = [&](Comparison comparison, int n) {
        const ValueView key = ValueView::integer(n);
        return cursor->seek(comparison, std::span(&key, 1))
                   ? static_cast<int>(*integerOf(cursor->field(1)))
                   : -1;
    };
    // Quantities 10, 20 .. 90.
    EXPECT_EQ(at(Comparison::Equal, 50), 50);
    EXPECT_EQ(at(Comparison::Equal, 55), -1);
    EXPECT_EQ(at(Comparison::GreaterEqual, 50), 50);
    EXPECT_EQ(at(Comparison::LessEqual, 50), 50);
    EXPECT_EQ(at(Comparison::Greater, 50), falls ? 40 : 60);
    EXPECT_EQ(at(Comparison::Less, 50), falls ? 60 : 40);
    EXPECT_EQ(at(Comparison::GreaterEqual, 55), falls ? 50 : 60);
    EXPECT_EQ(at(Comparison::LessEqual, 55), falls ? 60 : 50);
    EXPECT_EQ(at(Comparison::Greater, falls ? 10 : 90), -1);
    EXPECT_EQ(at(Comparison::Less, falls ? 90 : 10), -1);
    ASSERT_EQ(at(Comparison::Equal, 50), 50);
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(*integerOf(cursor->field(1)), falls ? 40 : 60);
    ASSERT_TRUE(cursor->first());
    EXPECT_EQ(*integerOf(cursor->field(1)), falls ? 90 : 10);
}

TEST_F(CdxIndex, seeksByEveryComparison_inTheOrderOfTheIndex)
{
    makeTable();
    for (const int quantity : {30, 10, 90, 50, 70, 20, 80, 40, 60})
        insertPerson(*store, "x", quantity, 1);
    store->addIndex("T", indexDef("UP", {"QTY"}));
    IndexDef down = indexDef("DOWN", {"QTY"});
    down.fields[0].descending = true;
    store->addIndex("T", down);
    seeksAll(*store, "UP", false);
    seeksAll(*store, "DOWN", true);
    EXPECT_TRUE(store->layout("T").indexes[0].fields[0].descending);
}

TEST_F(CdxIndex, fewerValuesThanFieldsFindTheFirstThatBeginsSo)
{
    makeTable();
    store->addIndex("T", indexDef("BOTH", {"NAME", "CITY"}));
    for (const char* name : {"Anna", "Bert", "Bertha"})
        insertPerson(*store, name, 1, 1);
    const auto cursor = store->cursor("T", "BOTH");
    const ValueView key = text("Bert");
    ASSERT_TRUE(cursor->seek(Comparison::Equal, std::span(&key, 1)));
    EXPECT_EQ(shown(cursor->field(0)), "'Bert'");
    const ValueView none = text("Ber");
    EXPECT_FALSE(cursor->seek(Comparison::Equal, std::span(&none, 1)));
}

TEST_F(CdxIndex, aUniqueIndexRefusesEqualKeys_andTakesThemWhenTheOtherIsDeleted)
{
    makeTable();
    IndexDef unique = indexDef("A", {"NAME"});
    unique.unique = true;
    store->addIndex("T", unique);
    EXPECT_TRUE(store->layout("T").indexes[0].unique);
    insertPerson(*store, "Anna", 1, 1);
    EXPECT_EQ(errorOf([&] { insertPerson(*store, "Anna", 2, 2); }), 3022);
    insertPerson(*store, "Bert", 1, 1);
    const FieldChange change{0, text("Anna")};
    EXPECT_EQ(errorOf([&] { store->writer("T")->update(2, std::span(&change, 1)); }), 3022);
    EXPECT_EQ(store->recordCount("T"), 2);
    store->writer("T")->remove(1);
    store->writer("T")->update(2, std::span(&change, 1));
    EXPECT_EQ(namesBy(*store, "A"), std::vector<std::string>{"Anna"});
    store->commit();
    EXPECT_EQ(faultsOf(*store, "T"), std::vector<std::string>{});
}

TEST_F(CdxIndex, equalKeysThatAreThere_refuseAUniqueIndex_andLeaveNothing)
{
    makeTable();
    insertPerson(*store, "Anna", 1, 1);
    insertPerson(*store, "Anna", 2, 1);
    IndexDef unique = indexDef("A", {"NAME"});
    unique.unique = true;
    EXPECT_EQ(errorOf([&] { store->addIndex("T", unique); }), 3022);
    EXPECT_EQ(store->layout("T").indexes.size(), 0u);
    EXPECT_FALSE(files.fileExists("C:\\T.CDX"));
}

TEST_F(CdxIndex, aStaleIndexRefusesTheWrite)
{
    makeTable();
    insertPerson(*store, "Anna", 1, 1);
    store->addIndex("T", indexDef("A", {"NAME"}));
    store.reset();
    files.remove("C:\\T.DBF");
    MemoryFileSystem other{64u << 20};
    store = openStore(other, kFox);
    store->createTable(peopleLayout());
    insertPerson(*store, "Bert", 1, 1);
    insertPerson(*store, "Carl", 1, 1);
    store->addIndex("T", indexDef("A", {"NAME"}));
    store.reset();
    copyFile(other, files, "C:\\T.DBF");
    store = openStore(files, kFox);
    EXPECT_EQ(errorOf([&] { store->writer("T"); }), 3800);
    EXPECT_EQ(store->recordCount("T"), 2);
}

TEST_F(CdxIndex, aSearchInALargeTable_refusesAnIndexThatLacksTheLastRecords)
{
    const auto makeLarge = [](FileSystem& disk, int records) {
        auto made = openStore(disk, kFox);
        made->createTable(peopleLayout());
        for (int i = 0; i < records; ++i)
            insertPerson(*made, "P" + std::to_string(i), i, 1);
        made->addIndex("T", indexDef("A", {"NAME"}));
        return made;
    };
    const ValueView last = text("P11999");
    MemoryFileSystem large{64u << 20}, longer{64u << 20};
    store = makeLarge(large, 12000);
    EXPECT_TRUE(store->cursor("T", "A")->seek(Comparison::Equal, std::span(&last, 1)));
    store.reset();
    makeLarge(longer, 12001);
    copyFile(longer, large, "C:\\T.DBF");
    store = openStore(large, kFox);
    const auto cursor = store->cursor("T", "A");
    EXPECT_EQ(errorOf([&] { cursor->seek(Comparison::Equal, std::span(&last, 1)); }), 3800);
    store.reset();
}

TEST_F(CdxIndex, anExpressionThatIsNotUnderstood_isListedAndRefusesTheWrite)
{
    makeTable();
    store->addIndex("T", indexDef("A", {"NAME"}));
    store.reset();
    patch(files, "C:\\T.CDX", "NAME", "MANE");
    store = openStore(files, kFox);
    const auto indexes = store->layout("T").indexes;
    ASSERT_EQ(indexes.size(), 1u);
    EXPECT_EQ(indexes[0].fields[0].name, "MANE");
    EXPECT_NE(indexes[0].cannotKeep, "");
    EXPECT_EQ(errorOf([&] { store->writer("T"); }), 3800);
}

TEST_F(CdxIndex, aFlagWithoutItsFileIsNoIndex)
{
    makeTable();
    store->addIndex("T", indexDef("A", {"NAME"}));
    store.reset();
    files.remove("C:\\T.CDX");
    store = openStore(files, kFox);
    EXPECT_EQ(store->layout("T").indexes.size(), 0u);
    insertPerson(*store, "Anna", 1, 1);
    EXPECT_EQ(store->recordCount("T"), 1);
}

TEST_F(CdxIndex, randomChanges_leaveEveryIndexRight)
{
    makeTable();
    for (const IndexDef& def : severalIndexes())
        store->addIndex("T", def);
    RandomChanges(*store, 20000).run();
}

TEST_F(CdxIndex, manyAppendsAreEnteredTogether)
{
    makeTable();
    for (const IndexDef& def : severalIndexes())
        store->addIndex("T", def);
    std::mt19937 random(7);
    for (int i = 0; i < 30000; ++i)
        insertPerson(*store, std::to_string(random() % 100000), i,
                     static_cast<int>(random() % 5000));
    store->commit();
    EXPECT_EQ(faultsOf(*store, "T"), std::vector<std::string>{});
    EXPECT_EQ(namesBy(*store, "BYNAME").size(), 30000u);
}

}  // namespace
