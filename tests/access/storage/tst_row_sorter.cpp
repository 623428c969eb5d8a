// Rows sorted in memory and through a file.
#include "access/storage/row_sorter.h"

#include <algorithm>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"
#include "platform/memory_file_system.h"
#include "tests/support/faulty_disk.h"

namespace {

using namespace velnor;

using Rows = std::vector<std::pair<std::string, std::uint32_t>>;

constexpr std::size_t kNumberBytes = 4, kMuch = 32u << 20;

/// Keys of a few letters, so that many are equal or begin alike, and a number behind each.
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

Rows byKey(Rows rows)
{
    std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
        return std::memcmp(a.first.data(), b.first.data(), a.first.size()) < 0;
    });
    return rows;
}

Rows sortedBy(RowSorter& sorter, const Rows& rows, std::size_t length)
{
    for (const auto& [key, number] : rows) {
        std::uint8_t* row = sorter.add();
        std::memcpy(row, key.data(), length);
        storeLE(row + length, number);
    }
    Rows sorted;
    for (; const std::uint8_t* row = sorter.row(); sorter.next())
        sorted.emplace_back(std::string(reinterpret_cast<const char*>(row), length),
                            loadLE<std::uint32_t>(row + length));
    return sorted;
}

TEST(RowSorter, givesKeysRising_andEqualOnesInTheOrderInWhichTheyCame)
{
    std::mt19937 random(3);
    for (const std::size_t length : {1u, 4u, 6u, 7u, 8u, 9u, 12u, 13u, 30u, 240u})
        for (const std::size_t count : {0u, 1u, 2u, 150u, 5000u}) {
            MemoryFileSystem files;
            const Rows rows = randomRows(random, count, length);
            RowSorter sorter(files, "C:\\SORT", length, length + kNumberBytes, kMuch);
            ASSERT_EQ(sortedBy(sorter, rows, length), byKey(rows)) << length << " bytes, " << count;
            EXPECT_FALSE(sorter.usesFile());
        }
}

TEST(RowSorter, goesToAFileWhenTheMemoryIsFull_andLeavesNone)
{
    std::mt19937 random(4);
    MemoryFileSystem files;
    const Rows rows = randomRows(random, 150'000, 20);  // several chunks
    RowSorter sorter(files, "C:\\SORT", 20, 20 + kNumberBytes, 600'000);
    EXPECT_TRUE(sortedBy(sorter, rows, 20) == byKey(rows));
    EXPECT_TRUE(sorter.usesFile());
    EXPECT_FALSE(files.fileExists("C:\\SORT"));  // not even while it is used
}

TEST(RowSorter, tellsOfAFullDisk)
{
    std::mt19937 random(5);
    velnor::testing::FaultyDisk disk;
    disk.failAt(1, RunErrorNumber::DiskFull);
    RowSorter sorter(disk, "C:\\SORT", 20, 20 + kNumberBytes, 100'000);
    int number = 0;
    try {
        sortedBy(sorter, randomRows(random, 100'000, 20), 20);
    } catch (const EngineError& error) {
        number = error.number();
    }
    EXPECT_EQ(number, 3026);
}

}  // namespace
