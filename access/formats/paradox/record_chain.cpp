#include "access/formats/paradox/record_chain.h"

#include <algorithm>
#include <cstring>

#include "access/engine_error.h"

namespace velnor::paradox {

int KeyOrder::compare(const std::uint8_t* a, const std::uint8_t* b, std::size_t length) const
{
    const int by = std::memcmp(a, b, length);
    return descending ? -by : by;
}

RecordChain::RecordChain(BlockFile& blocks, std::size_t keyLength, KeyOrder order)
    : blocks_(blocks), keyLength_(keyLength), recordSize_(blocks.header().recordSize),
      order_(order), capacity_(static_cast<std::uint32_t>(blocks.header().recordsPerBlock()))
{
    load();
}

void RecordChain::load()
{
    chain_.clear();
    counts_.assign(blocks_.count() + 1u, 0);
    firstKeys_.assign((blocks_.count() + 1u) * keyLength_, 0);
    records_ = 0;
    damage_.clear();
    std::vector<bool> seen(blocks_.count() + 1u, false);
    std::uint32_t before = 0, next = 0;
    // A table that never had a block names none, or names one that is not there.
    std::uint32_t number = blocks_.count() ? blocks_.header().firstBlock : 0;
    for (; number; before = number, number = next) {
        if (!blocks_.has(number))
            damage_ = "its chain of blocks leads to block " + std::to_string(number) +
                      ", which is not there";
        else if (seen[number])
            damage_ = "its chain of blocks comes back to block " + std::to_string(number);
        if (!damage_.empty() || !walkBlock(number, before, next))
            break;
        seen[number] = true;
    }
    testOrder();
}

bool RecordChain::walkBlock(std::uint32_t number, std::uint32_t, std::uint32_t& next)
{
    std::vector<std::uint8_t> start(kBlockHead + keyLength_);
    blocks_.readStart(number, start);
    const BlockHead head = BlockHead::read(start.data());
    const auto size = static_cast<int>(recordSize_);
    const int count = head.last / size + 1;
    if (head.last % size != 0 || head.last < -size || count > static_cast<int>(capacity_)) {
        damage_ = "the number of records in block " + std::to_string(number) + " cannot be right";
        return false;
    }
    chain_.push_back(static_cast<std::uint16_t>(number));
    counts_[number] = static_cast<std::uint16_t>(count);
    records_ += count;
    keepFirstKey(number, start.data());
    next = head.next;
    return true;
}

void RecordChain::testOrder()
{
    blocksAscend_ = true;
    if (keyLength_ == 0 || !order_.byBytes)
        return;
    const std::uint8_t* last = nullptr;
    for (std::size_t at = 0; at < chain_.size(); ++at) {
        if (recordsAt(at) == 0)
            continue;
        if (last && order_.compare(last, firstKey(at), keyLength_) >= 0)
            blocksAscend_ = false;
        last = firstKey(at);
    }
    // An empty block between others has no key to be found by.
    for (std::size_t at = 0; chain_.size() > 1 && at < chain_.size(); ++at)
        blocksAscend_ = blocksAscend_ && recordsAt(at) > 0;
}

void RecordChain::keepFirstKey(std::uint32_t block, const std::uint8_t* bytes)
{
    if (keyLength_)
        std::memcpy(firstKeys_.data() + block * keyLength_, bytes + kBlockHead, keyLength_);
}

const std::uint8_t* RecordChain::record(Place place)
{
    return blocks_.block(chain_[place.at]) + kBlockHead + place.slot * recordSize_;
}

std::int64_t RecordChain::ordinalOf(Place place) const
{
    std::int64_t ordinal = place.slot;
    for (std::size_t at = 0; at < place.at; ++at)
        ordinal += recordsAt(at);
    return ordinal;
}

std::optional<Place> RecordChain::placeOf(std::int64_t ordinal) const
{
    if (ordinal < 0 || ordinal >= records_)
        return std::nullopt;
    std::uint32_t at = 0;
    for (; ordinal >= recordsAt(at); ++at)
        ordinal -= recordsAt(at);
    return Place{at, static_cast<std::uint32_t>(ordinal)};
}

std::optional<std::size_t> RecordChain::positionOf(std::uint32_t block) const
{
    if (keyLength_ && block < counts_.size() && counts_[block] > 0 &&
        ordered()) {  // by its first key
        const std::uint8_t* key = firstKeys_.data() + block * keyLength_;
        const auto found = std::lower_bound(
            chain_.begin(), chain_.end(), key, [&](std::uint16_t b, const std::uint8_t* wanted) {
                return order_.compare(firstKeys_.data() + b * keyLength_, wanted, keyLength_) < 0;
            });
        if (found != chain_.end() && *found == block)
            return static_cast<std::size_t>(found - chain_.begin());
    }
    const auto found = std::find(chain_.begin(), chain_.end(), block);
    if (found == chain_.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - chain_.begin());
}

bool RecordChain::settle(Place& place) const
{
    while (place.at < chain_.size() && place.slot >= recordsAt(place.at))
        place = {place.at + 1, 0};
    return place.at < chain_.size();
}

Place RecordChain::lowerBound(const std::uint8_t* key, std::size_t length, bool behind)
{
    const int least = behind ? 1 : 0;
    const auto stays = [&](const std::uint8_t* own) {
        return order_.compare(own, key, length) >= least;
    };
    // The first block that begins at or behind the place: the record is in the one before.
    std::size_t low = 0, high = chain_.size();
    if (high > 0 && recordsAt(high - 1) > 0 && !stays(firstKey(high - 1)))
        low = high;  // what comes in order goes to the end
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (stays(firstKey(middle)))
            high = middle;
        else
            low = middle + 1;
    }
    if (low == 0)
        return {0, 0};
    const std::size_t at = low - 1;
    const std::uint8_t* bytes = blocks_.block(chain_[at]) + kBlockHead;
    std::uint32_t first = 0, last = recordsAt(at);
    if (last > 0 && !stays(bytes + (last - 1) * recordSize_))
        first = last;
    while (first < last) {
        const std::uint32_t middle = (first + last) / 2;
        if (stays(bytes + middle * recordSize_))
            last = middle;
        else
            first = middle + 1;
    }
    return {static_cast<std::uint32_t>(at), first};
}

std::optional<Place> RecordChain::findInBlock(std::size_t at, const std::uint8_t* key,
                                              std::size_t length)
{
    const std::uint8_t* bytes = blocks_.block(chain_[at]) + kBlockHead;
    const std::uint32_t count = recordsAt(at);
    for (std::uint32_t slot = 0; slot < count; ++slot)
        if (std::memcmp(bytes + slot * recordSize_, key, length) == 0)
            return Place{static_cast<std::uint32_t>(at), slot};
    return std::nullopt;
}

std::optional<Place> RecordChain::find(const std::uint8_t* key, std::size_t length)
{
    if (ordered()) {
        Place place = lowerBound(key, length);
        if (settle(place) && std::memcmp(record(place), key, length) == 0)
            return place;
        return std::nullopt;
    }
    for (std::size_t at = 0; at < chain_.size(); ++at)
        if (const auto found = findInBlock(at, key, length))
            return found;
    return std::nullopt;
}

void RecordChain::setCount(std::uint32_t block, std::uint8_t* bytes, std::uint32_t count)
{
    records_ += static_cast<std::int64_t>(count) - counts_[block];
    counts_[block] = static_cast<std::uint16_t>(count);
    BlockHead head = BlockHead::read(bytes);
    head.last =
        static_cast<std::int16_t>((static_cast<int>(count) - 1) * static_cast<int>(recordSize_));
    head.write(bytes);
    blocks_.header().records = static_cast<std::uint32_t>(records_);
}

/// A new empty block behind the one at `behind`, or the first of all when there is none.
std::uint32_t RecordChain::linkNewBlock(std::size_t behind)
{
    const std::uint32_t number = blocks_.take();
    if (counts_.size() <= number) {
        counts_.resize(number + 1u, 0);
        firstKeys_.resize((number + 1u) * keyLength_, 0);
    }
    counts_[number] = 0;
    FileHeader& header = blocks_.header();
    BlockHead head{0, 0, static_cast<std::int16_t>(-static_cast<int>(recordSize_))};
    const std::size_t position = chain_.empty() ? 0 : behind + 1;
    if (!chain_.empty()) {
        const std::uint32_t before = chain_[behind];
        std::uint8_t* bytes = blocks_.edit(before);
        BlockHead own = BlockHead::read(bytes);
        head.next = own.next;
        head.previous = static_cast<std::uint16_t>(before);
        own.next = static_cast<std::uint16_t>(number);
        own.write(bytes);
        if (head.next) {
            bytes = blocks_.edit(head.next);
            own = BlockHead::read(bytes);
            own.previous = static_cast<std::uint16_t>(number);
            own.write(bytes);
        }
    } else {
        header.firstBlock = static_cast<std::uint16_t>(number);
    }
    if (!head.next)
        header.lastBlock = static_cast<std::uint16_t>(number);
    head.write(blocks_.edit(number));
    chain_.insert(chain_.begin() + static_cast<std::ptrdiff_t>(position),
                  static_cast<std::uint16_t>(number));
    if (watcher_)
        watcher_->blockAdded(position);
    return number;
}

/// The upper half of a full block goes to a new one behind it.
void RecordChain::split(std::size_t at)
{
    const std::uint32_t count = recordsAt(at), stay = (count + 1) / 2;
    const std::uint8_t* from = blocks_.block(chain_[at]) + kBlockHead + stay * recordSize_;
    const std::vector<std::uint8_t> upper(from, from + (count - stay) * recordSize_);
    const std::uint32_t number = linkNewBlock(at);
    std::uint8_t* bytes = blocks_.edit(number);
    std::copy(upper.begin(), upper.end(), bytes + kBlockHead);
    setCount(number, bytes, count - stay);
    keepFirstKey(number, bytes);
    setCount(chain_[at], blocks_.edit(chain_[at]), stay);
}

Place RecordChain::append(const std::uint8_t* record)
{
    const std::size_t last = chain_.empty() ? 0 : chain_.size() - 1;
    return insert({static_cast<std::uint32_t>(last), chain_.empty() ? 0 : recordsAt(last)}, record);
}

Place RecordChain::insert(Place place, const std::uint8_t* record)
{
    if (chain_.empty()) {
        linkNewBlock(0);
        place = {0, 0};
    } else if (recordsAt(place.at) == capacity_) {
        if (place.at + 1u == chain_.size() && place.slot == capacity_) {
            linkNewBlock(place.at);
            place = {place.at + 1, 0};
        } else {
            split(place.at);
            if (const std::uint32_t stay = recordsAt(place.at); place.slot > stay)
                place = {place.at + 1, place.slot - stay};
        }
    }
    const std::uint32_t block = chain_[place.at], count = recordsAt(place.at);
    std::uint8_t* bytes = blocks_.edit(block);
    std::uint8_t* to = bytes + kBlockHead + place.slot * recordSize_;
    std::memmove(to + recordSize_, to, (count - place.slot) * recordSize_);
    std::memcpy(to, record, recordSize_);
    setCount(block, bytes, count + 1);
    if (place.slot == 0)
        keepFirstKey(block, bytes);
    return place;
}

void RecordChain::overwrite(Place place, const std::uint8_t* record)
{
    std::uint8_t* bytes = blocks_.edit(chain_[place.at]);
    std::memcpy(bytes + kBlockHead + place.slot * recordSize_, record, recordSize_);
    if (place.slot == 0)
        keepFirstKey(chain_[place.at], bytes);
}

void RecordChain::remove(Place place)
{
    const std::uint32_t block = chain_[place.at], count = recordsAt(place.at);
    std::uint8_t* bytes = blocks_.edit(block);
    std::uint8_t* from = bytes + kBlockHead + place.slot * recordSize_;
    std::memmove(from, from + recordSize_, (count - place.slot - 1) * recordSize_);
    setCount(block, bytes, count - 1);
    if (place.slot == 0 && count > 1)
        keepFirstKey(block, bytes);
    if (count > 1 || chain_.size() == 1)
        return;
    if (place.at == 0)
        moveNextIntoFirst();
    else
        unlinkBlock(place.at);
}

/// 2.
void RecordChain::moveNextIntoFirst()
{
    const std::uint32_t first = chain_[0], next = chain_[1], count = recordsAt(1);
    const std::uint8_t* from = blocks_.block(next) + kBlockHead;
    const std::vector<std::uint8_t> records(from, from + count * recordSize_);
    setCount(next, blocks_.edit(next), 0);
    std::uint8_t* bytes = blocks_.edit(first);
    std::copy(records.begin(), records.end(), bytes + kBlockHead);
    setCount(first, bytes, count);
    keepFirstKey(first, bytes);
    unlinkBlock(1);
}

void RecordChain::unlinkBlock(std::size_t at)
{
    const std::uint32_t block = chain_[at];
    const BlockHead head = BlockHead::read(blocks_.block(block));
    std::uint8_t* bytes = blocks_.edit(chain_[at - 1]);
    BlockHead other = BlockHead::read(bytes);
    other.next = head.next;
    other.write(bytes);
    if (head.next) {
        bytes = blocks_.edit(head.next);
        other = BlockHead::read(bytes);
        other.previous = chain_[at - 1];
        other.write(bytes);
    } else {
        blocks_.header().lastBlock = chain_[at - 1];
    }
    chain_.erase(chain_.begin() + static_cast<std::ptrdiff_t>(at));
    if (watcher_)
        watcher_->blockRemoved(at);
    blocks_.give(block);
}

void RecordChain::mendCounts()
{
    FileHeader& header = blocks_.header();
    bool broken = false;
    std::vector<std::uint16_t> unused = blocks_.freeBlocks(broken);
    std::vector<bool> taken(blocks_.count() + 1u, false);
    std::size_t highest = 0;
    for (const std::uint16_t number : chain_) {
        taken[number] = true;
        highest = std::max<std::size_t>(highest, number);
    }
    for (const std::uint16_t number : unused) {
        broken = broken || taken[number];
        highest = std::max<std::size_t>(highest, number);
    }
    header.records = static_cast<std::uint32_t>(records_);
    header.usedBlocks = static_cast<std::uint16_t>(chain_.size());
    header.firstBlock = chain_.empty() ? std::uint16_t{0} : chain_.front();
    header.lastBlock = chain_.empty() ? std::uint16_t{0} : chain_.back();
    if (!broken && chain_.size() + unused.size() == header.fileBlocks &&
        highest <= header.fileBlocks)
        return;
    unused.clear();
    for (std::uint32_t number = 1; number <= blocks_.count(); ++number)
        if (!taken[number])
            unused.push_back(static_cast<std::uint16_t>(number));
    header.fileBlocks = static_cast<std::uint16_t>(blocks_.count());
    blocks_.setFree(unused);
}

}  // namespace velnor::paradox
