// Writing while the disk fails or the power goes: the old table or the new one, nothing between.
#include "tests/access/xbase/xbase_testing.h"
#include "tests/support/faulty_disk.h"

using namespace velnor;
using namespace velnor::testing;
using namespace velnor::xbase_testing;

namespace {

using Rows = std::vector<std::string>;

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

template <class Break> void expectOldOrNew(Break breakAt)
{
    FaultyDisk sound;
    makeTable(sound);
    const Rows before = rowsOn(sound);
    work(sound);
    const Rows after = rowsOn(sound);
    ASSERT_NE(before, after);
    int old = 0, made = 0;
    for (long n = 1;; ++n) {
        FaultyDisk disk(static_cast<unsigned>(n));
        makeTable(disk);
        if (!breakAt(disk, n))
            break;
        disk.restart();
        const Rows now = rowsOn(disk);
        ASSERT_TRUE(now == before || now == after) << "at change " << n;
        (now == before ? old : made) += 1;
        addOne(disk);  // and it can be written again
        ASSERT_EQ(rowsOn(disk).size(), now.size() + 1);
    }
    EXPECT_GT(old, 5);
}

}  // namespace

TEST(XbaseFaults, afterAPowerCutTheTableIsOldOrNew)
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

TEST(XbaseFaults, afterAFailedWriteTheTableIsOldOrNew)
{
    expectOldOrNew([](FaultyDisk& disk, long n) {
        disk.failAt(n, RunErrorNumber::DeviceIo);
        try {
            work(disk);
        } catch (const EngineError&) {
        }
        return disk.hasFailed();
    });
}

TEST(XbaseFaults, aFullDiskIsTold)
{
    FaultyDisk disk;
    makeTable(disk);
    const Rows before = rowsOn(disk);
    disk.failAt(1, RunErrorNumber::DiskFull, FaultyDisk::Lasts::FromThenOn);
    EXPECT_EQ(errorOf([&] { work(disk); }), 3026);
    disk.restart();
    EXPECT_EQ(rowsOn(disk), before);
}

TEST(XbaseFaults, aNewTableIsThereWholeOrNotAtAll)
{
    for (long n = 1;; ++n) {
        FaultyDisk disk(static_cast<unsigned>(n));
        disk.cutAt(n);
        try {
            makeTable(disk);
        } catch (const std::exception&) {
        }
        if (!disk.wasCut())
            break;
        disk.restart();
        if (!disk.exists("C:\\T.DBF"))
            continue;
        const auto rows = rowsOn(disk).size();
        EXPECT_TRUE(rows == 0 || rows == 40) << "at change " << n << ": " << rows;
    }
}
