// Writing while the disk fails or the power goes: the old table or the new one, nothing between.
#include "tests/access/paradox/paradox_testing.h"
#include "tests/access/support/old_or_new.h"

using namespace velnor;
using namespace velnor::testing;
using namespace velnor::paradox_testing;
using store_testing::Scene;

namespace {

void makeTable(FaultyDisk& disk)
{
    const auto store = openStore(disk);
    store->createTable(
        layoutOf({fieldDef("ID", FieldType::Long), fieldDef("A", FieldType::Text, 60),
                  fieldDef("M", FieldType::Memo)},
                 {primaryDef({"ID"}), indexDef("BYA", {"A"})}));
    const auto writer = store->writer("T");
    for (int i = 0; i < 60; ++i) {
        const std::string name = std::to_string(i);
        writer->insert(std::array{whole(i * 2), text(name),
                                  text(std::string(static_cast<std::size_t>(i * 50), 'm'))});
    }
    store->commit();
}

RowId rowOfKey(Store& store, int id)
{
    const auto cursor = store.cursor("T", "T#PX");
    const ValueView key = whole(id);
    return cursor->seek(Comparison::Equal, {&key, 1}) ? cursor->row() : 0;
}

/// Adds, changes and removes records and memos so that blocks are split and freed, then commits.
void work(FaultyDisk& disk)
{
    const auto store = openStore(disk);
    const auto writer = store->writer("T");
    writer->update(rowOfKey(*store, 4), std::array{FieldChange{1, text("changed")},
                                                   FieldChange{2, text(std::string(9000, 'z'))}});
    writer->update(rowOfKey(*store, 6), std::array{FieldChange{0, whole(777)}});
    for (int id = 40; id < 100; id += 2)
        writer->remove(rowOfKey(*store, id));
    for (int i = 0; i < 60; ++i)
        writer->insert(std::array{whole(i * 2 + 1), text("new"), text(i % 20 ? "" : "new memo")});
    store->commit();
}

void addOne(FaultyDisk& disk)
{
    const auto store = openStore(disk);
    store->writer("T")->insert(
        std::array{whole(100000), text("one more"), text(std::string(400, '+'))});
    store->commit();
}

Rows rowsOn(FaultyDisk& disk)
{
    const auto store = openStore(disk);
    Rows rows = rowsOf(*store);
    EXPECT_EQ(faultsOf(*store), Rows{});
    return rows;
}

const Scene& scene()
{
    static const Scene scene{makeTable, work, addOne, rowsOn, "C:\\T.DB", 60, 5};
    return scene;
}

}  // namespace

TEST(ParadoxFaults, afterAPowerCutTheTableIsOldOrNew)
{
    expectOldOrNewAfterAPowerCut(scene());
}

TEST(ParadoxFaults, afterAFailedWriteTheTableIsOldOrNew)
{
    expectOldOrNewAfterAFailedWrite(scene());
}

TEST(ParadoxFaults, aFullDiskIsTold)
{
    expectAFullDiskIsTold(scene());
}

TEST(ParadoxFaults, aNewTableIsThereWholeOrNotAtAll)
{
    expectANewTableWholeOrNotAtAll(scene());
}

TEST(ParadoxFaults, theStoreGoesOnAfterAFailedCommit)
{
    FaultyDisk disk;
    makeTable(disk);
    const Rows before = rowsOn(disk);
    const auto store = openStore(disk);
    const auto writer = store->writer("T");
    const auto cursor = store->cursor("T", "BYA");
    ASSERT_TRUE(cursor->first());
    writer->insert(std::array{whole(5), text("lost"), text(std::string(5000, 'l'))});
    disk.failAt(1, RunErrorNumber::DiskFull, FaultyDisk::Lasts::FromThenOn);
    EXPECT_EQ(errorOf([&] { store->commit(); }), 3026);
    disk.clearFaults();
    EXPECT_EQ(rowsOf(*store), before);
    writer->insert(std::array{whole(5), text("kept"), text(std::string(5000, 'k'))});
    store->commit();
    EXPECT_EQ(rowsOf(*store).size(), before.size() + 1);
    ASSERT_TRUE(cursor->last());
    EXPECT_EQ(shown(cursor->field(1)), "'kept'");
    EXPECT_EQ(faultsOf(*store), Rows{});
}
