// access/formats/paradox/chain_walker.h - a position in a chain of records that survives changes by
// others, and a window of blocks read ahead.
#pragma once

#include <cstdint>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/paradox/record_chain.h"

namespace velnor::paradox {

class ChainWalker {
public:
    ChainWalker() = default;

    /// Before every move: the chain as it is now, and a number that grows with its changes.
    void refresh(RecordChain& chain, std::uint64_t generation);

    bool first() { return settle({0, 0}); }
    bool last();
    bool next();
    bool previous();
    bool moveTo(Place place) { return settle(place); }
    bool seek(Comparison comparison, const std::uint8_t* key, std::size_t length);
    /// Stands nowhere: before the first record, or behind the last.
    void leave(bool behind);

    bool on() const { return stand_ == Stand::On; }
    Place place() const { return place_; }
    /// The block and the key of the record as it was when the walk came to it.
    std::uint32_t block() const { return block_; }
    const std::uint8_t* key() const { return key_.data(); }
    /// The record, good until the next move.
    const std::uint8_t* record() const { return record_; }

private:
    enum class Stand : std::uint8_t { Before, On, Behind };

    bool settle(Place place);
    bool settleBack(Place place);
    void findAgain();
    const std::uint8_t* bytesOf(Place place);
    void readWindow(std::size_t at);

    RecordChain* chain_ = nullptr;
    std::uint64_t generation_ = 0;
    Stand stand_ = Stand::Before;
    Place place_;
    bool exact_ = true;              // stands on its record; else in front of where it was
    std::vector<std::uint8_t> key_;  // of the record, to find it again
    std::uint32_t block_ = 0;
    const std::uint8_t* record_ = nullptr;
    std::vector<std::uint8_t> window_;
    std::uint32_t windowFirst_ = 0, windowBlocks_ = 0, nextWindow_ = 1;
};

}  // namespace velnor::paradox
