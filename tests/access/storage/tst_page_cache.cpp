#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

#include "access/storage/page_cache.h"

using namespace velnor;

namespace {

TEST(PageCacheTest, cleanPagesAreBounded)
{
    PageCache cache(16, 16 * 20);
    for (std::uint32_t number = 0; number < 1000; ++number)
        cache.insert(number);
    EXPECT_EQ(cache.size(), 20u);
    EXPECT_NE(cache.find(999), nullptr);
}

TEST(PageCacheTest, pagesInUseStayLongerThanOthers)
{
    PageCache cache(16, 16 * 20);
    for (std::uint32_t number = 0; number < 1000; ++number) {
        cache.insert(number);
        ASSERT_NE(cache.find(0), nullptr) << number;
    }
}

TEST(PageCacheTest, changedAndHeldPagesAreNeverEvicted)
{
    PageCache cache(16, 0);
    for (std::uint32_t number = 0; number < 50; ++number)
        cache.markChanged(cache.insert(number));
    for (std::uint32_t number = 50; number < 100; ++number)
        ++cache.insert(number).pins;
    for (std::uint32_t number = 100; number < 200; ++number)
        cache.insert(number);
    for (std::uint32_t number = 0; number < 100; ++number)
        ASSERT_NE(cache.find(number), nullptr) << number;
    for (std::uint32_t number = 50; number < 100; ++number)
        cache.find(number)->release();
    cache.changesAreSaved();
    EXPECT_EQ(cache.size(), 8u);
    EXPECT_TRUE(cache.changed().empty());
}

TEST(PageCacheTest, aSpareThatWasNotInsertedIsNotFound)
{
    PageCache cache(16, 160);
    cache.insert(1);
    cache.spare().number = 2;
    EXPECT_EQ(cache.find(2), nullptr);
    const PageSlot* spare = &cache.spare();
    EXPECT_EQ(spare, &cache.insert(3));
}

TEST(PageCacheTest, aHeldPageThatIsDroppedLivesUntilItIsLetGo)
{
    PageCache cache(16, 160);
    PageSlot& slot = cache.insert(4);
    ++slot.pins;
    slot.bytes[0] = 9;
    cache.drop(slot);
    EXPECT_EQ(cache.find(4), nullptr);
    EXPECT_TRUE(slot.detached);
    EXPECT_EQ(slot.bytes[0], 9);
    slot.release();
}

/// Against a plain set of numbers: with numbers that meet in the table.
TEST(PageCacheTest, randomWorkKeepsTheTableRight)
{
    std::mt19937 random(3);
    PageCache cache(4, 4 * 64);
    std::set<std::uint32_t> changed;
    for (int step = 0; step < 200000; ++step) {
        const std::uint32_t number = random() % 4 ? random() % 300 : (random() % 300) << 23;
        PageSlot* slot = cache.find(number);
        if (changed.contains(number)) {
            ASSERT_NE(slot, nullptr);
        }
        if (slot) {
            ASSERT_EQ(slot->number, number);
            ASSERT_EQ(slot->bytes[0], number & 0xFF);
        } else {
            cache.spare().bytes[0] = number & 0xFF;
            slot = &cache.insert(number);
        }
        switch (random() % 16) {
        case 0:
            cache.drop(*slot);
            changed.erase(number);
            break;
        case 1:
        case 2:
        case 3:
            cache.markChanged(*slot);
            changed.insert(number);
            break;
        case 4:
            if (slot->changed) {
                cache.markClean(*slot);
                changed.erase(number);
            }
            break;
        default:
            break;
        }
        if (step % 5000 == 0) {
            cache.dropFrom(200, 500u << 23);
            changed.erase(changed.lower_bound(200), changed.end());
        }
        if (step % 9000 == 0) {
            cache.changesAreSaved();
            changed.clear();
            ASSERT_LE(cache.size(), 64u);
        }
        ASSERT_EQ(cache.changed().size(), changed.size());
    }
}

}  // namespace
