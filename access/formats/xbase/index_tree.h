// access/formats/xbase/index_tree.h - walks and changes the tree of one index, whatever the file.
//
// 1. The key of a child in its parent is its last key, exactly, after every change.
// 2. All leaves are at one depth, and none is empty but the root.
// 3. Without keys for last children no inner node has a single child.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "access/formats/xbase/entry_list.h"
#include "access/formats/xbase/index_node.h"

namespace velnor::xbase {

inline constexpr std::size_t kDeepestTree = 40;

/// Stands between entries while a tree is searched or walked. Good until the tree changes.
class TreeWalker {
public:
    explicit TreeWalker(NodeStore& store) : TreeWalker(store, false) {}

    bool first();
    bool last();
    bool next();
    bool previous();
    /// The first entry whose key begins with `length` bytes not less than these (greater ones,
    /// when `behind`). False when there is none: then it stands behind the last entry.
    bool seek(const std::uint8_t* key, std::size_t length, bool behind = false);
    /// The entry, or when it is not there the first one behind its place; true when it is there.
    bool seekEntry(const std::uint8_t* key, std::uint32_t record);

    bool on() const { return on_; }
    const std::uint8_t* key() const
    {
        return leaf().loaded ? leaf().node.key(leaf().index) : hit_.key.data();
    }
    std::uint32_t record() const
    {
        return leaf().loaded ? leaf().node.records[leaf().index] : hit_.record;
    }

private:
    friend class IndexTree;
    struct Level {
        TreeNode node;
        std::size_t index = 0;
        bool changed = false;
        bool loaded = false;  // a search passes nodes without decoding them
    };
    /// `whole`: every node on the way is decoded, to be changed.
    TreeWalker(NodeStore& store, bool whole);

    const Level& leaf() const { return levels_[depth_ - 1]; }
    Level& leaf() { return levels_[depth_ - 1]; }
    Level& enter(std::uint32_t at);
    Level& load(Level& level);
    Level& push(std::uint32_t at) { return load(enter(at)); }
    bool fall(bool toEnd);
    bool onEntry() const
    {
        return leaf().index < (leaf().loaded ? leaf().node.count() : hit_.count);
    }
    bool nextLeaf();
    bool previousLeaf();
    void countStep(bool forward);
    void down(const Wanted& wanted);
    static std::size_t place(const TreeNode& node, const Wanted& wanted);

    NodeStore& store_;
    bool whole_;
    std::vector<Level> levels_;
    std::size_t depth_ = 0;
    bool on_ = false;
    bool forward_ = true;
    std::uint64_t steps_ = 0;
    NodeHit hit_;  // of the leaf, while that is not loaded
};

class IndexTree {
public:
    explicit IndexTree(NodeStore& store) : store_(store), path_(store, true) {}

    bool contains(const std::uint8_t* key, std::uint32_t record);
    /// The record of the first entry with this key; 0 when there is none.
    std::uint32_t find(const std::uint8_t* key);
    void insert(const std::uint8_t* key, std::uint32_t record);
    /// False when there is no such entry.
    bool erase(const std::uint8_t* key, std::uint32_t record);
    /// Puts these entries in place of all that the tree has; gives their number.
    std::uint64_t build(EntrySource& entries);
    void buildEmpty();
    /// Gives all nodes back; the tree has no root afterwards.
    void drop();

private:
    using Level = TreeWalker::Level;

    Level& level(std::size_t n) { return path_.levels_[n]; }
    bool insertInLeaf(const std::uint8_t* key, std::uint32_t record);
    std::uint32_t childFor(std::size_t n, std::uint32_t at, const std::uint8_t* key,
                           std::uint32_t record);
    void raise(std::size_t from, bool onlyUp);
    void settle();
    void split(std::size_t n);
    void splitLeaf(const TreeNode& full, std::size_t inserted, std::vector<TreeNode>& pieces);
    void addPiece(const TreeNode& full, std::size_t first, std::size_t count,
                  std::vector<TreeNode>& pieces);
    void splitInner(const TreeNode& full, std::vector<TreeNode>& pieces,
                    std::vector<std::uint8_t>& upKey, std::uint32_t& upRecord);
    void linkPieces(std::vector<TreeNode>& pieces);
    void growRoot();
    void removeChild(std::size_t n);
    void unlink(const TreeNode& node);
    void mendSingle(std::size_t n);
    void collect(std::uint32_t at, std::size_t depth, std::vector<std::uint32_t>& nodes);
    void buildLevel(std::vector<TreeNode>& below);

    NodeStore& store_;
    TreeWalker path_;
    std::size_t inserted_ = 0;
    // While entries only come into leaves: how deep these are, and how many levels of the last way
    // down are still as they were loaded.
    std::size_t leafDepth_ = 0;
    std::size_t loaded_ = 0;
};

}  // namespace velnor::xbase
