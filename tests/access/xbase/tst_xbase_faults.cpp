// Writing while the disk fails or the power goes: the old table or the new one, nothing between.
#include "tests/access/support/old_or_new.h"
#include "tests/access/xbase/xbase_testing.h"

using namespace velnor;
using namespace velnor::testing;
using namespace velnor::xbase_testing;

namespace {

void makeTable(FaultyDisk& disk)
{
    const auto store = openStore(disk, "dBASE 5.0;");
    store->createTable(
        layoutOf("T", {fieldDef("A", FieldType::Text, 20), fieldDef("M", FieldType::Memo)}));
    const auto writer = store->writer("T");
    for (int i = 0; i < 40; ++i) {
        const std::string name = std::to_string(i);
        writer->insert(
            std::array{text(name), text(std::string(static_cast<std::size_t>(i * 20), 'm'))});
    }
    store->commit();
}

/// Adds, changes and removes records and memos, then commits.
void work(FaultyDisk& disk)
{
    const auto store = openStore(disk, "dBASE 5.0;");
    const auto writer = store->writer("T");
    writer->update(3,
                   std::array{FieldChange{0, text("changed")}, FieldChange{1, text("in place")}});
    writer->update(4, std::array{FieldChange{1, text(std::string(3000, 'z'))}});
    writer->remove(7);
    for (int i = 0; i < 300; ++i)
        writer->insert(std::array{text("new"), text(i % 50 ? "" : "new memo")});
    store->commit();
}

void addOne(FaultyDisk& disk)
{
    const auto store = openStore(disk, "dBASE 5.0;");
    store->writer("T")->insert(std::array{text("one more"), text("its memo")});
    store->commit();
}

Rows rowsOn(FaultyDisk& disk)
{
    const auto store = openStore(disk, "dBASE 5.0;");
    Rows rows = rowsOf(*store, "T");
    EXPECT_EQ(faultsOf(*store, "T"), Rows{});
    return rows;
}

const Scene& scene()
{
    static const Scene scene{makeTable, work, addOne, rowsOn, "C:\\T.DBF", 40, 5};
    return scene;
}

}  // namespace

TEST(XbaseFaults, afterAPowerCutTheTableIsOldOrNew)
{
    expectOldOrNewAfterAPowerCut(scene());
}

TEST(XbaseFaults, afterAFailedWriteTheTableIsOldOrNew)
{
    expectOldOrNewAfterAFailedWrite(scene());
}

TEST(XbaseFaults, aFullDiskIsTold)
{
    expectAFullDiskIsTold(scene());
}

TEST(XbaseFaults, aNewTableIsThereWholeOrNotAtAll)
{
    expectANewTableWholeOrNotAtAll(scene());
}
