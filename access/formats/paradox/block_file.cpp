#include "access/formats/paradox/block_file.h"

#include <algorithm>
#include <bit>

#include "access/engine_error.h"
#include "access/formats/paradox/cipher.h"
#include "access/storage/byte_reader.h"

namespace velnor::paradox {
namespace {

constexpr std::size_t kSlotBytes = 256u << 10;  // of blocks in memory

std::size_t slotsFor(std::uint32_t blockBytes)
{
    return std::bit_floor(std::clamp<std::size_t>(kSlotBytes / blockBytes, 8, 64));
}

}  // namespace

BlockHead BlockHead::read(const std::uint8_t* block)
{
    return {loadLE<std::uint16_t>(block), loadLE<std::uint16_t>(block + 2),
            loadLE<std::int16_t>(block + 4)};
}

void BlockHead::write(std::uint8_t* block) const
{
    storeLE(block, next);
    storeLE(block + 2, previous);
    storeLE(block + 4, last);
}

BlockFile::BlockFile(PageFile& file, FileHeader& header)
    : file_(file), header_(header), count_(0), slots_(slotsFor(header.blockBytes)),
      mask_(slots_.size() - 1)
{
    const std::uint64_t behind =
        file.size() - std::min<std::uint64_t>(file.size(), header.headerSize);
    const std::uint64_t there = (behind + header.blockBytes - 1) / header.blockBytes;
    count_ = static_cast<std::uint32_t>(std::min<std::uint64_t>(there, kMostBlocks));
}

void BlockFile::load(Slot& slot, std::uint32_t number)
{
    slot.number = 0;
    slot.bytes.resize(header_.blockBytes);
    // The last block of some files is cut short: what is not there reads as zeros.
    const std::size_t got = file_.readAt(offsetOf(number), slot.bytes);
    std::fill(slot.bytes.begin() + static_cast<std::ptrdiff_t>(got), slot.bytes.end(),
              std::uint8_t{0});
    if (header_.cipherKey)
        decipherBlock(slot.bytes, header_.cipherKey, number);
    slot.number = number;
}

void BlockFile::write(Slot& slot)
{
    if (header_.cipherKey) {
        std::vector<std::uint8_t> secret = slot.bytes;
        encipherBlock(secret, header_.cipherKey, slot.number);
        file_.writeAt(offsetOf(slot.number), secret);
    } else {
        file_.writeAt(offsetOf(slot.number), slot.bytes);
    }
    slot.changed = false;
    --changed_;
}

BlockFile::Slot& BlockFile::slotOf(std::uint32_t number)
{
    Slot& slot = slots_[number & mask_];
    if (slot.number == number && number) [[likely]]
        return slot;
    if (!has(number))
        throw EngineError(EngineErrorNumber::Corrupt,
                          "There is no block " + std::to_string(number) + " in the file.");
    if (slot.changed)
        write(slot);
    load(slot, number);
    return slot;
}

std::uint8_t* BlockFile::edit(std::uint32_t number)
{
    Slot& slot = slotOf(number);
    if (!slot.changed) {
        slot.changed = true;
        ++changed_;
    }
    return slot.bytes.data();
}

void BlockFile::readStart(std::uint32_t number, std::span<std::uint8_t> out)
{
    const Slot& slot = slots_[number & mask_];
    if (slot.number != number && !header_.cipherKey && has(number)) {
        const std::size_t got = file_.readAt(offsetOf(number), out);
        std::fill(out.begin() + static_cast<std::ptrdiff_t>(got), out.end(), std::uint8_t{0});
        return;
    }
    std::copy_n(block(number), out.size(), out.begin());
}

void BlockFile::readRun(std::uint32_t first, std::uint32_t blocks, std::span<std::uint8_t> out)
{
    if (!has(first) || !has(first + blocks - 1))
        throw EngineError(EngineErrorNumber::Corrupt,
                          "There is no block " + std::to_string(first) + " in the file.");
    const std::size_t size = header_.blockBytes;
    out = out.first(blocks * size);
    const std::size_t got = file_.readAt(offsetOf(first), out);
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(got), out.end(), std::uint8_t{0});
    for (std::uint32_t i = 0; i < blocks; ++i) {
        const auto part = out.subspan(i * size, size);
        const Slot& slot = slots_[(first + i) & mask_];
        if (slot.number == first + i && slot.changed)
            std::copy(slot.bytes.begin(), slot.bytes.end(), part.begin());
        else if (header_.cipherKey)
            decipherBlock(part, header_.cipherKey, first + i);
    }
}

bool BlockFile::hasRoom(std::uint32_t blocks) const
{
    return header_.fileBlocks + blocks <= kMostBlocks || header_.firstFree != 0;
}

std::uint32_t BlockFile::take()
{
    std::uint32_t number = header_.firstFree;
    if (number) {
        header_.firstFree = BlockHead::read(block(number)).next;
    } else {
        if (header_.fileBlocks >= kMostBlocks)
            throw EngineError(EngineErrorNumber::DatabaseFull,
                              "The file has as many blocks as its format allows.");
        number = header_.fileBlocks + 1u;
        header_.fileBlocks = static_cast<std::uint16_t>(number);
        if (count_ < number) {  // a place in memory without a look at the disk
            Slot& slot = slots_[number & mask_];
            if (slot.changed)
                write(slot);
            slot.bytes.assign(header_.blockBytes, 0);
            slot.number = number;
            count_ = number;
        }
    }
    std::uint8_t* bytes = edit(number);
    std::fill_n(bytes, header_.blockBytes, std::uint8_t{0});
    ++header_.usedBlocks;
    return number;
}

void BlockFile::give(std::uint32_t number)
{
    BlockHead{header_.firstFree, 1, static_cast<std::int16_t>(-header_.recordSize)}.write(
        edit(number));
    header_.firstFree = static_cast<std::uint16_t>(number);
    --header_.usedBlocks;
}

void BlockFile::setFree(std::span<const std::uint16_t> numbers)
{
    header_.firstFree = 0;
    for (std::size_t i = numbers.size(); i-- > 0;) {
        BlockHead{header_.firstFree, 1, static_cast<std::int16_t>(-header_.recordSize)}.write(
            edit(numbers[i]));
        header_.firstFree = numbers[i];
    }
}

std::vector<std::uint16_t> BlockFile::freeBlocks(bool& broken)
{
    std::vector<std::uint16_t> found;
    std::vector<bool> seen(count_ + 1u, false);
    broken = false;
    for (std::uint32_t number = header_.firstFree; number;) {
        if (!has(number) || seen[number]) {
            broken = true;
            break;
        }
        seen[number] = true;
        found.push_back(static_cast<std::uint16_t>(number));
        std::uint8_t start[kBlockHead];
        readStart(number, start);
        number = BlockHead::read(start).next;
    }
    return found;
}

void BlockFile::store()
{
    for (Slot& slot : slots_)
        if (slot.changed)
            write(slot);
    storeCounters(header_, file_);
}

}  // namespace velnor::paradox
