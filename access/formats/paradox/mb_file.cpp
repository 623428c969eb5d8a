#include "access/formats/paradox/mb_file.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::paradox {
namespace {

constexpr std::uint8_t kLargeBlock = 2, kSmallBlock = 3, kFreeBlock = 4;
constexpr std::uint32_t kLargeHead = 9;  // kind, units, length, mark
constexpr std::uint32_t kLongestSmall = 2048;
constexpr std::uint8_t kWholeBlock = 0xFF;  // the slot of a large value
constexpr std::size_t kSlots = 64, kSlotBytes = 5, kSlotsAt = 12;
constexpr std::size_t kChunk = 16, kFirstChunk = 21, kChunks = 256;
constexpr std::size_t kTableAt = 0x38, kEntryBytes = 6;
constexpr std::size_t kEntries = (kMbUnit - kTableAt) / kEntryBytes;
constexpr std::uint32_t kMostUnits = 0xFFFF;
constexpr std::uint16_t kMark = 1;

using Unit = std::array<std::uint8_t, kMbUnit>;

/// A slot of a block of small values.
struct Slot {
    std::uint8_t start = 0;  // chunk; 0: not in use
    std::uint8_t chunks = 0;
    std::uint16_t mark = 0;
    std::uint8_t inLast = 0;  // bytes used in the last chunk

    static Slot read(const std::uint8_t* unit, std::size_t n)
    {
        const std::uint8_t* p = unit + kSlotsAt + n * kSlotBytes;
        return {p[0], p[1], loadLE<std::uint16_t>(p + 2), p[4]};
    }
    void write(std::uint8_t* unit, std::size_t n) const
    {
        std::uint8_t* p = unit + kSlotsAt + n * kSlotBytes;
        p[0] = start;
        p[1] = chunks;
        storeLE(p + 2, mark);
        p[4] = inLast;
    }
    std::uint32_t length() const { return (chunks - 1u) * kChunk + inLast; }
    bool fits() const
    {
        return start >= kFirstChunk && chunks > 0 && std::size_t{start} + chunks <= kChunks &&
               inLast >= 1 && inLast <= kChunk;
    }
};

/// Moves the values of a block together, from the first chunk on; gives the end of the last one.
/// Other programs leave gaps where values were freed, and count them as free. 0 for a block that is
/// not sound.
std::size_t closeGaps(std::uint8_t* unit)
{
    std::array<std::size_t, kSlots> used;
    std::size_t count = 0;
    for (std::size_t n = 0; n < kSlots; ++n) {
        const Slot slot = Slot::read(unit, n);
        if (slot.start == 0)
            continue;
        if (!slot.fits())
            return 0;
        used[count++] = n;
    }
    std::sort(used.begin(), used.begin() + static_cast<std::ptrdiff_t>(count),
              [&](std::size_t a, std::size_t b) {
                  return Slot::read(unit, a).start < Slot::read(unit, b).start;
              });
    std::size_t end = kFirstChunk;
    for (std::size_t i = 0; i < count; ++i) {
        Slot slot = Slot::read(unit, used[i]);
        if (slot.start < end)
            return 0;  // it overlaps the one before
        std::memmove(unit + end * kChunk, unit + slot.start * kChunk, slot.chunks * kChunk);
        slot.start = static_cast<std::uint8_t>(end);
        slot.write(unit, used[i]);
        end += slot.chunks;
    }
    return end;
}

std::uint32_t unitsFor(std::size_t bytes)
{
    return static_cast<std::uint32_t>((bytes + kLargeHead + kMbUnit - 1) / kMbUnit);
}

}  // namespace

PageFileOptions mbFileOptions()
{
    PageFileOptions options;
    options.pageSize = kMbUnit;
    options.rank = 0;
    return options;
}

LongPointer LongPointer::read(const std::uint8_t* bytes)
{
    const auto place = loadLE<std::uint32_t>(bytes);
    return {place & 0xFFFFFF00u, static_cast<std::uint8_t>(place), loadLE<std::uint32_t>(bytes + 4),
            loadLE<std::uint16_t>(bytes + 8)};
}

void LongPointer::write(std::uint8_t* bytes) const
{
    storeLE(bytes, offset | slot);
    storeLE(bytes + 4, length);
    storeLE(bytes + 8, mark);
}

MbFile::MbFile(PageFile& file) : file_(file)
{
    reload();
}

std::vector<std::uint8_t> MbFile::newHeader()
{
    static constexpr std::uint8_t kStart[] = {0x00, 0x01, 0x00, 0x01, 0x00, 0x82, 0x73,
                                              0x02, 0x00, 0x29, 0x00, 0x00, 0x10, 0x00,
                                              0x10, 0x00, 0x10, 0x40, 0x00, 0x00, 0x08};
    std::vector<std::uint8_t> header(kMbUnit, 0);
    std::copy(std::begin(kStart), std::end(kStart), header.begin());
    storeLE<std::uint16_t>(&header[0x29], kEntries);
    return header;
}

void MbFile::reload()
{
    free_.clear();
    Unit header{};
    if (file_.readAt(0, header) != header.size())
        return;
    for (std::size_t n = 0; n < kEntries; ++n) {
        const std::uint8_t* p = &header[kTableAt + n * kEntryBytes];
        Entry entry;
        entry.kind = p[0] == 2 ? Free::Chunks : p[0] == 3 ? Free::Units : Free::None;
        entry.offset = (p[1] | std::uint64_t{p[2]} << 8 | std::uint64_t{p[3]} << 16) << 8;
        entry.amount = loadLE<std::uint16_t>(p + 4);
        free_.push_back(entry);
    }
    while (!free_.empty() && free_.back().kind == Free::None)
        free_.pop_back();
}

void MbFile::writeEntry(std::size_t at)
{
    const Entry& entry = free_[at];
    std::array<std::uint8_t, kEntryBytes> bytes{};
    bytes[0] = static_cast<std::uint8_t>(entry.kind);
    if (entry.kind != Free::None) {
        storeLE(&bytes[4], entry.amount);
        for (std::size_t i = 0; i < 3; ++i)
            bytes[1 + i] = static_cast<std::uint8_t>(entry.offset >> (8 + 8 * i));
    }
    file_.writeAt(kTableAt + at * kEntryBytes, bytes);
}

void MbFile::setEntry(std::uint64_t offset, Free kind, std::uint16_t amount)
{
    const auto own = std::find_if(free_.begin(), free_.end(), [&](const Entry& e) {
        return e.kind != Free::None && e.offset == offset;
    });
    if (amount == 0)
        kind = Free::None;
    auto at = own;
    if (at == free_.end() && kind != Free::None) {
        at = std::find_if(free_.begin(), free_.end(),
                          [](const Entry& e) { return e.kind == Free::None; });
        if (at == free_.end()) {
            if (free_.size() == kEntries)
                return;  // 2
            at = free_.insert(free_.end(), Entry{});
        }
    }
    if (at == free_.end())
        return;
    *at = {kind, offset, amount};
    writeEntry(static_cast<std::size_t>(at - free_.begin()));
}

void MbFile::dropEntry(std::uint64_t offset)
{
    setEntry(offset, Free::None, 0);
}

bool MbFile::read(const LongPointer& pointer, std::string& out, std::string& why) const
{
    const auto fail = [&](const char* text) {
        why = text;
        return false;
    };
    std::array<std::uint8_t, kSlotsAt + kSlots * kSlotBytes> head{};
    if (pointer.offset < kMbUnit || file_.readAt(pointer.offset, head) < kLargeHead)
        return fail("its place is outside the MB file");
    std::uint64_t at = pointer.offset;
    if (head[0] == kLargeBlock) {
        if (pointer.slot != kWholeBlock || loadLE<std::uint32_t>(&head[3]) != pointer.length)
            return fail("the block in the MB file has another length");
        at += kLargeHead;
    } else if (head[0] == kSmallBlock) {
        if (pointer.slot >= kSlots)
            return fail("the block in the MB file holds small values");
        const Slot slot = Slot::read(head.data(), pointer.slot);
        if (slot.start == 0 || !slot.fits() || slot.length() != pointer.length)
            return fail("its place in the MB file has another length");
        at += slot.start * kChunk;
    } else {
        return fail("there is no value at its place in the MB file");
    }
    if (pointer.length > file_.size() - std::min(file_.size(), at))
        return fail("it is cut off by the end of the MB file");
    out.resize(pointer.length);
    file_.readAt(at, {reinterpret_cast<std::uint8_t*>(out.data()), out.size()});
    return true;
}

LongPointer MbFile::store(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() > std::size_t{kMostUnits} * kMbUnit - kLargeHead)
        throw EngineError(EngineErrorNumber::ValueTooLong, "The value is too long for an MB file.");
    return bytes.size() > kLongestSmall ? storeLarge(bytes) : storeSmall(bytes);
}

void MbFile::setBlockHead(std::uint64_t offset, std::uint8_t kind, std::uint32_t units)
{
    file_.writeAt(offset, std::array{kind, static_cast<std::uint8_t>(units),
                                     static_cast<std::uint8_t>(units >> 8)});
}

/// Where so many units are free, or new at the end; the block has no head yet.
std::uint64_t MbFile::takeUnits(std::uint32_t units)
{
    std::size_t best = free_.size();
    for (std::size_t n = 0; n < free_.size(); ++n)
        if (free_[n].kind == Free::Units && free_[n].amount >= units &&
            (best == free_.size() || free_[n].amount < free_[best].amount))
            best = n;
    if (best < free_.size()) {
        const Entry entry = free_[best];
        std::array<std::uint8_t, 3> head{};
        file_.readAt(entry.offset, head);
        dropEntry(entry.offset);
        // A table that lies is not followed.
        if (head[0] == kFreeBlock && loadLE<std::uint16_t>(&head[1]) == entry.amount) {
            const std::uint32_t rest = entry.amount - units;
            if (rest > 0) {
                const std::uint64_t behind = entry.offset + std::uint64_t{units} * kMbUnit;
                setBlockHead(behind, kFreeBlock, rest);
                setEntry(behind, Free::Units, static_cast<std::uint16_t>(rest));
            }
            return entry.offset;
        }
        return takeUnits(units);
    }
    const std::uint64_t end = (file_.size() + kMbUnit - 1) / kMbUnit * kMbUnit;
    if (end + std::uint64_t{units} * kMbUnit > 0xFFFFFFFFu)
        throw EngineError(EngineErrorNumber::DatabaseFull, "The MB file is full.");
    file_.resize(end + std::uint64_t{units} * kMbUnit);
    return end;
}

LongPointer MbFile::storeLarge(std::span<const std::uint8_t> bytes)
{
    const std::uint32_t units = unitsFor(bytes.size());
    const std::uint64_t offset = takeUnits(units);
    std::array<std::uint8_t, kLargeHead> head{kLargeBlock, static_cast<std::uint8_t>(units),
                                              static_cast<std::uint8_t>(units >> 8)};
    storeLE(&head[3], static_cast<std::uint32_t>(bytes.size()));
    storeLE(&head[7], kMark);
    file_.writeAt(offset, head);
    file_.writeAt(offset + kLargeHead, bytes);
    return {static_cast<std::uint32_t>(offset), kWholeBlock,
            static_cast<std::uint32_t>(bytes.size()), kMark};
}

LongPointer MbFile::storeSmall(std::span<const std::uint8_t> bytes)
{
    const std::size_t chunks = (bytes.size() + kChunk - 1) / kChunk;
    LongPointer pointer;
    for (std::size_t n = 0; n < free_.size(); ++n)
        if (free_[n].kind == Free::Chunks && free_[n].amount >= chunks &&
            storeInBlock(free_[n].offset, bytes, pointer))
            return pointer;
    const std::uint64_t offset = takeUnits(1);
    Unit unit{};
    unit[0] = kSmallBlock;
    unit[1] = 1;
    file_.writeAt(offset, unit);
    setEntry(offset, Free::Chunks, static_cast<std::uint16_t>(kChunks - kFirstChunk));
    storeInBlock(offset, bytes, pointer);
    return pointer;
}

/// False when the block has no slot left, or is not what the table says.
bool MbFile::storeInBlock(std::uint64_t offset, std::span<const std::uint8_t> bytes,
                          LongPointer& pointer)
{
    Unit unit{};
    const bool whole = file_.readAt(offset, unit) == unit.size();
    const std::size_t start = whole && unit[0] == kSmallBlock ? closeGaps(unit.data()) : 0;
    const std::size_t chunks = (bytes.size() + kChunk - 1) / kChunk;
    std::size_t n = kSlots;
    while (n > 0 && Slot::read(unit.data(), n - 1).start != 0)
        --n;
    if (start == 0 || n == 0 || start + chunks > kChunks)
        return false;
    const Slot slot{static_cast<std::uint8_t>(start), static_cast<std::uint8_t>(chunks), kMark,
                    static_cast<std::uint8_t>(bytes.size() - (chunks - 1) * kChunk)};
    slot.write(unit.data(), n - 1);
    std::copy(bytes.begin(), bytes.end(),
              unit.begin() + static_cast<std::ptrdiff_t>(start * kChunk));
    file_.writeAt(offset, unit);
    setEntry(offset, Free::Chunks, static_cast<std::uint16_t>(kChunks - start - chunks));
    pointer = {static_cast<std::uint32_t>(offset), static_cast<std::uint8_t>(n - 1),
               static_cast<std::uint32_t>(bytes.size()), kMark};
    return true;
}

void MbFile::release(const LongPointer& pointer)
{
    if (pointer.offset < kMbUnit || pointer.length == 0)
        return;
    std::array<std::uint8_t, 7> head{};
    if (file_.readAt(pointer.offset, head) != head.size())
        return;
    if (head[0] == kSmallBlock)
        releaseSmall(pointer);
    else if (head[0] == kLargeBlock && pointer.slot == kWholeBlock &&
             loadLE<std::uint32_t>(&head[3]) == pointer.length)
        releaseUnits(pointer.offset, loadLE<std::uint16_t>(&head[1]));
}

void MbFile::releaseSmall(const LongPointer& pointer)
{
    Unit unit{};
    if (file_.readAt(pointer.offset, unit) != unit.size() || pointer.slot >= kSlots)
        return;
    const Slot gone = Slot::read(unit.data(), pointer.slot);
    if (gone.start == 0 || gone.length() != pointer.length)
        return;
    Slot{0, gone.chunks, gone.mark, gone.inLast}.write(unit.data(), pointer.slot);
    const std::size_t end = closeGaps(unit.data());
    if (end == 0)
        return;  // what is damaged stays as it is
    if (end == kFirstChunk)
        return releaseUnits(pointer.offset, 1);
    file_.writeAt(pointer.offset, unit);
    setEntry(pointer.offset, Free::Chunks, static_cast<std::uint16_t>(kChunks - end));
}

/// A block becomes free, together with free ones beside it.
void MbFile::releaseUnits(std::uint64_t offset, std::uint32_t units)
{
    if (units == 0 || offset + std::uint64_t{units} * kMbUnit > file_.size())
        return;
    dropEntry(offset);
    for (std::size_t n = 0; n < free_.size(); ++n) {
        const Entry entry = free_[n];
        const std::uint64_t end = offset + std::uint64_t{units} * kMbUnit;
        if (entry.kind != Free::Units || units + entry.amount > kMostUnits)
            continue;
        const bool before = entry.offset + std::uint64_t{entry.amount} * kMbUnit == offset;
        if (!before && entry.offset != end)
            continue;
        if (before)
            offset = entry.offset;
        units += entry.amount;
        dropEntry(entry.offset);
    }
    setBlockHead(offset, kFreeBlock, units);
    setEntry(offset, Free::Units, static_cast<std::uint16_t>(units));
}

}  // namespace velnor::paradox
