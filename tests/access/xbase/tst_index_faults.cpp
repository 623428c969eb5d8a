// Tables with indexes while the disk fails or the power goes: table and indexes are both old, or
// both new.
#include "access/formats/xbase/xbase_store.h"
#include "tests/access/xbase/index_testing.h"
#include "tests/support/faulty_disk.h"

namespace {

using namespace velnor;
using namespace velnor::testing;
using namespace velnor::xbase_testing;

using Work = void (*)(Store&);

struct Case {
    const char* word;
    const char* name;
};

class IndexFaults : public ::testing::TestWithParam<Case> {
protected:
    std::unique_ptr<Store> open(FaultyDisk& disk) { return openStore(disk, GetParam().word); }

    void make(FaultyDisk& disk)
    {
        const auto store = open(disk);
        store->createTable(peopleLayout());
        for (int i = 0; i < 60; ++i)
            insertPerson(*store, "P" + std::to_string(i * 37 % 60), i, i);
        const FieldChange note{4, text("a memo")};
        store->writer("T")->update(9, std::span(&note, 1));
        store->writer("T")->remove(8);
        store->commit();
        store->addIndex("T", indexDef("A", {"NAME"}));
        store->addIndex("T", indexDef("B", {"QTY"}));
    }

    /// What the table has, and in what order its indexes show it.
    Rows stateOf(FaultyDisk& disk)
    {
        const auto store = open(disk);
        EXPECT_EQ(faultsOf(*store, "T"), Rows{});
        Rows state = rowsOf(*store, "T");
        for (const IndexDef& def : store->layout("T").indexes) {
            state.push_back(def.name);
            for (const std::string& name : namesBy(*store, def.name))
                state.push_back(name);
        }
        return state;
    }

    template <class Break> void expectOldOrNew(Work work, Break breakAt, int least = 4)
    {
        FaultyDisk sound;
        make(sound);
        const Rows before = stateOf(sound);
        work(*open(sound));
        const Rows after = stateOf(sound);
        ASSERT_NE(before, after);
        int old = 0;
        for (long n = 1; n < 3000; ++n) {
            FaultyDisk disk(static_cast<unsigned>(n));
            make(disk);
            if (!breakAt(disk, n, [&] { work(*open(disk)); }))
                break;
            disk.restart();
            const Rows now = stateOf(disk);
            ASSERT_TRUE(now == before || now == after) << "at change " << n;
            old += now == before;
            const auto store = open(disk);  // and it can be written again
            std::vector<ValueView> more(store->layout("T").fields.size());
            more[0] = text("more");
            store->writer("T")->insert(more);
            store->commit();
            ASSERT_EQ(faultsOf(*store, "T"), Rows{}) << "at change " << n;
        }
        EXPECT_GE(old, least);
    }

    void expectOldOrNew(Work work)
    {
        expectOldOrNew(work, [](FaultyDisk& disk, long n, auto run) {
            disk.cutAt(n);
            try {
                run();
            } catch (const std::exception&) {
            }
            return disk.wasCut();
        });
        expectOldOrNew(work, [](FaultyDisk& disk, long n, auto run) {
            disk.failAt(n, RunErrorNumber::DeviceIo);
            try {
                run();
            } catch (const EngineError&) {
            } catch (const RunError&) {
            }
            return disk.hasFailed();
        });
        expectOldOrNew(
            work,
            [](FaultyDisk& disk, long n, auto run) {
                disk.failAt(n, RunErrorNumber::DiskFull, FaultyDisk::Lasts::FromThenOn);
                try {
                    run();
                } catch (const EngineError&) {
                } catch (const RunError&) {
                }
                return disk.hasFailed();
            },
            1);
    }
};

TEST_P(IndexFaults, changedRecordsAndTheirIndexesComeTogether)
{
    expectOldOrNew([](Store& store) {
        for (int i = 0; i < 200; ++i)
            insertPerson(store, "N" + std::to_string(i * 7 % 200), i - 100, i);
        const FieldChange change{0, text("changed")};
        store.writer("T")->update(3, std::span(&change, 1));
        store.writer("T")->remove(5);
        store.commit();
    });
}

TEST_P(IndexFaults, aNewIndexIsThereWhole_orNot)
{
    expectOldOrNew([](Store& store) { store.addIndex("T", indexDef("C", {"CITY", "NAME"})); });
}

TEST_P(IndexFaults, aDroppedIndexIsGone_orThere)
{
    expectOldOrNew([](Store& store) { store.dropIndex("T", "A"); });
}

TEST_P(IndexFaults, aNewFieldIsThereWithTheIndexes_orNot)
{
    expectOldOrNew([](Store& store) { store.addField("T", fieldDef("X", FieldType::Text, 200)); });
}

TEST_P(IndexFaults, aMemoFieldGoesWithItsFile_orIsThere)
{
    expectOldOrNew([](Store& store) { store.dropField("T", "NOTE"); });
}

TEST_P(IndexFaults, packedFilesComeTogether)
{
    expectOldOrNew([](Store& store) {
        dynamic_cast<xbase::XbaseStore&>(store).pack("T");
        store.writer("T")->remove(3);
        store.commit();
    });
}

TEST_P(IndexFaults, afterAFailedCommit_theSameStoreWalksTheOldIndex)
{
    FaultyDisk disk;
    make(disk);
    const auto store = open(disk);
    const auto cursor = store->cursor("T", "A");
    ASSERT_TRUE(cursor->first());
    const Rows before = namesBy(*store, "A");
    disk.failAt(1, RunErrorNumber::DiskFull);
    for (int i = 0; i < 500; ++i)
        insertPerson(*store, "N" + std::to_string(i), i, i);
    EXPECT_EQ(errorOf([&] { store->commit(); }), 3026);
    EXPECT_EQ(namesBy(*store, "A"), before);
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(shown(cursor->field(0)), "'" + before[1] + "'");
}

INSTANTIATE_TEST_SUITE_P(Kinds, IndexFaults,
                         ::testing::Values(Case{"FoxPro 2.6;", "Cdx"}, Case{"dBASE 5.0;", "Mdx"},
                                           Case{"dBASE III;", "Ndx"}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
