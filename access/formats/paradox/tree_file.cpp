#include "access/formats/paradox/tree_file.h"

#include <algorithm>
#include <cstring>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::paradox {
namespace {

constexpr std::uint16_t kSign = 0x8000;
constexpr int kMostLevels = 16;

std::uint16_t wordAt(const std::uint8_t* p)
{
    return loadBE<std::uint16_t>(p) ^ kSign;
}

}  // namespace

TreeFile::TreeFile(BlockFile& blocks, RecordChain& data)
    : blocks_(blocks), data_(data), keyLength_(data.keyLength()),
      capacity_(blocks.header().recordsPerBlock())
{
    if (!adopt())
        build();
    data_.watch(this);
}

TreeFile::~TreeFile()
{
    data_.watch(nullptr);
}

/// Takes over how the file's tree is cut into blocks; false when it is not the tree of this chain.
bool TreeFile::adopt()
{
    const FileHeader& header = blocks_.header();
    levels_.clear();
    chain_.clear();
    met_ = 0;
    std::vector<bool> seen(blocks_.count() + 1u, false);
    for (std::uint32_t number = header.firstBlock; number;) {
        if (!blocks_.has(number) || number > header.fileBlocks || seen[number])
            return false;
        seen[number] = true;
        chain_.push_back(static_cast<std::uint16_t>(number));
        number = BlockHead::read(blocks_.block(number)).next;
    }
    bool broken = false;
    const std::size_t free = blocks_.freeBlocks(broken).size();
    if (broken || chain_.size() + free != header.fileBlocks || header.usedBlocks != chain_.size() ||
        header.fileBlocks > blocks_.count() || (!chain_.empty() && chain_[0] != 1))
        return false;
    if (header.levels == 0)
        return data_.records() == 0 && chain_.size() <= 1;
    if (header.levels > kMostLevels)
        return false;
    levels_.resize(header.levels);
    if (!adoptLevel(header.levels - 1, header.root, 0) || met_ != data_.blocks() ||
        data_.records() == 0)
        return false;
    std::size_t nodes = 0;
    for (const Level& level : levels_)
        nodes += level.size();
    return nodes == chain_.size();
}

bool TreeFile::adoptLevel(int level, std::uint32_t block, int depth)
{
    if (!blocks_.has(block) || depth > kMostLevels)
        return false;
    const std::uint8_t* bytes = blocks_.block(block);
    const std::size_t size = keyLength_ + 6;
    const int last = BlockHead::read(bytes).last;
    if (last < 0 || static_cast<std::size_t>(last) % size != 0 ||
        static_cast<std::size_t>(last) / size >= capacity_)
        return false;
    const std::size_t entries = static_cast<std::size_t>(last) / size + 1;
    levels_[static_cast<std::size_t>(level)].push_back(
        {static_cast<std::uint16_t>(block), static_cast<std::uint16_t>(entries)});
    std::vector<std::uint16_t> children(entries);
    for (std::size_t i = 0; i < entries; ++i)
        children[i] = wordAt(bytes + kBlockHead + i * size + keyLength_);
    for (const std::uint16_t child : children) {
        if (level > 0) {
            if (!adoptLevel(level - 1, child, depth + 1))
                return false;
        } else if (met_ >= data_.blocks() || data_.blockAt(met_++) != child) {
            return false;
        }
    }
    return true;
}

/// From nothing: the blocks filled one after the other.
void TreeFile::build()
{
    rebuilt_ = true;
    FileHeader& header = blocks_.header();
    levels_.clear();
    chain_.clear();
    std::vector<std::uint16_t> all;
    for (std::uint32_t number = 1; number <= blocks_.count(); ++number)
        all.push_back(static_cast<std::uint16_t>(number));
    header.fileBlocks = static_cast<std::uint16_t>(blocks_.count());
    header.usedBlocks = 0;
    blocks_.setFree(all);
    std::size_t entries = data_.records() ? data_.blocks() : 0;
    while (entries > 0) {
        levels_.push_back(packed(entries));
        entries = levels_.back().size();
        if (entries == 1)
            break;
    }
}

TreeFile::Level TreeFile::packed(std::size_t entries)
{
    Level level;
    while (entries > 0) {
        const std::size_t now = std::min(entries, capacity_);
        level.push_back({takeBlock(), static_cast<std::uint16_t>(now)});
        entries -= now;
    }
    return level;
}

std::uint16_t TreeFile::takeBlock()
{
    const auto number = static_cast<std::uint16_t>(blocks_.take());
    chain_.push_back(number);
    return number;
}

/// 2.
void TreeFile::giveBlock(std::uint16_t block)
{
    if (block == chain_[0] && chain_.size() > 1) {
        const std::uint16_t other = chain_.back();
        for (Level& level : levels_)
            for (Node& node : level)
                if (node.block == other)
                    node.block = block;
        block = other;
    }
    std::erase(chain_, block);
    blocks_.give(block);
}

void TreeFile::blockAdded(std::size_t at)
{
    entryAdded(0, at);
}

void TreeFile::blockRemoved(std::size_t at)
{
    entryRemoved(0, at);
}

void TreeFile::entryAdded(std::size_t level, std::size_t at)
{
    if (level == levels_.size()) {  // a new root
        const std::size_t below = level ? levels_[level - 1].size() : data_.blocks();
        // 3: an empty block waits for the first entry.
        const std::uint16_t block = level == 0 && !chain_.empty() ? chain_[0] : takeBlock();
        levels_.push_back({{block, static_cast<std::uint16_t>(below)}});
        return;
    }
    Level& nodes = levels_[level];
    std::size_t i = 0, start = 0;
    while (i + 1 < nodes.size() && at > start + nodes[i].entries) {
        start += nodes[i].entries;
        ++i;
    }
    ++nodes[i].entries;
    if (nodes[i].entries <= capacity_)
        return;
    const bool atEnd = i + 1 == nodes.size() && at + 1 == start + nodes[i].entries;
    const auto moved = static_cast<std::uint16_t>(atEnd ? 1 : nodes[i].entries / 2);
    nodes[i].entries = static_cast<std::uint16_t>(nodes[i].entries - moved);
    const std::uint16_t block = takeBlock();
    levels_[level].insert(levels_[level].begin() + static_cast<std::ptrdiff_t>(i + 1),
                          Node{block, moved});
    entryAdded(level + 1, i + 1);
}

void TreeFile::entryRemoved(std::size_t level, std::size_t at)
{
    Level& nodes = levels_[level];
    std::size_t i = 0, start = 0;
    while (at >= start + nodes[i].entries) {
        start += nodes[i].entries;
        ++i;
    }
    if (--nodes[i].entries > 0)
        return;
    const std::uint16_t block = nodes[i].block;
    nodes.erase(nodes.begin() + static_cast<std::ptrdiff_t>(i));
    giveBlock(block);
    if (level + 1 < levels_.size())
        entryRemoved(level + 1, i);
    // A root over a single block is not needed.
    while (levels_.size() > 1 && levels_.back().size() == 1 && levels_.back()[0].entries == 1) {
        const std::uint16_t root = levels_.back()[0].block;
        levels_.pop_back();
        giveBlock(root);
    }
}

void TreeFile::store()
{
    FileHeader& header = blocks_.header();
    header.writing = 0;
    // A chain whose only block is empty has nothing to point at.
    const bool empty = data_.records() == 0;
    if (empty)
        return writeEmpty();
    if (levels_.empty())
        entryAdded(0, 0);
    std::vector<const std::uint8_t*> keys(data_.blocks());
    std::vector<std::uint32_t> numbers(data_.blocks()), sums(data_.blocks());
    for (std::size_t at = 0; at < data_.blocks(); ++at) {
        keys[at] = data_.firstKey(at);
        numbers[at] = data_.blockAt(at);
        sums[at] = data_.recordsAt(at);
    }
    std::uint32_t entries = 0;
    for (std::size_t level = 0; level < levels_.size(); ++level) {
        entries += static_cast<std::uint32_t>(keys.size());
        writeLevel(level, keys, numbers, sums);
    }
    header.records = entries;
    header.levels = static_cast<std::uint8_t>(levels_.size());
    header.root = levels_.back()[0].block;
    header.firstBlock = chain_[0];
    header.lastBlock = chain_.back();
    blocks_.store();
}

/// Writes the blocks of a level; what comes in describes the entries, what comes out those of the
/// level above.
void TreeFile::writeLevel(std::size_t level, std::vector<const std::uint8_t*>& keys,
                          std::vector<std::uint32_t>& numbers, std::vector<std::uint32_t>& sums)
{
    const std::size_t size = keyLength_ + 6;
    std::vector<std::uint8_t> entries;
    std::size_t from = 0, made = 0;
    for (const Node& node : levels_[level]) {
        entries.resize(node.entries * size);
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < node.entries; ++i) {
            std::uint8_t* to = entries.data() + i * size;
            std::memcpy(to, keys[from + i], keyLength_);
            to += keyLength_;
            storeBE(to, static_cast<std::uint16_t>(numbers[from + i] ^ kSign));
            storeBE(to + 2, static_cast<std::uint16_t>(sums[from + i] ^ kSign));
            storeBE(to + 4, kSign);
            sum += sums[from + i];
        }
        writeBlock(node.block, entries);
        keys[made] = keys[from];
        numbers[made] = node.block;
        sums[made] = sum;
        from += node.entries;
        ++made;
    }
    keys.resize(made);
    numbers.resize(made);
    sums.resize(made);
}

void TreeFile::writeBlock(std::uint16_t block, const std::vector<std::uint8_t>& entries)
{
    const auto at = std::find(chain_.begin(), chain_.end(), block);
    BlockHead head;
    head.previous = at == chain_.begin() ? std::uint16_t{0} : *(at - 1);
    head.next = at + 1 == chain_.end() ? std::uint16_t{0} : *(at + 1);
    head.last = static_cast<std::int16_t>(static_cast<int>(entries.size()) -
                                          static_cast<int>(keyLength_ + 6));
    std::uint8_t start[kBlockHead];
    head.write(start);
    const std::uint8_t* old = blocks_.block(block);
    if (std::equal(start, start + kBlockHead, old) &&
        std::equal(entries.begin(), entries.end(), old + kBlockHead))
        return;
    std::uint8_t* bytes = blocks_.edit(block);
    std::copy_n(start, kBlockHead, bytes);
    std::copy(entries.begin(), entries.end(), bytes + kBlockHead);
}

/// 3.
void TreeFile::writeEmpty()
{
    FileHeader& header = blocks_.header();
    while (chain_.size() > 1) {
        blocks_.give(chain_.back());
        chain_.pop_back();
    }
    header.records = 0;
    header.levels = 0;
    header.root = 1;
    header.firstBlock = header.lastBlock = chain_.empty() ? std::uint16_t{0} : chain_[0];
    if (!chain_.empty())
        writeBlock(chain_[0], {});
    // What stays of the partition describes the one empty block of the data file.
    levels_.clear();
    if (!chain_.empty() && data_.blocks() == 1)
        levels_.push_back({{chain_[0], 1}});
    blocks_.store();
}

}  // namespace velnor::paradox
