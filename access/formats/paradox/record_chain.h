// access/formats/paradox/record_chain.h - the records of a table or index in their order: the chain
// of used blocks, kept in memory as a list of block numbers.
//
// Keyed files (tables with a primary key, secondary indexes) ascend by the first bytes of their
// records. What the list holds is read from the blocks themselves, not from the header or an index:
// both lie after a crash, the chain does not.
//
// 1. The list has at most 65,535 blocks, so it stays small however long the table is.
// 2. The first block of the chain is never freed: when it empties, the content of the next one
//    moves into it.
// 3. A chain that breaks off is read up to there; then nothing may be written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "access/formats/paradox/block_file.h"

namespace velnor::paradox {

/// How the keys of a chain are ordered.
struct KeyOrder {
    bool byBytes = true;  ///< else by weights of letters that nobody knows: no search, no insert
    bool descending = false;

    /// Negative when a stands before b.
    int compare(const std::uint8_t* a, const std::uint8_t* b, std::size_t length) const;
};

/// A record: the position of its block in the chain, and its own in the block, both from 0.
struct Place {
    std::uint32_t at = 0;
    std::uint32_t slot = 0;
    bool operator==(const Place&) const = default;
};

/// Is told which blocks come and go, by their position in the chain.
class ChainWatcher {
public:
    virtual ~ChainWatcher() = default;
    virtual void blockAdded(std::size_t at) = 0;
    virtual void blockRemoved(std::size_t at) = 0;
};

class RecordChain {
public:
    /// `keyLength`: bytes of the key, 0 for records without order.
    RecordChain(BlockFile& blocks, std::size_t keyLength, KeyOrder order);

    /// Walks the chain. Called by the constructor; again after the file was changed from outside.
    void load();
    /// What breaks the chain; empty when it is whole.
    const std::string& damage() const { return damage_; }
    /// Keys can be searched by halves: their order is known, and that of the blocks is right.
    bool ordered() const { return order_.byBytes && blocksAscend_; }
    const KeyOrder& order() const { return order_; }
    std::size_t keyLength() const { return keyLength_; }
    std::size_t recordSize() const { return recordSize_; }
    BlockFile& file() { return blocks_; }

    std::int64_t records() const { return records_; }
    std::size_t blocks() const { return chain_.size(); }
    std::uint32_t blockAt(std::size_t at) const { return chain_[at]; }
    std::uint32_t recordsAt(std::size_t at) const { return counts_[chain_[at]]; }
    /// The key of the first record of a block; only of keyed files.
    const std::uint8_t* firstKey(std::size_t at) const
    {
        return firstKeys_.data() + chain_[at] * keyLength_;
    }
    /// Good until the next call.
    const std::uint8_t* record(Place place);

    std::int64_t ordinalOf(Place place) const;
    std::optional<Place> placeOf(std::int64_t ordinal) const;
    /// The position of a block in the chain.
    std::optional<std::size_t> positionOf(std::uint32_t block) const;
    /// From behind the last record of a block to the first of the next one. False at the end.
    bool settle(Place& place) const;

    /// The first record whose key is not less (with `behind`: greater) than `length` bytes of a
    /// key. It may stand behind the last record of a block, see settle(). Ordered chains only.
    Place lowerBound(const std::uint8_t* key, std::size_t length, bool behind = false);
    /// A record whose key begins with these bytes: in ordered chains the first, by halves; in
    /// others any, by a look at all.
    std::optional<Place> find(const std::uint8_t* key, std::size_t length);
    /// The same within one block.
    std::optional<Place> findInBlock(std::size_t at, const std::uint8_t* key, std::size_t length);

    /// Whether an insert can find the blocks that it may need.
    bool hasRoom() const { return blocks_.hasRoom(1); }
    /// Puts a record in front of the one at `place`, which may stand behind the last of a block;
    /// gives where it stands then.
    Place insert(Place place, const std::uint8_t* record);
    /// Behind the last record.
    Place append(const std::uint8_t* record);
    void remove(Place place);
    void overwrite(Place place, const std::uint8_t* record);

    void watch(ChainWatcher* watcher) { watcher_ = watcher; }
    /// Sets the header's counts by the chain; mends the free chain when it contradicts it.
    void mendCounts();

private:
    std::uint32_t capacity() const { return capacity_; }
    bool walkBlock(std::uint32_t number, std::uint32_t before, std::uint32_t& next);
    void testOrder();
    void setCount(std::uint32_t block, std::uint8_t* bytes, std::uint32_t count);
    void keepFirstKey(std::uint32_t block, const std::uint8_t* bytes);
    std::uint32_t linkNewBlock(std::size_t behind);
    void split(std::size_t at);
    void unlinkBlock(std::size_t at);
    void moveNextIntoFirst();

    BlockFile& blocks_;
    std::size_t keyLength_, recordSize_;
    KeyOrder order_;
    std::uint32_t capacity_;
    std::vector<std::uint16_t> chain_;     // block numbers in order
    std::vector<std::uint16_t> counts_;    // records, by block number
    std::vector<std::uint8_t> firstKeys_;  // keyLength bytes each, by block number
    std::int64_t records_ = 0;
    bool blocksAscend_ = true;
    std::string damage_;
    ChainWatcher* watcher_ = nullptr;
};

}  // namespace velnor::paradox
