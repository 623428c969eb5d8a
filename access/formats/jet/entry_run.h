// access/formats/jet/entry_run.h - entries of an index, to be sorted and read back in order, in
// little memory.
//
// Keys differ in length, so they lie one behind the other in blocks of a few megabytes. A block is
// sorted when it is full and keeps nothing but the entries themselves; the blocks are merged while
// they are read. So a run takes the bytes of its keys and six more an entry. When there is more than
// a few blocks they go to a scratch file. If that cannot be made or written, they stay in memory.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "access/formats/jet/jet_index.h"

namespace velnor::jet {

class EntryRun {
public:
    /// `mostInMemory`: bytes of closed blocks.
    explicit EntryRun(PageSpace& space, std::size_t mostInMemory = 3u << 19)
        : space_(&space), mostInMemory_(mostInMemory)
    {
    }

    void add(KeyView key, RowPointer row);
    bool empty() const { return count_ == 0; }
    std::size_t count() const { return count_; }
    /// What the entries take, in memory and in the file.
    std::size_t bytes() const { return bytes_; }
    /// Whether they take much memory, because there can be no file.
    bool full() const;
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
    using Bytes = std::vector<std::uint8_t>;
    /// Closed and sorted: in memory, or a part of the file.
    struct Block {
        Bytes bytes;
        std::uint64_t from = 0, to = 0;
    };
    class Merge;

    void closeBlock();
    void moveToFile();
    void sortFrom(std::span<Item> items, std::size_t at);
    void sortSame(std::span<Item> items, std::size_t at);

    PageSpace* space_;
    std::size_t mostInMemory_;
    std::unique_ptr<std::uint8_t[]> open_;
    std::size_t openBytes_ = 0;
    std::vector<Item> items_;  // of the open block, in the order in which they came
    std::vector<Block> blocks_;
    std::size_t inMemory_ = 0;  // bytes of closed blocks
    std::unique_ptr<File> file_;
    std::uint64_t fileEnd_ = 0;
    bool noFile_ = false;
    std::size_t count_ = 0;
    std::size_t bytes_ = 0;
};

}  // namespace velnor::jet
