// access/formats/jet/entry_run.h - entries of an index in memory, to be sorted and read back in
// order.
//
// Keys differ in length, so they lie one behind the other in blocks of a few megabytes. A block is
// sorted when it is full and keeps nothing but the entries themselves; the blocks are merged while
// they are read. So a run takes the bytes of its keys and six more an entry.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "access/formats/jet/jet_index.h"

namespace velnor::jet {

class EntryRun {
public:
    void add(KeyView key, RowPointer row);
    bool empty() const { return count_ == 0; }
    std::size_t count() const { return count_; }
    /// What the run holds in memory.
    std::size_t bytes() const;
    void clear();

    /// The entries in ascending order, each as often as it was added. The run must live, and must
    /// not change, while they are read; it can be read again.
    EntrySource sorted();

private:
    /// Where an entry of the open block lies, with a few bytes of its key.
    struct Item {
        std::uint64_t head;
        std::uint32_t at;
    };
    using Block = std::vector<std::uint8_t>;
    class Merge;

    void closeBlock();
    void sortFrom(std::span<Item> items, std::size_t at);
    void sortSame(std::span<Item> items, std::size_t at);

    Block open_;
    std::vector<Item> items_;    // of the open block, in the order in which they came
    std::vector<Block> blocks_;  // closed and sorted
    std::size_t count_ = 0;
};

}  // namespace velnor::jet
