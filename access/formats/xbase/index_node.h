// access/formats/xbase/index_node.h - a node of an index tree, decoded, and what keeps nodes.
//
// All kinds of index files keep trees of pages; they differ in how a page holds its keys. A
// NodeStore turns pages into nodes and back. Keys of a node are in a form that compares byte by
// byte ("order keys"), rising, whatever the file has.
// A leaf has entries: a key and a record number each. An inner node has children; key i is the last
// key below child i. Where a store says `lastChildHasKey` is false there is one child more than
// keys.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace velnor::xbase {

inline constexpr std::uint32_t kNoNode = 0xFFFFFFFF;
inline constexpr std::size_t kLongestKey = 256;

struct TreeNode {
    std::uint32_t at = kNoNode;
    bool leaf = true;
    std::uint16_t marks = 0;       ///< what the file has beside; kept
    std::uint32_t left = kNoNode;  ///< siblings, where the file links them
    std::uint32_t right = kNoNode;
    std::uint32_t keyLength = 0;
    std::vector<std::uint8_t> keys;      ///< one behind the other
    std::vector<std::uint32_t> records;  ///< one a key
    std::vector<std::uint32_t> children;

    std::size_t count() const { return records.size(); }
    const std::uint8_t* key(std::size_t i) const { return keys.data() + i * keyLength; }
    void clear();
    void insertKey(std::size_t i, const std::uint8_t* key, std::uint32_t record);
    void eraseKey(std::size_t i);
    void setKey(std::size_t i, const std::uint8_t* key, std::uint32_t record);
    /// Takes over the keys from `first` on, and so many of them.
    void takeKeys(const TreeNode& from, std::size_t first, std::size_t number);
};

/// Entries in rising order, for building a tree.
struct SortedEntries {
    std::uint32_t keyLength = 0;
    const std::uint8_t* keys = nullptr;
    const std::uint32_t* records = nullptr;
    std::size_t count = 0;

    const std::uint8_t* key(std::size_t i) const { return keys + i * keyLength; }
};

/// What a search looks for: the first key that begins with these bytes or is behind them; among
/// equal keys the first whose record is not less, unless that is 0. `behind`: past equal ones.
struct Wanted {
    const std::uint8_t* key = nullptr;
    std::size_t length = 0;
    std::uint32_t record = 0;
    bool behind = false;

    /// Whether the place that is looked for lies behind this key.
    bool isBehind(const std::uint8_t* other, std::uint32_t otherRecord) const
    {
        int by = std::memcmp(other, key, length);
        if (by == 0 && record != 0)
            by = (otherRecord > record) - (otherRecord < record);
        return behind ? by <= 0 : by < 0;
    }
};

/// What a search finds in a node that it does not decode: the child to go on with, or the first
/// entry of a leaf that is not in front of what is wanted (index == count: there is none).
struct NodeHit {
    bool leaf = false;
    std::size_t index = 0;
    std::uint32_t child = kNoNode;  ///< of an inner node
    std::size_t count = 0;          ///< of a leaf; so are the next two
    std::uint32_t record = 0;
    std::array<std::uint8_t, kLongestKey> key;
};

class NodeStore {
public:
    virtual ~NodeStore() = default;
    std::uint32_t keyLength() const { return keyLength_; }
    /// Equal keys are ordered by their record numbers, in inner nodes as well.
    bool recordsAreOrdered() const { return lastChildHasKey_; }
    bool lastChildHasKey() const { return lastChildHasKey_; }
    bool linksSiblings() const { return lastChildHasKey_; }

    virtual std::uint32_t root() const = 0;
    virtual void setRoot(std::uint32_t at) = 0;
    /// 3197 when there is no sound node.
    virtual void load(std::uint32_t at, TreeNode& node) = 0;
    virtual bool fits(const TreeNode& node) const = 0;
    virtual void store(const TreeNode& node) = 0;
    /// Stores it when it fits.
    virtual bool storeIfFits(const TreeNode& node)
    {
        const bool there = fits(node);
        if (there)
            store(node);
        return there;
    }
    /// Searches the node at a place without decoding it. False where that does not go, or the node
    /// is not sound.
    virtual bool search(std::uint32_t, const Wanted&, NodeHit&) { return false; }
    /// Enters a key into the leaf at a place, in front of others. False, and nothing is changed,
    /// where that does not go without decoding the leaf.
    virtual bool insertInLeaf(std::uint32_t, const std::uint8_t*, std::uint32_t) { return false; }
    virtual bool insertsInLeaves() const { return false; }
    virtual std::uint32_t allocate() = 0;
    virtual void release(std::uint32_t at) = 0;
    /// All nodes of this tree at once; the root is then kNoNode.
    virtual void releaseAll(std::span<const std::uint32_t> nodes) = 0;
    /// How many entries from `first` on fill a leaf.
    virtual std::size_t fill(const SortedEntries& entries, std::size_t first) = 0;
    /// Stores as many entries from `first` on as fill() has just said; `leaf`: place and siblings.
    virtual void storeFilled(const SortedEntries& entries, std::size_t first, std::size_t count,
                             TreeNode& leaf);
    /// Children of a full inner node.
    virtual std::size_t mostChildren() const = 0;
    /// More nodes than there can be: ends every walk.
    virtual std::uint64_t mostNodes() const = 0;

protected:
    NodeStore(std::uint32_t keyLength, bool lastChildHasKey)
        : keyLength_(keyLength), lastChildHasKey_(lastChildHasKey)
    {
    }
    std::uint32_t keyLength_;

private:
    bool lastChildHasKey_;
};

}  // namespace velnor::xbase
