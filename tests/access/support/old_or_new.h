// tests/access/support/old_or_new.h - a commit that the power or the disk ends: the table is the
// old one or the new one.
#pragma once

#include <functional>

#include "tests/access/support/store_testing.h"
#include "tests/support/faulty_disk.h"

namespace velnor::store_testing {

/// One format's table for these tests.
struct Scene {
    std::function<void(testing::FaultyDisk&)> make;     ///< the table, with `rows` records
    std::function<void(testing::FaultyDisk&)> work;     ///< many changes in one commit
    std::function<void(testing::FaultyDisk&)> addOne;   ///< one record more
    std::function<Lines(testing::FaultyDisk&)> rowsOn;  ///< its records, after a check
    std::string path;                                   ///< of its main file
    std::size_t rows;                                   ///< of the new table
    int cuts;                                           ///< moments at least that leave the old one
};

/// `breakAt(disk, n)` does the scene's work on a disk that fails at its change n; false when the
/// work ended before.
template <class Break> void expectOldOrNew(const Scene& scene, Break breakAt)
{
    testing::FaultyDisk sound;
    scene.make(sound);
    const Lines before = scene.rowsOn(sound);
    scene.work(sound);
    const Lines after = scene.rowsOn(sound);
    ASSERT_NE(before, after);
    int old = 0;
    for (long n = 1;; ++n) {
        testing::FaultyDisk disk(static_cast<unsigned>(n));
        scene.make(disk);
        if (!breakAt(disk, n))
            break;
        disk.restart();
        const Lines now = scene.rowsOn(disk);
        ASSERT_TRUE(now == before || now == after) << "at change " << n;
        old += now == before;
        scene.addOne(disk);  // and it can be written again
        ASSERT_EQ(scene.rowsOn(disk).size(), now.size() + 1);
    }
    EXPECT_GT(old, scene.cuts);
}

inline void expectOldOrNewAfterAPowerCut(const Scene& scene)
{
    expectOldOrNew(scene, [&](testing::FaultyDisk& disk, long n) {
        disk.cutAt(n);
        try {
            scene.work(disk);
        } catch (const std::exception&) {
        }
        return disk.wasCut();
    });
}

inline void expectOldOrNewAfterAFailedWrite(const Scene& scene)
{
    expectOldOrNew(scene, [&](testing::FaultyDisk& disk, long n) {
        disk.failAt(n, RunErrorNumber::DeviceIo);
        try {
            scene.work(disk);
        } catch (const EngineError&) {
        }
        return disk.hasFailed();
    });
}

inline void expectAFullDiskIsTold(const Scene& scene)
{
    testing::FaultyDisk disk;
    scene.make(disk);
    const Lines before = scene.rowsOn(disk);
    disk.failAt(1, RunErrorNumber::DiskFull, testing::FaultyDisk::Lasts::FromThenOn);
    EXPECT_EQ(errorOf([&] { scene.work(disk); }), 3026);
    disk.restart();
    EXPECT_EQ(scene.rowsOn(disk), before);
}

inline void expectANewTableWholeOrNotAtAll(const Scene& scene)
{
    for (long n = 1;; ++n) {
        testing::FaultyDisk disk(static_cast<unsigned>(n));
        disk.cutAt(n);
        try {
            scene.make(disk);
        } catch (const std::exception&) {
        }
        if (!disk.wasCut())
            break;
        disk.restart();
        if (!disk.exists(scene.path))
            continue;
        const std::size_t rows = scene.rowsOn(disk).size();
        EXPECT_TRUE(rows == 0 || rows == scene.rows) << "at change " << n << ": " << rows;
    }
}

}  // namespace velnor::store_testing
