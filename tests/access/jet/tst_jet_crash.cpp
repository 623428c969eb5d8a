// The disk is full, fails, or loses power at any moment: the file has its old or its new content.
#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/jet_driver.h"
#include "tests/access/jet/jet_testing.h"
#include "tests/support/faulty_disk.h"

namespace velnor::testing {
namespace {

TableLayout orders()
{
    TableLayout layout;
    layout.name = "Orders";
    layout.fields.resize(3);
    layout.fields[0].name = "ID";
    layout.fields[0].type = FieldType::Long;
    layout.fields[0].autonumber = true;
    layout.fields[1].name = "Name";
    layout.fields[1].size = 50;
    layout.fields[2].name = "Notes";
    layout.fields[2].type = FieldType::Memo;
    IndexDef key;
    key.name = "PrimaryKey";
    key.fields = {{"ID", false}};
    key.primary = key.unique = key.required = true;
    IndexDef name;
    name.name = "Name";
    name.fields = {{"Name", false}};
    layout.indexes = {key, name};
    return layout;
}

void addRecords(Store& store, int count, int salt)
{
    const auto writer = store.writer("Orders");
    for (int i = 0; i < count; ++i) {
        const std::string name = "name " + std::to_string((i * 37 + salt) % 1000);
        const std::string notes(static_cast<std::size_t>((i * 131 + salt) % 5000), 'n');
        std::vector<ValueView> row(3);
        row[1] = ValueView::text(name);
        row[2] = ValueView::text(notes);
        writer->insert(row);
    }
}

/// Adds, changes, removes, and commits.
void work(Store& store)
{
    addRecords(store, 40, 500);
    const auto writer = store.writer("Orders");
    const auto cursor = store.cursor("Orders", std::nullopt);
    std::vector<RowId> rows;
    for (bool on = cursor->first(); on; on = cursor->next())
        rows.push_back(cursor->row());
    const std::string longer(49, 'L');
    for (std::size_t i = 0; i < rows.size(); i += 3) {
        const FieldChange change{1, ValueView::text(longer)};
        writer->update(rows[i], std::span(&change, 1));
    }
    for (std::size_t i = 1; i < rows.size(); i += 3)
        writer->remove(rows[i]);
    store.commit();
}

class Faults : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        MemoryFileSystem files;
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files, request);
        const auto store = driver_.open(files, writing());
        store->createTable(orders());
        addRecords(*store, 60, 1);
        store->commit();
        old_ = files.content(kTestFile);
        oldDump_ = dumpTable(*store, "Orders");
        work(*store);
        newDump_ = dumpTable(*store, "Orders");
        ASSERT_NE(oldDump_, newDump_);
    }

    void expectSound(Store& store, long n)
    {
        store.check({}, [&](const Problem& problem) {
            if (!problem.harmless)
                ADD_FAILURE() << "fault at " << n << ": " << problem.where << ": " << problem.text;
        });
    }

    jet::JetDriver driver_;
    std::vector<std::uint8_t> old_;
    std::string oldDump_, newDump_;
};

TEST_P(Faults, aPowerCutAtAnyMomentLeavesTheOldOrTheNewRecords)
{
    bool finished = false;
    int olds = 0, news = 0;
    for (long n = 1; !finished; ++n) {
        ASSERT_LT(n, 2000);
        FaultyDisk disk(static_cast<unsigned>(n));
        disk.put(kTestFile, old_);
        disk.cutAt(n);
        try {
            work(*driver_.open(disk, writing()));
            finished = !disk.wasCut();
        } catch (const EngineError&) {
        } catch (const RunError&) {
        }
        disk.restart();
        const auto store = driver_.open(disk, writing());
        const std::string dump = dumpTable(*store, "Orders");
        EXPECT_TRUE(dump == oldDump_ || dump == newDump_) << "cut at " << n;
        (dump == oldDump_ ? olds : news)++;
        expectSound(*store, n);
    }
    EXPECT_GT(olds, 0);
    EXPECT_GT(news, 0);
}

TEST_P(Faults, aFailingDiskLeavesTheOldRecordsAndAStoreThatGoesOn)
{
    for (const RunErrorNumber error : {RunErrorNumber::DiskFull, RunErrorNumber::DeviceIo}) {
        bool finished = false;
        for (long n = 1; !finished; ++n) {
            ASSERT_LT(n, 2000);
            FaultyDisk disk(static_cast<unsigned>(n));
            disk.put(kTestFile, old_);
            const auto store = driver_.open(disk, writing());
            disk.failAt(n, error);
            int number = 0;
            try {
                work(*store);
            } catch (const EngineError& e) {
                number = e.number();
            }
            finished = !disk.hasFailed();
            if (number != 0) {
                if (error == RunErrorNumber::DiskFull) {
                    EXPECT_EQ(number, 3026) << "failing at " << n;
                }
                EXPECT_EQ(dumpTable(*store, "Orders") == oldDump_, true) << "failing at " << n;
                disk.clearFaults();
                work(*store);
            }
            EXPECT_EQ(dumpTable(*store, "Orders") == newDump_, true) << "failing at " << n;
            expectSound(*store, n);
        }
    }
}

TEST_P(Faults, cursorsAndWritersInUseOutliveAFailedCommit)
{
    FaultyDisk disk;
    disk.put(kTestFile, old_);
    const auto store = driver_.open(disk, writing());
    const auto writer = store->writer("Orders");
    const auto cursor = store->cursor("Orders", std::nullopt);
    const auto byName = store->cursor("Orders", "Name");
    ASSERT_TRUE(cursor->first() && cursor->next());
    ASSERT_TRUE(byName->first() && byName->next());
    const RowId here = cursor->row();
    const auto add = [&](int count) {
        std::vector<ValueView> row(3);
        const std::string notes(4500, 'x');
        for (int i = 0; i < count; ++i) {
            row[1] = ValueView::text("another");
            row[2] = ValueView::text(notes);
            writer->insert(row);
        }
    };
    add(100);
    disk.failAt(3, RunErrorNumber::DiskFull, FaultyDisk::Lasts::FromThenOn);
    EXPECT_THROW(store->commit(), EngineError);
    disk.clearFaults();
    EXPECT_EQ(store->recordCount("Orders"), 60);
    EXPECT_EQ(cursor->row(), here);
    EXPECT_FALSE(cursor->field(1).isNull());
    int rest = 2;
    while (cursor->next())
        ++rest;
    EXPECT_EQ(rest, 60);
    rest = 2;
    while (byName->next())
        ++rest;
    EXPECT_EQ(rest, 60);
    add(5);
    store->commit();
    EXPECT_EQ(store->recordCount("Orders"), 65);
    expectSound(*store, 0);
}

TEST_P(Faults, aTableIsMadeWholeOrNotAtAll)
{
    TableLayout layout = orders();
    layout.name = "Second";
    bool finished = false;
    for (long n = 1; !finished; ++n) {
        ASSERT_LT(n, 2000);
        FaultyDisk disk(static_cast<unsigned>(n));
        disk.put(kTestFile, old_);
        disk.cutAt(n);
        try {
            const auto store = driver_.open(disk, writing());
            store->createTable(layout);
            store->dropTable("Orders");
            store->commit();
            finished = !disk.wasCut();
        } catch (const EngineError&) {
        } catch (const RunError&) {
        }
        disk.restart();
        const auto store = driver_.open(disk, writing());
        expectSound(*store, n);
        int tables = 0;
        for (const TableEntry& table : store->catalogue())
            if (table.attributes == 0) {
                store->layout(table.name);
                ++tables;
            }
        EXPECT_TRUE(tables == 1 || tables == 2) << "cut at " << n;
    }
}

TEST_P(Faults, aDatabaseIsMadeWholeOrNotAtAll)
{
    bool finished = false;
    for (long n = 1; !finished; ++n) {
        ASSERT_LT(n, 2000);
        FaultyDisk disk(static_cast<unsigned>(n));
        disk.put("C:\\OTHER.TXT", std::vector<std::uint8_t>{1});
        disk.cutAt(n);
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        try {
            driver_.create(disk, request);
            finished = !disk.wasCut();
        } catch (const EngineError&) {
        } catch (const RunError&) {
        }
        disk.restart();
        if (!disk.fileExists(kTestFile)) {
            EXPECT_FALSE(finished);
            continue;
        }
        const auto store = driver_.open(disk, reading());
        EXPECT_EQ(store->catalogue().size(), 4u) << "cut at " << n;
        expectSound(*store, n);
    }
}

INSTANTIATE_TEST_SUITE_P(Jet, Faults, ::testing::Values(3, 4));

}  // namespace
}  // namespace velnor::testing
