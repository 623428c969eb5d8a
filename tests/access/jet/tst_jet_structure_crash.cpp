// The disk is full, fails, or loses power while the structure of a table changes, and while a long
// append keeps index entries aside: each step is done or not done.
#include <functional>
#include <set>

#include "tests/access/jet/structure_testing.h"
#include "tests/support/faulty_disk.h"

namespace velnor::testing {
namespace {

using Step = std::function<void(Store&)>;

void addRecords(Store& store, int count, int from)
{
    const auto writer = store.writer("T");
    const std::size_t fields = store.layout("T").fields.size();
    for (int i = from; i < from + count; ++i) {
        const std::string name = "name " + std::to_string(i * 37 % 1000);
        const std::string note(static_cast<std::size_t>(i * 131 % 900), 'n');
        std::vector<ValueView> row(fields);
        row[0] = ValueView::integer(i);
        row[1] = ValueView::text(name);
        row[2] = ValueView::text(note);
        writer->insert(row);
    }
    store.commit();
}

/// One change of each kind, with records before, between and after.
std::vector<Step> steps()
{
    return {
        [](Store& store) {
            store.addIndex("T", primaryKey({{"ID", false}}));
        },
        [](Store& store) { addRecords(store, 150, 1000); },
        [](Store& store) {
            store.addIndex("T", indexNamed("ByName", {{"NAME", true}, {"ID", false}}));
        },
        [](Store& store) {
            FieldDef city = fieldDef("CITY", FieldType::Text, 30);
            city.required = true;
            store.addField("T", city);
        },
        [](Store& store) { store.addField("T", fieldDef("MORE", FieldType::Memo)); },
        [](Store& store) { addRecords(store, 100, 3000); },
        [](Store& store) { store.dropIndex("T", "ByName"); },
        [](Store& store) { store.dropField("T", "NOTE"); },
        [](Store& store) { store.dropField("T", "CITY"); },
        [](Store& store) { store.addField("T", fieldDef("SIZE", FieldType::Double)); },
    };
}

/// Structure and records, also in the order of every index.
std::string stateOf(Store& store)
{
    std::string state;
    const TableLayout layout = store.layout("T");
    for (const FieldDef& field : layout.fields)
        state += field.name + (field.required ? "!" : "") + ";";
    for (const IndexDef& index : layout.indexes) {
        state += "\n" + index.name + ":";
        const auto cursor = store.cursor("T", index.name);
        for (bool on = cursor->first(); on; on = cursor->next())
            state += " " + std::to_string(cursor->row());
    }
    return state + "\n" + dumpTable(store, "T");
}

class StructureFaults : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        MemoryFileSystem files;
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files, request);
        const auto store = driver_.open(files, writing());
        TableLayout layout;
        layout.name = "T";
        layout.fields = {fieldDef("ID", FieldType::Long), fieldDef("NAME", FieldType::Text, 40),
                         fieldDef("NOTE", FieldType::Memo)};
        store->createTable(layout);
        addRecords(*store, 120, 1);
        start_ = files.content(kTestFile);
        states_.push_back(stateOf(*store));
        for (const Step& step : steps()) {
            step(*store);
            states_.push_back(stateOf(*store));
        }
    }
    static void expectSound(Store& store, long n)
    {
        store.check({}, [&](const Problem& problem) {
            if (!problem.harmless)
                ADD_FAILURE() << "fault at " << n << ": " << problem.where << ": " << problem.text;
        });
    }

    jet::JetDriver driver_;
    std::vector<std::uint8_t> start_;
    std::vector<std::string> states_;  // before, between and after the steps
};

TEST_P(StructureFaults, aPowerCutAtAnyMomentLeavesAStepDoneOrNotDone)
{
    bool finished = false;
    std::set<std::size_t> seen;
    for (long n = 1; !finished; ++n) {
        ASSERT_LT(n, 3000);
        FaultyDisk disk(static_cast<unsigned>(n));
        disk.put(kTestFile, start_);
        disk.cutAt(n);
        std::size_t done = 0;
        try {
            const auto store = driver_.open(disk, writing());
            for (const Step& step : steps()) {
                step(*store);
                ++done;
            }
            finished = !disk.wasCut();
        } catch (const EngineError&) {
        } catch (const RunError&) {
        }
        disk.restart();
        const auto store = driver_.open(disk, writing());
        const std::string state = stateOf(*store);
        const bool right =
            state == states_[done] || (done + 1 < states_.size() && state == states_[done + 1]);
        EXPECT_TRUE(right) << "cut at " << n << " in step " << done;
        seen.insert(done);
        if (n % 4 == 0)
            expectSound(*store, n);
    }
    EXPECT_EQ(seen.size(), states_.size());
}

TEST_P(StructureFaults, aFailingDiskLeavesTheStateBeforeTheStep)
{
    for (const RunErrorNumber error : {RunErrorNumber::DiskFull, RunErrorNumber::DeviceIo}) {
        bool finished = false;
        for (long n = 1; !finished; ++n) {
            ASSERT_LT(n, 3000);
            FaultyDisk disk(static_cast<unsigned>(n));
            disk.put(kTestFile, start_);
            const auto store = driver_.open(disk, writing());
            disk.failAt(n, error);
            const std::vector<Step> all = steps();
            for (std::size_t i = 0; i < all.size(); ++i) {
                int number = 0;
                try {
                    all[i](*store);
                } catch (const EngineError& e) {
                    number = e.number();
                }
                if (number == 0)
                    continue;
                if (error == RunErrorNumber::DiskFull) {
                    EXPECT_EQ(number, 3026) << "failing at " << n;
                }
                EXPECT_EQ(stateOf(*store) == states_[i], true)
                    << "failing at " << n << " in step " << i;
                disk.clearFaults();
                all[i](*store);
            }
            finished = !disk.hasFailed();
            EXPECT_EQ(stateOf(*store) == states_.back(), true) << "failing at " << n;
            if (n % 8 == 0)
                expectSound(*store, n);
        }
    }
}

/// Entries that wait are no part of the file before a commit, and must not outlive a failed one.
TEST_P(StructureFaults, entriesThatWaitGoWithAFailedCommit)
{
    FaultyDisk disk;
    disk.put(kTestFile, start_);
    const auto store = driver_.open(disk, writing());
    store->addIndex("T", indexNamed("ByName", {{"NAME", false}}));
    const std::string before = stateOf(*store);
    disk.failAt(3, RunErrorNumber::DiskFull, FaultyDisk::Lasts::FromThenOn);
    EXPECT_EQ(errorOf([&] { addRecords(*store, 500, 1000); }), 3026);
    disk.clearFaults();
    EXPECT_EQ(stateOf(*store) == before, true);
    expectSound(*store, 3);
    addRecords(*store, 500, 1000);
    EXPECT_EQ(store->recordCount("T"), 620);
    expectSound(*store, 0);
}

INSTANTIATE_TEST_SUITE_P(Jet, StructureFaults, ::testing::Values(3, 4));

}  // namespace
}  // namespace velnor::testing
