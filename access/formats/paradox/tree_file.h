// access/formats/paradox/tree_file.h - the index over the blocks of a data file: PX over DB, Y over
// X.
//
// The lowest level has an entry for each block of the data file's chain: the key of its first
// record, its number, its count of records. Each higher level has an entry for each block of the
// one below: its first key, its number, the sum of its counts.
//
// Here the tree is kept as a partition: how many entries each block holds, level by level. What the
// entries are follows from the data file's chain, so the tree is written out as a whole by store(),
// where only blocks that differ are changed.
//
// 1. All used blocks of all levels hang in one chain; their order in it has no meaning.
// 2. Block 1 is never freed: another block's content moves there.
// 3. An empty tree has no levels, root 1, and one empty block (none when it never had an entry).
#pragma once

#include <cstdint>
#include <vector>

#include "access/formats/paradox/block_file.h"
#include "access/formats/paradox/record_chain.h"

namespace velnor::paradox {

class TreeFile final : public ChainWatcher {
public:
    /// Both outlive it. The file's tree is taken over when it fits the chain, else made anew.
    TreeFile(BlockFile& blocks, RecordChain& data);
    ~TreeFile() override;
    TreeFile(const TreeFile&) = delete;
    TreeFile& operator=(const TreeFile&) = delete;

    FileHeader& header() { return blocks_.header(); }
    void blockAdded(std::size_t at) override;
    void blockRemoved(std::size_t at) override;
    /// Whether a few more blocks can be had; asked before the data file is changed.
    bool hasRoom() const { return blocks_.hasRoom(8); }
    /// True when the file had to be made anew.
    bool wasRebuilt() const { return rebuilt_; }
    void store();
    std::size_t changedBytes() const { return blocks_.changedBytes(); }

private:
    struct Node {
        std::uint16_t block = 0;
        std::uint16_t entries = 0;
    };
    using Level = std::vector<Node>;

    bool adopt();
    bool adoptLevel(int level, std::uint32_t block, int depth);
    void build();
    Level packed(std::size_t entries);
    std::uint16_t takeBlock();
    void giveBlock(std::uint16_t block);
    void entryAdded(std::size_t level, std::size_t at);
    void entryRemoved(std::size_t level, std::size_t at);
    void writeLevel(std::size_t level, std::vector<const std::uint8_t*>& keys,
                    std::vector<std::uint32_t>& numbers, std::vector<std::uint32_t>& sums);
    void writeBlock(std::uint16_t block, const std::vector<std::uint8_t>& entries);
    void writeEmpty();

    BlockFile& blocks_;
    RecordChain& data_;
    std::size_t keyLength_;
    std::size_t capacity_;
    std::vector<Level> levels_;         // from the lowest; the last has one node, the root
    std::vector<std::uint16_t> chain_;  // 1.
    bool rebuilt_ = false;
    std::size_t met_ = 0;  // entries seen while the file's tree is compared
};

}  // namespace velnor::paradox
