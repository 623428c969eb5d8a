#include "access/formats/xbase/cdx_node.h"

#include <algorithm>
#include <bit>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kLeafHead = 24, kInnerHead = 12;
constexpr std::uint16_t kRoot = 1, kLeaf = 2;

[[noreturn]] void damaged(const char* how)
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      std::string("A node of an index is damaged: ") + how + ".");
}

struct Packing {
    std::uint32_t entryBytes, recordBits, countBits;
};

/// The shortest entries that hold this record number.
Packing packingFor(std::uint32_t keyLength, std::uint32_t largestRecord)
{
    const auto countBits = static_cast<std::uint32_t>(std::bit_width(keyLength));
    const auto needed = static_cast<std::uint32_t>(std::bit_width(largestRecord)) + 2 * countBits;
    const std::uint32_t bytes = std::max(2u, (needed + 7) / 8);
    return {bytes, std::min(32u, bytes * 8 - 2 * countBits), countBits};
}

/// What a leaf leaves out of a key.
struct Shares {
    std::uint32_t before, pads;
};
Shares sharesOf(const std::uint8_t* key, const std::uint8_t* before, std::uint32_t length,
                std::uint8_t pad)
{
    std::uint32_t end = length;
    while (end > 0 && key[end - 1] == pad)
        --end;
    std::uint32_t same = 0;
    if (before)
        while (same < end && key[same] == before[same])
            ++same;
    return {same, length - end};
}

std::uint64_t loadEntry(const std::uint8_t* p, std::uint32_t bytes)
{
    std::uint64_t value = 0;
    for (std::uint32_t i = bytes; i-- > 0;)
        value = value << 8 | p[i];
    return value;
}

void decodeLeaf(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::size_t count,
                std::uint8_t pad, TreeNode& node)
{
    const std::uint8_t* p = bytes.data();
    const auto recordMask = loadLE<std::uint32_t>(p + 14);
    const std::uint32_t beforeMask = p[18], padMask = p[19], recordBits = p[20];
    const std::uint32_t beforeBits = p[21], entryBytes = p[23];
    if (count == 0)
        return;
    if (entryBytes < 1 || entryBytes > 8 || recordBits > 32 || beforeBits > 16 ||
        kLeafHead + count * entryBytes > kCdxNodeBytes)
        damaged("its entries do not fit");
    const std::uint32_t length = node.keyLength;
    const std::size_t lowest = kLeafHead + count * entryBytes;
    node.keys.resize(count * length);
    node.records.resize(count);
    std::size_t end = kCdxNodeBytes;
    std::uint8_t* key = node.keys.data();
    for (std::size_t i = 0; i < count; ++i, key += length) {
        const std::uint64_t entry = loadEntry(p + kLeafHead + i * entryBytes, entryBytes);
        const auto before = static_cast<std::uint32_t>(entry >> recordBits) & beforeMask;
        const auto pads = static_cast<std::uint32_t>(entry >> (recordBits + beforeBits)) & padMask;
        if (before + pads > length || (i == 0 && before))
            damaged("a key is longer than keys are");
        const std::uint32_t stored = length - before - pads;
        if (end < lowest + stored)
            damaged("its keys do not fit");
        end -= stored;
        if (before)
            std::memcpy(key, key - length, before);
        std::memcpy(key + before, p + end, stored);
        std::memset(key + before + stored, pad, pads);
        node.records[i] = static_cast<std::uint32_t>(entry) & recordMask;
    }
}

void decodeInner(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::size_t count,
                 TreeNode& node)
{
    if (count > cdxMostItems(node.keyLength))
        damaged("its entries do not fit");
    const std::uint8_t* p = bytes.data() + kInnerHead;
    for (std::size_t i = 0; i < count; ++i, p += node.keyLength + 8) {
        node.keys.insert(node.keys.end(), p, p + node.keyLength);
        node.records.push_back(loadBE<std::uint32_t>(p + node.keyLength));
        node.children.push_back(loadBE<std::uint32_t>(p + node.keyLength + 4));
    }
}

std::size_t leafBytes(const TreeNode& node, std::uint8_t pad)
{
    if (node.count() == 0)
        return kLeafHead;
    const std::uint32_t largest = *std::max_element(node.records.begin(), node.records.end());
    std::size_t bytes = kLeafHead + node.count() * packingFor(node.keyLength, largest).entryBytes;
    for (std::size_t i = 0; i < node.count(); ++i) {
        const Shares shares =
            sharesOf(node.key(i), i ? node.key(i - 1) : nullptr, node.keyLength, pad);
        bytes += node.keyLength - shares.before - shares.pads;
    }
    return bytes;
}

void encodeLeaf(const TreeNode& node, std::uint8_t pad,
                std::span<std::uint8_t, kCdxNodeBytes> bytes)
{
    const std::uint32_t length = node.keyLength;
    const std::uint32_t largest =
        node.count() ? *std::max_element(node.records.begin(), node.records.end()) : 0;
    const Packing packing = packingFor(length, largest);
    std::uint8_t* p = bytes.data();
    std::size_t end = kCdxNodeBytes;
    std::uint8_t* entry = p + kLeafHead;
    for (std::size_t i = 0; i < node.count(); ++i, entry += packing.entryBytes) {
        const std::uint8_t* key = node.key(i);
        const Shares shares = sharesOf(key, i ? node.key(i - 1) : nullptr, length, pad);
        const std::uint32_t stored = length - shares.before - shares.pads;
        end -= stored;
        std::memcpy(p + end, key + shares.before, stored);
        std::uint64_t value = node.records[i] | std::uint64_t{shares.before} << packing.recordBits |
                              std::uint64_t{shares.pads}
                                  << (packing.recordBits + packing.countBits);
        for (std::uint32_t b = 0; b < packing.entryBytes; ++b, value >>= 8)
            entry[b] = static_cast<std::uint8_t>(value);
    }
    const std::size_t free = end - kLeafHead - node.count() * packing.entryBytes;
    storeLE(p + 12, static_cast<std::uint16_t>(free));
    storeLE(p + 14, static_cast<std::uint32_t>((std::uint64_t{1} << packing.recordBits) - 1));
    p[18] = p[19] = static_cast<std::uint8_t>((1u << packing.countBits) - 1);
    p[20] = static_cast<std::uint8_t>(packing.recordBits);
    p[21] = p[22] = static_cast<std::uint8_t>(packing.countBits);
    p[23] = static_cast<std::uint8_t>(packing.entryBytes);
}

}  // namespace

std::size_t cdxMostItems(std::uint32_t keyLength)
{
    return (kCdxNodeBytes - kInnerHead) / (keyLength + 8);
}

void decodeCdxNode(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint8_t pad,
                   TreeNode& node)
{
    node.clear();
    const std::uint8_t* p = bytes.data();
    const auto attributes = loadLE<std::uint16_t>(p);
    const std::size_t count = loadLE<std::uint16_t>(p + 2);
    node.leaf = attributes & kLeaf;
    node.marks = static_cast<std::uint16_t>(attributes & ~(kRoot | kLeaf));
    node.left = loadLE<std::uint32_t>(p + 4);
    node.right = loadLE<std::uint32_t>(p + 8);
    if (node.leaf)
        decodeLeaf(bytes, count, pad, node);
    else
        decodeInner(bytes, count, node);
}

bool cdxNodeFits(const TreeNode& node, std::uint8_t pad)
{
    return node.leaf ? leafBytes(node, pad) <= kCdxNodeBytes
                     : node.count() <= cdxMostItems(node.keyLength);
}

bool encodeCdxNode(const TreeNode& node, std::uint8_t pad, bool root,
                   std::span<std::uint8_t, kCdxNodeBytes> bytes)
{
    if (!cdxNodeFits(node, pad))
        return false;
    std::uint8_t* p = bytes.data();
    std::memset(p, 0, kCdxNodeBytes);
    storeLE(p,
            static_cast<std::uint16_t>(node.marks | (root ? kRoot : 0) | (node.leaf ? kLeaf : 0)));
    storeLE(p + 2, static_cast<std::uint16_t>(node.count()));
    storeLE(p + 4, node.left);
    storeLE(p + 8, node.right);
    if (node.leaf) {
        encodeLeaf(node, pad, bytes);
        return true;
    }
    p += kInnerHead;
    for (std::size_t i = 0; i < node.count(); ++i, p += node.keyLength + 8) {
        std::memcpy(p, node.key(i), node.keyLength);
        storeBE(p + node.keyLength, node.records[i]);
        storeBE(p + node.keyLength + 4, node.children[i]);
    }
    return true;
}

std::size_t cdxLeafFill(const SortedEntries& entries, std::size_t first, std::uint8_t pad)
{
    std::uint32_t largest = 0;
    std::size_t keyBytes = 0, count = 0;
    for (std::size_t i = first; i < entries.count; ++i) {
        const Shares shares =
            sharesOf(entries.key(i), count ? entries.key(i - 1) : nullptr, entries.keyLength, pad);
        keyBytes += entries.keyLength - shares.before - shares.pads;
        largest = std::max(largest, entries.records[i]);
        const std::size_t entryBytes = packingFor(entries.keyLength, largest).entryBytes;
        if (count && kLeafHead + keyBytes + (count + 1) * entryBytes > kCdxNodeBytes)
            break;
        ++count;
    }
    return count;
}

}  // namespace velnor::xbase
