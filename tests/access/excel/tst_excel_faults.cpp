// Writing while the disk fails or the power goes: the old workbook or the new one, nothing between.
#include "tests/access/excel/excel_testing.h"
#include "tests/access/support/old_or_new.h"

using namespace velnor;
using namespace velnor::testing;
using namespace velnor::excel_testing;

namespace {

void makeBook(FaultyDisk& disk)
{
    createFile(disk);
    const auto store = openStore(disk);
    store->createTable(
        layoutOf("T", {fieldDef("A", FieldType::Text, 20), fieldDef("N", FieldType::Double)}));
    const auto writer = store->writer("T");
    for (int i = 0; i < 40; ++i)
        writer->insert(std::array{text("old"), ValueView::real(i)});
    store->commit();
}

void work(FaultyDisk& disk)
{
    const auto store = openStore(disk);
    const auto writer = store->writer("T$");
    writer->update(3, std::array{FieldChange{0, text("changed")}});
    for (int i = 0; i < 300; ++i)
        writer->insert(std::array{text(std::to_string(i)), ValueView::real(i)});
    store->commit();
}

void addOne(FaultyDisk& disk)
{
    const auto store = openStore(disk);
    store->writer("T$")->insert(std::array{text("one more"), ValueView::real(1)});
    store->commit();
}

Lines rowsOn(FaultyDisk& disk)
{
    const auto store = openStore(disk, true);
    EXPECT_EQ(faultsOf(*store), Lines{});
    EXPECT_EQ(tablesOf(*store).size(), 1u);
    return rowsOf(*store, tablesOf(*store).front());  // before the table is made: the empty sheet
}

const Scene& scene()
{
    static const Scene scene{makeBook, work, addOne, rowsOn, kFile, 40, 2};
    return scene;
}

}  // namespace

TEST(ExcelFaults, afterAPowerCutTheWorkbookIsOldOrNew)
{
    expectOldOrNewAfterAPowerCut(scene());
}

TEST(ExcelFaults, afterAFailedWriteTheWorkbookIsOldOrNew)
{
    expectOldOrNewAfterAFailedWrite(scene());
}

TEST(ExcelFaults, aFullDiskIsToldAndTheWorkGoesOnWhenThereIsRoom)
{
    FaultyDisk disk;
    makeBook(disk);
    const Lines before = rowsOn(disk);
    {
        const auto store = openStore(disk);
        store->writer("T$")->insert(std::array{text("new"), ValueView::real(1)});
        disk.failAt(1, RunErrorNumber::DiskFull, FaultyDisk::Lasts::FromThenOn);
        EXPECT_EQ(errorOf([&] { store->commit(); }), 3026);
        disk.clearFaults();
        store->commit();
    }
    EXPECT_EQ(rowsOn(disk).size(), before.size() + 1);
}

TEST(ExcelFaults, aNewWorkbookIsThereWholeOrNotAtAll)
{
    expectANewTableWholeOrNotAtAll(scene());
}
