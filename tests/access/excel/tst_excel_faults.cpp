// Writing while the disk fails or the power goes: the old workbook or the new one, nothing between.
#include "tests/access/excel/excel_testing.h"
#include "tests/support/faulty_disk.h"

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
    return rowsOf(*store, "T$");
}

template <class Break> void expectOldOrNew(Break breakAt)
{
    FaultyDisk sound;
    makeBook(sound);
    const Lines before = rowsOn(sound);
    work(sound);
    const Lines after = rowsOn(sound);
    ASSERT_NE(before, after);
    int old = 0;
    for (long n = 1;; ++n) {
        FaultyDisk disk(static_cast<unsigned>(n));
        makeBook(disk);
        if (!breakAt(disk, n))
            break;
        disk.restart();
        const Lines now = rowsOn(disk);
        ASSERT_TRUE(now == before || now == after) << "at change " << n;
        old += now == before;
        addOne(disk);  // and it can be written again
        ASSERT_EQ(rowsOn(disk).size(), now.size() + 1);
    }
    EXPECT_GT(old, 2);
}

}  // namespace

TEST(ExcelFaults, afterAPowerCutTheWorkbookIsOldOrNew)
{
    expectOldOrNew([](FaultyDisk& disk, long n) {
        disk.cutAt(n);
        try {
            work(disk);
        } catch (const std::exception&) {
        }
        return disk.wasCut();
    });
}

TEST(ExcelFaults, afterAFailedWriteTheWorkbookIsOldOrNew)
{
    expectOldOrNew([](FaultyDisk& disk, long n) {
        disk.failAt(n, RunErrorNumber::DeviceIo);
        try {
            work(disk);
        } catch (const std::exception&) {
        }
        return disk.hasFailed();
    });
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
    for (long n = 1;; ++n) {
        FaultyDisk disk(static_cast<unsigned>(n));
        disk.cutAt(n);
        try {
            makeBook(disk);
        } catch (const std::exception&) {
        }
        if (!disk.wasCut())
            break;
        disk.restart();
        if (!disk.exists(kFile))
            continue;
        const auto store = openStore(disk, true);
        EXPECT_EQ(faultsOf(*store), Lines{});
        ASSERT_EQ(tablesOf(*store).size(), 1u);
        const std::string table = tablesOf(*store).front();
        const auto rows = rowsOf(*store, table).size();
        EXPECT_TRUE(rows == 0 || rows == 40) << "at change " << n << ": " << rows;
    }
}
