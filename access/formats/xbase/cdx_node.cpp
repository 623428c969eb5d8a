#include "access/formats/xbase/cdx_node.h"

#include <algorithm>
#include <cstring>

#include "access/engine_error.h"
#include "access/formats/xbase/cdx_leaf.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kInnerHead = 12;
constexpr std::uint16_t kRoot = 1, kLeaf = 2;

[[noreturn]] void damaged(const char* how)
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      std::string("A node of an index is damaged: ") + how + ".");
}

void decodeInner(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::size_t count,
                 TreeNode& node)
{
    if (count > cdxMostItems(node.keyLength))
        damaged("its entries do not fit");
    const std::uint8_t* p = bytes.data() + kInnerHead;
    node.keys.resize(count * node.keyLength);
    node.records.resize(count);
    node.children.resize(count);
    for (std::size_t i = 0; i < count; ++i, p += node.keyLength + 8) {
        std::memcpy(node.keys.data() + i * node.keyLength, p, node.keyLength);
        node.records[i] = loadBE<std::uint32_t>(p + node.keyLength);
        node.children[i] = loadBE<std::uint32_t>(p + node.keyLength + 4);
    }
}

bool searchInner(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint32_t keyLength,
                 const Wanted& wanted, NodeHit& hit)
{
    const std::size_t count = loadLE<std::uint16_t>(bytes.data() + 2);
    if (count == 0 || count > cdxMostItems(keyLength))
        return false;
    const auto item = [&](std::size_t i) {
        return bytes.data() + kInnerHead + i * (keyLength + 8);
    };
    std::size_t low = 0, high = count;
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        const std::uint8_t* key = item(middle);
        if (wanted.isBehind(key, loadBE<std::uint32_t>(key + keyLength)))
            low = middle + 1;
        else
            high = middle;
    }
    hit.index = std::min(low, count - 1);
    hit.child = loadBE<std::uint32_t>(item(hit.index) + keyLength + 4);
    return true;
}

/// False when they do not all fit.
bool pack(const TreeNode& node, CdxLeafPacker& packer)
{
    packer.begin();
    for (std::size_t i = 0; i < node.count(); ++i)
        if (!packer.add(node.key(i), i ? node.key(i - 1) : nullptr, node.records[i]))
            return false;
    return true;
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
        decodeCdxLeaf(bytes, pad, node);
    else
        decodeInner(bytes, count, node);
}

bool searchCdxNode(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint32_t keyLength,
                   std::uint8_t pad, const Wanted& wanted, NodeHit& hit)
{
    hit.leaf = loadLE<std::uint16_t>(bytes.data()) & kLeaf;
    return hit.leaf ? searchCdxLeaf(bytes, keyLength, pad, wanted, hit)
                    : searchInner(bytes, keyLength, wanted, hit);
}

void putCdxHead(const TreeNode& node, bool root, std::span<std::uint8_t, kCdxNodeBytes> bytes)
{
    std::uint8_t* p = bytes.data();
    storeLE(p,
            static_cast<std::uint16_t>(node.marks | (root ? kRoot : 0) | (node.leaf ? kLeaf : 0)));
    storeLE(p + 4, node.left);
    storeLE(p + 8, node.right);
}

bool encodeCdxNode(const TreeNode& node, std::uint8_t pad, bool root,
                   std::span<std::uint8_t, kCdxNodeBytes> bytes)
{
    std::uint8_t* p = bytes.data();
    if (node.leaf) {
        CdxLeafPacker packer(node.keyLength, pad);
        if (!pack(node, packer))
            return false;
        packer.write(node.keys.data(), node.records.data(), bytes);
        putCdxHead(node, root, bytes);
        return true;
    }
    if (node.count() > cdxMostItems(node.keyLength))
        return false;
    std::memset(p, 0, kCdxNodeBytes);
    storeLE(p + 2, static_cast<std::uint16_t>(node.count()));
    putCdxHead(node, root, bytes);
    p += kInnerHead;
    for (std::size_t i = 0; i < node.count(); ++i, p += node.keyLength + 8) {
        std::memcpy(p, node.key(i), node.keyLength);
        storeBE(p + node.keyLength, node.records[i]);
        storeBE(p + node.keyLength + 4, node.children[i]);
    }
    return true;
}

bool cdxNodeFits(const TreeNode& node, std::uint8_t pad)
{
    if (!node.leaf)
        return node.count() <= cdxMostItems(node.keyLength);
    CdxLeafPacker packer(node.keyLength, pad);
    return pack(node, packer);
}

}  // namespace velnor::xbase
