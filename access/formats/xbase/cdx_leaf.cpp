#include "access/formats/xbase/cdx_leaf.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kHead = 24;
constexpr std::uint16_t kLeaf = 2;
constexpr std::size_t kCountAt = 2, kFreeAt = 12, kRecordMaskAt = 14, kBeforeMaskAt = 18;
constexpr std::size_t kPadMaskAt = 19, kRecordBitsAt = 20, kBeforeBitsAt = 21, kPadBitsAt = 22;
constexpr std::size_t kEntryBytesAt = 23;
constexpr std::size_t kLongestKeyBytes = 256;

[[noreturn]] void damaged(const char* how)
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      std::string("A node of an index is damaged: ") + how + ".");
}

/// How an entry divides its bits.
struct Packing {
    std::uint32_t entryBytes, recordBits, countBits;

    std::uint64_t entry(std::uint32_t record, std::uint32_t before, std::uint32_t pads) const
    {
        return record | std::uint64_t{before} << recordBits |
               std::uint64_t{pads} << (recordBits + countBits);
    }
    void write(std::uint64_t value, std::uint8_t* to) const
    {
        for (std::uint32_t b = 0; b < entryBytes; ++b, value >>= 8)
            to[b] = static_cast<std::uint8_t>(value);
    }
};

/// The shortest entries that hold this record number.
Packing packingFor(std::uint32_t keyLength, std::uint32_t largestRecord)
{
    const auto countBits = static_cast<std::uint32_t>(std::bit_width(keyLength));
    const auto needed = static_cast<std::uint32_t>(std::bit_width(largestRecord)) + 2 * countBits;
    const std::uint32_t bytes = std::max(2u, (needed + 7) / 8);
    return {bytes, std::min(32u, bytes * 8 - 2 * countBits), countBits};
}

std::uint64_t loadEntry(const std::uint8_t* p, std::uint32_t bytes)
{
    std::uint64_t value = 0;
    for (std::uint32_t i = bytes; i-- > 0;)
        value = value << 8 | p[i];
    return value;
}

std::uint32_t lengthWithoutPads(const std::uint8_t* key, std::uint32_t length, std::uint8_t pad)
{
    const std::uint64_t pads = 0x0101010101010101u * pad;
    while (length >= 8 && loadLE<std::uint64_t>(key + length - 8) == pads)
        length -= 8;
    while (length > 0 && key[length - 1] == pad)
        --length;
    return length;
}

/// Bytes that two keys begin with, at most `length`.
std::uint32_t commonBytes(const std::uint8_t* a, const std::uint8_t* b, std::uint32_t length)
{
    std::uint32_t same = 0;
    for (; same + 8 <= length; same += 8)
        if (const std::uint64_t by =
                loadLE<std::uint64_t>(a + same) ^ loadLE<std::uint64_t>(b + same))
            return same + static_cast<std::uint32_t>(std::countr_zero(by)) / 8;
    while (same < length && a[same] == b[same])
        ++same;
    return same;
}

/// A key that those of a leaf are compared with.
class SoughtKey {
public:
    SoughtKey(const std::uint8_t* key, std::size_t length, std::uint8_t pad)
        : key_(key), length_(static_cast<std::uint32_t>(length)), pad_(pad),
          end_(lengthWithoutPads(key, length_, pad))
    {
    }

    /// How another key compares with this one, whose first `before` bytes it has, then those at
    /// `kept`, and pad bytes from `end` on. `same` becomes the place of the first difference.
    int compare(const std::uint8_t* kept, std::uint32_t before, std::uint32_t end,
                std::uint32_t& same) const
    {
        const std::uint32_t both = std::min(end, length_);
        same = before;
        if (before < both) {
            same += commonBytes(kept, key_ + before, both - before);
            if (same < both)
                return kept[same - before] < key_[same] ? -1 : 1;
        }
        for (; same < end_; ++same)
            if (key_[same] != pad_)
                return pad_ < key_[same] ? -1 : 1;
        same = length_;
        return 0;
    }

private:
    const std::uint8_t* key_;
    std::uint32_t length_;
    std::uint8_t pad_;
    std::uint32_t end_;  // behind it the key has pad bytes
};

/// An entry of a leaf as a number: at most eight bytes, lowest first.
std::uint64_t entryBits(const std::uint8_t* page, std::size_t at, std::uint32_t bytes)
{
    if (at + 8 > kCdxNodeBytes)
        return loadEntry(page + at, bytes);
    return loadLE<std::uint64_t>(page + at) & (~std::uint64_t{0} >> (64 - 8 * bytes));
}

/// The entries of a packed leaf, one after the other, each checked against the leaf.
class LeafReader {
public:
    LeafReader(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint32_t keyLength)
        : p_(bytes.data()), length_(keyLength), count_(loadLE<std::uint16_t>(p_ + kCountAt)),
          recordMask_(loadLE<std::uint32_t>(p_ + kRecordMaskAt)), beforeMask_(p_[kBeforeMaskAt]),
          padMask_(p_[kPadMaskAt]), recordBits_(p_[kRecordBitsAt]), beforeBits_(p_[kBeforeBitsAt]),
          entryBytes_(p_[kEntryBytesAt]), lowest_(kHead + count_ * entryBytes_)
    {
        sound_ = count_ == 0 || (entryBytes_ >= 1 && entryBytes_ <= 8 && recordBits_ <= 32 &&
                                 beforeBits_ <= 16 && lowest_ <= kCdxNodeBytes);
    }

    bool sound() const { return sound_; }
    std::size_t count() const { return count_; }

    /// Goes on to an entry; they must be taken in their order. False when it is not sound.
    bool take(std::size_t i)
    {
        const std::uint64_t entry = entryBits(p_, kHead + i * entryBytes_, entryBytes_);
        record = static_cast<std::uint32_t>(entry) & recordMask_;
        before = static_cast<std::uint32_t>(entry >> recordBits_) & beforeMask_;
        pads = static_cast<std::uint32_t>(entry >> (recordBits_ + beforeBits_)) & padMask_;
        if (before + pads > length_ || (i == 0 && before))
            return false;
        stored = length_ - before - pads;
        if (end_ < lowest_ + stored)
            return false;
        end_ -= stored;
        return true;
    }
    const std::uint8_t* keptBytes() const { return p_ + end_; }

    // Of the entry that was taken: what its key shares with the one before, what is kept of it, and
    // how many pad bytes end it.
    std::uint32_t record = 0, before = 0, stored = 0, pads = 0;

private:
    const std::uint8_t* p_;
    std::uint32_t length_;
    std::size_t count_;
    std::uint32_t recordMask_, beforeMask_, padMask_, recordBits_, beforeBits_, entryBytes_;
    std::size_t lowest_;
    std::size_t end_ = kCdxNodeBytes;
    bool sound_ = false;
};

}  // namespace

void decodeCdxLeaf(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint8_t pad,
                   TreeNode& node)
{
    const std::uint32_t length = node.keyLength;
    LeafReader leaf(bytes, length);
    if (!leaf.sound())
        damaged("its entries do not fit");
    node.keys.resize(leaf.count() * length);
    node.records.resize(leaf.count());
    std::uint8_t* key = node.keys.data();
    for (std::size_t i = 0; i < leaf.count(); ++i, key += length) {
        if (!leaf.take(i))
            damaged("its keys do not fit");
        if (leaf.before)
            std::memcpy(key, key - length, leaf.before);
        std::memcpy(key + leaf.before, leaf.keptBytes(), leaf.stored);
        std::memset(key + leaf.before + leaf.stored, pad, leaf.pads);
        node.records[i] = leaf.record;
    }
}

bool searchCdxLeaf(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint32_t keyLength,
                   std::uint8_t pad, const Wanted& wanted, NodeHit& hit)
{
    LeafReader leaf(bytes, keyLength);
    if (!leaf.sound() || keyLength > hit.key.size())
        return false;
    const SoughtKey sought(wanted.key, wanted.length, pad);
    std::uint8_t* key = hit.key.data();
    std::uint32_t end = 0;    // behind it the key in hand has pad bytes
    std::uint32_t match = 0;  // what the key in hand, which is in front, shares with the wanted one
    hit.count = leaf.count();
    for (hit.index = 0; hit.index < hit.count; ++hit.index) {
        if (!leaf.take(hit.index))
            return false;
        if (leaf.before > end)
            std::memset(key + end, pad, leaf.before - end);
        std::memcpy(key + leaf.before, leaf.keptBytes(), leaf.stored);
        end = leaf.before + leaf.stored;
        if (hit.index > 0 && leaf.before > match)
            continue;
        std::uint32_t same = 0;
        int by = sought.compare(leaf.keptBytes(), leaf.before, end, same);
        if (by == 0 && wanted.record != 0)
            by = (leaf.record > wanted.record) - (leaf.record < wanted.record);
        if (wanted.behind ? by > 0 : by >= 0)
            break;
        match = same;
    }
    std::memset(key + end, pad, keyLength - end);
    hit.record = leaf.record;
    return true;
}

void CdxLeafPacker::begin()
{
    largest_ = 0;
    keyBytes_ = 0;
    shares_.clear();
}

bool CdxLeafPacker::add(const std::uint8_t* key, const std::uint8_t* before, std::uint32_t record)
{
    const std::uint32_t end = lengthWithoutPads(key, keyLength_, pad_);
    const std::uint32_t same = shares_.empty() ? 0 : commonBytes(key, before, end);
    const std::uint32_t largest = std::max(largest_, record);
    const std::size_t bytes = keyBytes_ + end - same;
    const std::size_t entries = (shares_.size() + 1) * packingFor(keyLength_, largest).entryBytes;
    if (kHead + entries + bytes > kCdxNodeBytes && !shares_.empty())
        return false;
    largest_ = largest;
    keyBytes_ = bytes;
    shares_.push_back(
        {static_cast<std::uint16_t>(same), static_cast<std::uint16_t>(keyLength_ - end)});
    return true;
}

void CdxLeafPacker::write(const std::uint8_t* keys, const std::uint32_t* records,
                          CdxBytes bytes) const
{
    const Packing packing = packingFor(keyLength_, largest_);
    std::uint8_t* p = bytes.data();
    std::size_t end = kCdxNodeBytes;
    std::uint8_t* entry = p + kHead;
    for (std::size_t i = 0; i < shares_.size(); ++i, entry += packing.entryBytes) {
        const auto [before, pads] = shares_[i];
        const std::size_t stored = keyLength_ - before - pads;
        end -= stored;
        std::memcpy(p + end, keys + i * keyLength_ + before, stored);
        packing.write(packing.entry(records[i], before, pads), entry);
    }
    const std::size_t lowest = kHead + shares_.size() * packing.entryBytes;
    std::memset(p + lowest, 0, end - lowest);
    storeLE(p + kCountAt, static_cast<std::uint16_t>(shares_.size()));
    storeLE(p + kFreeAt, static_cast<std::uint16_t>(end - lowest));
    storeLE(p + kRecordMaskAt,
            static_cast<std::uint32_t>((std::uint64_t{1} << packing.recordBits) - 1));
    p[kBeforeMaskAt] = p[kPadMaskAt] = static_cast<std::uint8_t>((1u << packing.countBits) - 1);
    p[kRecordBitsAt] = static_cast<std::uint8_t>(packing.recordBits);
    p[kBeforeBitsAt] = p[kPadBitsAt] = static_cast<std::uint8_t>(packing.countBits);
    p[kEntryBytesAt] = static_cast<std::uint8_t>(packing.entryBytes);
}

namespace {

/// Looks for the place of a new entry without unpacking the keys: while the wanted key agrees in
/// `match_` bytes with the key before, a key that shares more with that one is smaller as well.
class LeafInsertion {
public:
    LeafInsertion(CdxBytes bytes, std::uint32_t keyLength, std::uint8_t pad,
                  const std::uint8_t* key, std::uint32_t record)
        : p_(bytes.data()), length_(keyLength), pad_(pad), key_(key), record_(record),
          sought_(key, keyLength, pad), count_(loadLE<std::uint16_t>(p_ + kCountAt))
    {
        packing_.entryBytes = p_[kEntryBytesAt];
        packing_.recordBits = p_[kRecordBitsAt];
        packing_.countBits = p_[kBeforeBitsAt];
        lowest_ = kHead + count_ * packing_.entryBytes;
    }

    bool run() { return isUsual() && findPlace() && room() && (enter(), true); }

private:
    struct Entry {
        std::uint32_t record, before, pads, stored;
    };

    bool isUsual() const
    {
        if (packing_.entryBytes < 1 || packing_.entryBytes > 8 || packing_.countBits > 8 || packing_.recordBits > 32)
            return false;
        const auto mask = static_cast<std::uint8_t>((1u << packing_.countBits) - 1);
        const std::uint64_t records = (std::uint64_t{1} << packing_.recordBits) - 1;
        return (p_[0] & kLeaf) && count_ > 0 &&
               packing_.countBits == static_cast<std::uint32_t>(std::bit_width(length_)) &&
               p_[kPadBitsAt] == packing_.countBits &&
               packing_.recordBits + 2 * packing_.countBits <= 8 * packing_.entryBytes &&
               p_[kBeforeMaskAt] == mask && p_[kPadMaskAt] == mask &&
               loadLE<std::uint32_t>(p_ + kRecordMaskAt) == records && record_ <= records &&
               lowest_ <= kCdxNodeBytes && length_ <= kLongestKeyBytes;
    }

    Entry entryAt(std::size_t i) const
    {
        const std::uint64_t value =
            entryBits(p_, kHead + i * packing_.entryBytes, packing_.entryBytes);
        const std::uint32_t mask = (1u << packing_.countBits) - 1;
        Entry entry;
        entry.record =
            static_cast<std::uint32_t>(value & ((std::uint64_t{1} << packing_.recordBits) - 1));
        entry.before = static_cast<std::uint32_t>(value >> packing_.recordBits) & mask;
        entry.pads =
            static_cast<std::uint32_t>(value >> (packing_.recordBits + packing_.countBits)) & mask;
        entry.stored = length_ - entry.before - entry.pads;
        return entry;
    }

    /// False when the place is behind the last entry, or the leaf is not sound.
    bool findPlace()
    {
        std::size_t end = kCdxNodeBytes;
        std::uint32_t match = 0;
        for (place_ = 0; place_ < count_; ++place_) {
            next_ = entryAt(place_);
            if (next_.before + next_.pads > length_ || end < lowest_ + next_.stored ||
                (place_ == 0 && next_.before))
                return false;
            matchBefore_ = match;
            end_ = end;
            end -= next_.stored;
            if (place_ > 0 && next_.before > match)
                continue;
            std::uint32_t same = 0;
            const int by =
                sought_.compare(p_ + end, next_.before, next_.before + next_.stored, same);
            if (by > 0 || (by == 0 && next_.record > record_)) {
                matchNext_ = same;
                return findLowest(end);
            }
            if (by == 0 && next_.record == record_)
                return false;
            match = same;
        }
        return false;
    }

    /// The kept bytes of all entries behind the place.
    bool findLowest(std::size_t end)
    {
        used_ = end;
        for (std::size_t i = place_ + 1; i < count_; ++i) {
            const Entry entry = entryAt(i);
            if (entry.before + entry.pads > length_ || used_ < lowest_ + entry.stored)
                return false;
            used_ -= entry.stored;
        }
        return true;
    }

    bool room()
    {
        const std::uint32_t ends = lengthWithoutPads(key_, length_, pad_);
        pads_ = length_ - ends;
        before_ = place_ ? std::min(matchBefore_, ends) : 0;
        stored_ = ends - before_;
        const std::uint32_t nextEnds = length_ - next_.pads;
        nextBefore_ = std::max(next_.before, std::min(matchNext_, nextEnds));
        gone_ = nextBefore_ - next_.before;
        return lowest_ + packing_.entryBytes + stored_ <= used_ + gone_;
    }

    void enter()
    {
        std::array<std::uint8_t, kLongestKeyBytes> kept;
        const std::size_t nextAt = end_ - next_.stored, keptBytes = next_.stored - gone_;
        std::memcpy(kept.data(), p_ + nextAt + gone_, keptBytes);
        const std::size_t moved = nextAt - used_;
        const std::size_t newEnd = end_ - stored_ - keptBytes;
        std::memmove(p_ + newEnd - moved, p_ + used_, moved);
        std::memcpy(p_ + newEnd, kept.data(), keptBytes);
        std::memcpy(p_ + end_ - stored_, key_ + before_, stored_);

        std::uint8_t* at = p_ + kHead + place_ * packing_.entryBytes;
        std::memmove(at + packing_.entryBytes, at, (count_ - place_) * packing_.entryBytes);
        packing_.write(packing_.entry(record_, before_, pads_), at);
        packing_.write(packing_.entry(next_.record, nextBefore_, next_.pads),
                       at + packing_.entryBytes);
        const std::size_t lowest = lowest_ + packing_.entryBytes, used = newEnd - moved;
        std::memset(p_ + lowest, 0, used - lowest);
        storeLE(p_ + kCountAt, static_cast<std::uint16_t>(count_ + 1));
        storeLE(p_ + kFreeAt, static_cast<std::uint16_t>(used - lowest));
    }

    std::uint8_t* p_;
    std::uint32_t length_;
    std::uint8_t pad_;
    const std::uint8_t* key_;
    std::uint32_t record_;
    SoughtKey sought_;
    std::size_t count_;
    Packing packing_{};
    std::size_t lowest_ = 0;                         // behind the entries
    std::size_t place_ = 0, end_ = 0, used_ = 0;     // the place, its kept bytes, all kept bytes
    Entry next_{};                                   // the entry that will stand behind the new one
    std::uint32_t matchBefore_ = 0, matchNext_ = 0;  // bytes shared with its neighbours
    std::uint32_t before_ = 0, pads_ = 0, stored_ = 0;  // of the new entry
    std::uint32_t nextBefore_ = 0, gone_ = 0;
};

}  // namespace

bool insertIntoCdxLeaf(CdxBytes bytes, std::uint32_t keyLength, std::uint8_t pad,
                       const std::uint8_t* key, std::uint32_t record)
{
    return LeafInsertion(bytes, keyLength, pad, key, record).run();
}

}  // namespace velnor::xbase
