// access/formats/paradox/mb_file.h - the long values of a table: memos, texts with formats,
// binaries, pictures.
//
// The file is cut into units of 4 KiB. A block of one or more units holds one value of more than
// 2048 bytes, or, in one unit, up to 64 shorter ones; the first bytes of a block tell its kind and
// its length in units. A record names a value by the last 10 bytes of its field.
// 1. A value is never changed in place: the new one is stored, the old one freed.
// 2. The header's table of free space is kept true. What is free and not in the table (it has room
//    for 673 entries) is only not used again.
// 3. Nothing but the table of free space is kept here between calls, and that by the file's bytes:
//    after a rollback of the file all is right once reload() was called.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "access/storage/page_file.h"

namespace velnor::paradox {

inline constexpr std::size_t kPointerBytes = 10;
inline constexpr std::uint32_t kMbUnit = 4096;

/// Options under which an MB file is opened: it is written before the records.
PageFileOptions mbFileOptions();

/// The last bytes of a long field.
struct LongPointer {
    std::uint32_t offset = 0;  ///< of the block; 0 for a value that is wholly in the record
    std::uint8_t slot = 0;     ///< FF: the block holds one value
    std::uint32_t length = 0;  ///< 0: Null
    std::uint16_t mark = 0;    ///< a modification number, the same beside the value

    static LongPointer read(const std::uint8_t* bytes);
    void write(std::uint8_t* bytes) const;
};

class MbFile {
public:
    explicit MbFile(PageFile& file);

    /// The first bytes of a new, empty file.
    static std::vector<std::uint8_t> newHeader();

    /// The bytes of a value; false, with words in `why`, when the pointer leads to none.
    bool read(const LongPointer& pointer, std::string& out, std::string& why) const;
    /// 3049 when the file is full, 3163 for a value that is too long.
    LongPointer store(std::span<const std::uint8_t> bytes);
    /// Frees a value. A pointer that leads to none frees nothing.
    void release(const LongPointer& pointer);
    /// After a rollback.
    void reload();

    std::uint64_t fileBytes() const { return file_.size(); }
    /// Bytes as they stand, for a check.
    std::size_t readRaw(std::uint64_t at, std::span<std::uint8_t> out) const
    {
        return file_.readAt(at, out);
    }

private:
    enum class Free : std::uint8_t { None = 1, Chunks = 2, Units = 3 };
    /// An entry of the table of free space.
    struct Entry {
        Free kind = Free::None;
        std::uint64_t offset = 0;
        std::uint16_t amount = 0;
    };

    LongPointer storeLarge(std::span<const std::uint8_t> bytes);
    LongPointer storeSmall(std::span<const std::uint8_t> bytes);
    bool storeInBlock(std::uint64_t offset, std::span<const std::uint8_t> bytes,
                      LongPointer& pointer);
    void releaseSmall(const LongPointer& pointer);
    void releaseUnits(std::uint64_t offset, std::uint32_t units);
    std::uint64_t takeUnits(std::uint32_t units);
    void setBlockHead(std::uint64_t offset, std::uint8_t kind, std::uint32_t units);
    void setEntry(std::uint64_t offset, Free kind, std::uint16_t amount);
    void dropEntry(std::uint64_t offset);
    void writeEntry(std::size_t at);

    PageFile& file_;
    std::vector<Entry> free_;  // as the table has them; void ones are used again
};

}  // namespace velnor::paradox
