// access/formats/xbase/memo_file.h - the memo texts and binaries of a table: DBT and FPT files.
//
// A memo is named by its first block. It is changed in place when it still fits into its blocks,
// else a new copy goes behind the last one; what is not named any more stays until the table is
// packed.
// 1. Nothing is kept here between calls but the block size: after a rollback of the file all is
// right.
// 2. The header's next free block is a hint: we append behind both it and the end of the file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "access/formats/xbase/dbf_format.h"
#include "access/storage/page_file.h"

namespace velnor::xbase {

/// Options under which a memo file is opened: it is written before the records.
PageFileOptions memoFileOptions();

/// What stands at a block.
struct MemoExtent {
    enum class State { Whole, PastEnd, CutShort, OtherForm };
    State state = State::PastEnd;
    std::uint64_t dataOffset = 0;
    std::uint64_t dataBytes = 0;  ///< those that are there
    std::uint64_t endOffset = 0;  ///< behind the last block
};

class MemoFile {
public:
    MemoFile(PageFile& file, MemoForm form);

    MemoForm form() const { return form_; }
    std::uint32_t blockSize() const { return blockSize_; }
    std::uint64_t fileBytes() const { return file_.size(); }
    std::uint32_t nextFreeBlock() const;

    MemoExtent extent(std::uint64_t block) const;
    /// The bytes at a block, into `out`; false when the block is not in the file.
    bool read(std::uint64_t block, std::string& out) const;
    /// Stores the bytes and gives their block. `old`: the block that they replace, 0 for none.
    /// A text with 0x1A cannot be kept in the III form: EngineError 3421.
    std::uint32_t write(std::span<const std::uint8_t> bytes, bool text, std::uint64_t old);
    /// Stores the memo at a block of another file of this form, with its kind; 0 when there is
    /// none.
    std::uint32_t take(const MemoFile& from, std::uint64_t block, std::string& scratch);
    /// Throws what write() would throw for these bytes, and stores nothing.
    void checkStorable(std::span<const std::uint8_t> bytes) const;

private:
    /// `kind`: what an FPT notes of its content.
    std::uint32_t store(std::span<const std::uint8_t> bytes, std::uint32_t kind, std::uint64_t old);
    std::uint64_t blocksFor(std::uint64_t dataBytes) const;
    std::uint64_t appendBlock() const;
    void setNextFreeBlock(std::uint32_t block);
    std::uint64_t findEndMark(std::uint64_t from, std::uint64_t to) const;
    void extentOfThree(MemoExtent& found) const;
    void extentWithLength(MemoExtent& found, std::uint64_t stated) const;
    void closeExtent(MemoExtent& found, std::uint64_t start) const;

    PageFile& file_;
    MemoForm form_;
    std::uint32_t blockSize_;
};

/// The first bytes of a new, empty memo file. `tableName`: the DBF's base name. `blockSize` 0: the
/// usual one of the form; DBT III has no other.
std::vector<std::uint8_t> newMemoHeader(MemoForm form, std::string_view tableName,
                                        std::uint32_t blockSize = 0);

}  // namespace velnor::xbase
