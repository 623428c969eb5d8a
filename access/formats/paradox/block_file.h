// access/formats/paradox/block_file.h - the blocks of one file by their numbers, from 1, and the
// chain of free ones.
//
// A block begins with its own header of 6 bytes: next block, previous block (0: none), and the
// place of its last record: (records - 1) times the record's size, so that an empty block has the
// negative size of a record. The records follow without gaps.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "access/formats/paradox/file_header.h"
#include "access/storage/page_file.h"

namespace velnor::paradox {

inline constexpr std::size_t kBlockHead = 6;

/// The header of a block.
struct BlockHead {
    std::uint16_t next = 0, previous = 0;
    std::int16_t last = 0;

    static BlockHead read(const std::uint8_t* block);
    void write(std::uint8_t* block) const;
};

class BlockFile {
public:
    /// Both outlive it.
    BlockFile(PageFile& file, FileHeader& header);

    FileHeader& header() { return header_; }
    const FileHeader& header() const { return header_; }
    /// Blocks that lie in the file, whatever its header says.
    std::uint32_t count() const { return count_; }
    bool has(std::uint32_t number) const { return number >= 1 && number <= count_; }

    /// The bytes of a block, good until the next call of this object. 3197 when it is not there.
    const std::uint8_t* block(std::uint32_t number) { return slotOf(number).bytes.data(); }
    /// The same for writing.
    std::uint8_t* edit(std::uint32_t number);
    /// The first bytes of a block, read past the blocks in memory where that is possible.
    void readStart(std::uint32_t number, std::span<std::uint8_t> out);
    /// Whole blocks that lie behind one another in the file.
    void readRun(std::uint32_t first, std::uint32_t blocks, std::span<std::uint8_t> out);

    /// A zeroed block for new records: a free one, else a new one at the end. 3049 when the file
    /// has as many as the format allows.
    std::uint32_t take();
    /// Whether take() would find so many.
    bool hasRoom(std::uint32_t blocks) const;
    /// Puts a block in front of the free ones.
    void give(std::uint32_t number);
    /// Makes the chain of free blocks anew from these, for files whose chain is broken.
    void setFree(std::span<const std::uint16_t> numbers);
    /// The chain of free blocks; ends in front of what cannot be one.
    std::vector<std::uint16_t> freeBlocks(bool& broken);

    /// Hands changed blocks and the counters to the page file.
    void store();
    std::size_t changedBytes() const { return changed_ * header_.blockBytes; }

private:
    struct Slot {
        std::uint32_t number = 0;
        bool changed = false;
        std::vector<std::uint8_t> bytes;
    };
    Slot& slotOf(std::uint32_t number);
    std::uint64_t offsetOf(std::uint32_t number) const
    {
        return header_.headerSize + std::uint64_t{number - 1} * header_.blockBytes;
    }
    void load(Slot& slot, std::uint32_t number);
    void write(Slot& slot);

    PageFile& file_;
    FileHeader& header_;
    std::uint32_t count_;
    std::vector<Slot> slots_;
    std::size_t mask_;
    std::size_t changed_ = 0;
};

}  // namespace velnor::paradox
