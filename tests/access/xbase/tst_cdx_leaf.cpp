// Packed leaves: entries that come in without unpacking them give what packing all keys gives.
#include "access/formats/xbase/cdx_leaf.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

namespace {

using namespace velnor::xbase;

using Bytes = std::array<std::uint8_t, kCdxNodeBytes>;

TreeNode emptyLeaf(std::uint32_t keyLength)
{
    TreeNode node;
    node.at = 1024;
    node.keyLength = keyLength;
    return node;
}

Bytes packed(const TreeNode& node, std::uint8_t pad)
{
    Bytes bytes{};
    EXPECT_TRUE(encodeCdxNode(node, pad, false, bytes));
    return bytes;
}

std::size_t placeOf(const TreeNode& node, const std::vector<std::uint8_t>& key,
                    std::uint32_t record)
{
    std::size_t at = 0;
    for (; at < node.count(); ++at) {
        const int by = std::memcmp(node.key(at), key.data(), key.size());
        if (by > 0 || (by == 0 && node.records[at] > record))
            break;
    }
    return at;
}

TEST(CdxLeaf, anEntryComesIntoThePackedBytes)
{
    std::mt19937 random(1);
    int entered = 0, refused = 0;
    for (int round = 0; round < 4000; ++round) {
        const auto length = static_cast<std::uint32_t>(1 + random() % 40);
        const std::uint8_t pad = random() % 2 ? ' ' : 0;
        TreeNode node = emptyLeaf(length);
        const std::uint32_t most = random() % 2 ? 200 : 5'000'000;
        for (int i = 0; i < 120; ++i) {
            std::vector<std::uint8_t> key(length, pad);
            const std::size_t used = random() % (length + 1);
            for (std::size_t n = 0; n < used; ++n)
                key[n] = static_cast<std::uint8_t>(random() % 6 ? 'a' + random() % 2 : random());
            const std::uint32_t record = 1 + random() % most;
            const std::size_t place = placeOf(node, key, record);
            if (place > 0 && node.records[place - 1] == record &&
                std::memcmp(node.key(place - 1), key.data(), length) == 0)
                continue;
            TreeNode wanted = node;
            wanted.insertKey(place, key.data(), record);
            Bytes bytes = packed(node, pad);
            const Bytes before = bytes;
            if (!insertIntoCdxLeaf(bytes, length, pad, key.data(), record)) {
                ++refused;
                ASSERT_EQ(bytes, before);
            } else {
                ++entered;
                TreeNode found = emptyLeaf(length);
                decodeCdxNode(bytes, pad, found);
                ASSERT_EQ(found.records, wanted.records);
                ASSERT_EQ(found.keys, wanted.keys);
            }
            if (!cdxNodeFits(wanted, pad))
                break;
            node = std::move(wanted);
        }
    }
    EXPECT_GT(entered, 50'000);
    EXPECT_GT(refused, 1000);
}

/// A node of random keys that begin alike, in order.
TreeNode randomNode(std::mt19937& random, std::uint32_t length, std::uint8_t pad, std::size_t most)
{
    TreeNode node = emptyLeaf(length);
    for (std::size_t i = 0; i < most; ++i) {
        std::vector<std::uint8_t> key(length, pad);
        for (std::size_t n = 0; n < random() % (length + 1); ++n)
            key[n] = static_cast<std::uint8_t>('a' + random() % 2);
        TreeNode more = node;
        const std::uint32_t record = 1 + random() % 500;
        more.insertKey(placeOf(node, key, record), key.data(), record);
        if (!cdxNodeFits(more, pad))
            break;
        node = std::move(more);
    }
    return node;
}

/// The first entry that is not in front of what is wanted, by looking at each.
std::size_t foundByLooking(const TreeNode& node, const Wanted& wanted)
{
    std::size_t at = 0;
    while (at < node.count() && wanted.isBehind(node.key(at), node.records[at]))
        ++at;
    return at;
}

TEST(CdxLeaf, aSearchInThePackedBytesFindsWhatLookingAtEachKeyFinds)
{
    std::mt19937 random(3);
    for (int round = 0; round < 3000; ++round) {
        const auto length = static_cast<std::uint32_t>(1 + random() % 30);
        const std::uint8_t pad = random() % 2 ? ' ' : 0;
        const TreeNode node = randomNode(random, length, pad, random() % 100);
        const Bytes bytes = packed(node, pad);
        for (int i = 0; i < 30; ++i) {
            std::vector<std::uint8_t> key(length, pad);
            if (node.count() && random() % 3)
                key.assign(node.key(0), node.key(1));
            if (node.count() && random() % 3) {
                const std::size_t at = random() % node.count();
                key.assign(node.key(at), node.key(at) + length);
            }
            if (random() % 2)
                key[random() % length] = static_cast<std::uint8_t>('a' + random() % 2);
            const bool whole = random() % 2;
            const Wanted wanted{key.data(), whole ? length : random() % (length + 1),
                                whole ? static_cast<std::uint32_t>(random() % 500) : 0,
                                random() % 2 == 0};
            NodeHit hit;
            ASSERT_TRUE(searchCdxNode(bytes, length, pad, wanted, hit));
            ASSERT_TRUE(hit.leaf);
            ASSERT_EQ(hit.count, node.count());
            ASSERT_EQ(hit.index, foundByLooking(node, wanted));
            if (hit.index == node.count())
                continue;
            ASSERT_EQ(hit.record, node.records[hit.index]);
            ASSERT_EQ(std::memcmp(hit.key.data(), node.key(hit.index), length), 0);
        }
    }
}

TEST(CdxLeaf, aSearchInTheBytesOfAnInnerNodeFindsTheChild)
{
    std::mt19937 random(4);
    for (int round = 0; round < 1000; ++round) {
        TreeNode node = randomNode(random, 8, ' ', 1 + random() % cdxMostItems(8));
        node.leaf = false;
        for (std::size_t i = 0; i < node.count(); ++i)
            node.children.push_back(static_cast<std::uint32_t>(1024 + 512 * i));
        const Bytes bytes = packed(node, ' ');
        for (int i = 0; i < 30; ++i) {
            const std::size_t at = random() % node.count();
            const bool whole = random() % 2;
            const Wanted wanted{node.key(at), whole ? 8u : 3u,
                                whole ? static_cast<std::uint32_t>(random() % 500) : 0,
                                random() % 2 == 0};
            NodeHit hit;
            ASSERT_TRUE(searchCdxNode(bytes, 8, ' ', wanted, hit));
            ASSERT_FALSE(hit.leaf);
            ASSERT_EQ(hit.index, std::min(foundByLooking(node, wanted), node.count() - 1));
            ASSERT_EQ(hit.child, node.children[hit.index]);
        }
    }
}

TEST(CdxLeaf, rubbishIsNotWrittenInto)
{
    std::mt19937 random(2);
    for (int round = 0; round < 20000; ++round) {
        TreeNode node = emptyLeaf(12);
        for (std::uint32_t i = 0; i < 20; ++i) {
            std::array<std::uint8_t, 12> key{};
            key[0] = static_cast<std::uint8_t>(i * 10);
            node.insertKey(i, key.data(), i + 1);
        }
        static const Bytes good = packed(node, 0);
        Bytes bytes = good;
        for (unsigned flips = 1 + random() % 4; flips-- > 0;)
            bytes[random() % (random() % 2 ? 40 : kCdxNodeBytes)] ^=
                static_cast<std::uint8_t>(1u << random() % 8);
        std::array<std::uint8_t, 12> key{};
        key[0] = static_cast<std::uint8_t>(random());
        insertIntoCdxLeaf(bytes, 12, 0, key.data(), 1 + random() % 100);  // no fault of memory
        NodeHit hit;
        searchCdxNode(bytes, 12, 0, {key.data(), 12, 0, false}, hit);
    }
}

}  // namespace
