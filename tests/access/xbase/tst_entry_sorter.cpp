#include "access/formats/xbase/entry_sorter.h"

#include <algorithm>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "platform/memory_file_system.h"
#include "tests/support/faulty_disk.h"

namespace {

using namespace velnor;
using namespace velnor::xbase;

using Rows = std::vector<std::pair<std::string, std::uint32_t>>;

/// Keys of a few letters, so that many are equal or begin alike.
Rows randomRows(std::mt19937& random, std::size_t count, std::size_t length)
{
    Rows rows;
    for (std::size_t i = 0; i < count; ++i) {
        std::string key(length, ' ');
        const std::size_t used = random() % (length + 1);
        for (std::size_t n = 0; n < used; ++n)
            key[n] = static_cast<char>(random() % 8 ? 'a' + random() % 3 : random() % 256);
        rows.emplace_back(std::move(key), static_cast<std::uint32_t>(i + 1));
    }
    return rows;
}

Rows sortedBy(EntrySorter& sorter, const Rows& rows, std::uint32_t length)
{
    for (const auto& [key, record] : rows)
        sorter.add(reinterpret_cast<const std::uint8_t*>(key.data()), record);
    EntryList list(length);
    while (sorter.more(list)) {
    }
    Rows sorted;
    for (std::size_t i = 0; i < list.count(); ++i)
        sorted.emplace_back(std::string(reinterpret_cast<const char*>(list.key(i)), length),
                            list.record(i));
    return sorted;
}

TEST(EntrySorter, givesKeysRising_andEqualOnesInTheOrderOfTheirRecords)
{
    std::mt19937 random(3);
    for (const std::uint32_t length : {1u, 4u, 6u, 7u, 8u, 9u, 12u, 13u, 30u, 240u})
        for (const std::size_t count : {0u, 1u, 2u, 150u, 5000u}) {
            MemoryFileSystem files;
            Rows rows = randomRows(random, count, length);
            EntrySorter sorter(files, "C:\\SORT", length);
            const Rows sorted = sortedBy(sorter, rows, length);
            std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
                return std::memcmp(a.first.data(), b.first.data(), a.first.size()) < 0;
            });
            ASSERT_EQ(sorted, rows) << length << " bytes, " << count;
        }
}

TEST(EntrySorter, goesToAFileWhenTheMemoryIsFull_andLeavesNone)
{
    std::mt19937 random(4);
    MemoryFileSystem files;
    Rows rows = randomRows(random, 150'000, 20);  // several chunks
    {
        EntrySorter sorter(files, "C:\\SORT", 20, 600'000);
        for (const auto& [key, record] : rows)
            sorter.add(reinterpret_cast<const std::uint8_t*>(key.data()), record);
        EXPECT_TRUE(files.fileExists("C:\\SORT"));
        const Rows sorted = sortedBy(sorter, {}, 20);
        std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
            return std::memcmp(a.first.data(), b.first.data(), 20) < 0;
        });
        EXPECT_TRUE(sorted == rows);
    }
    EXPECT_FALSE(files.fileExists("C:\\SORT"));
}

TEST(EntrySorter, tellsOfAFullDisk)
{
    std::mt19937 random(5);
    velnor::testing::FaultyDisk disk;
    disk.failAt(1, RunErrorNumber::DiskFull);
    EntrySorter sorter(disk, "C:\\SORT", 20, 100'000);
    int number = 0;
    try {
        sortedBy(sorter, randomRows(random, 100'000, 20), 20);
    } catch (const EngineError& error) {
        number = error.number();
    }
    EXPECT_EQ(number, 3026);
}

}  // namespace
