#include "access/formats/xbase/entry_list.h"

#include <algorithm>

#include "access/storage/byte_reader.h"

namespace velnor::xbase {

void EntryList::reserve(std::size_t entries)
{
    keys_.reserve(entries * keyLength_);
    records_.reserve(entries);
}

void EntryList::clear()
{
    keys_.clear();
    records_.clear();
}

bool EntryList::before(std::size_t a, std::size_t b) const
{
    const int by = std::memcmp(key(a), key(b), keyLength_);
    return by ? by < 0 : records_[a] < records_[b];
}

void EntryList::sort()
{
    bool sorted = true;
    for (std::size_t i = 1; sorted && i < count(); ++i)
        sorted = !before(i, i - 1);
    if (sorted)
        return;
    struct Item {
        std::uint64_t head;
        std::uint32_t index;
    };
    std::vector<Item> items(count());
    for (std::size_t i = 0; i < count(); ++i) {
        std::uint8_t head[8] = {};
        std::memcpy(head, key(i), std::min<std::size_t>(keyLength_, 8));
        items[i] = {loadBE<std::uint64_t>(head), static_cast<std::uint32_t>(i)};
    }
    std::sort(items.begin(), items.end(), [this](const Item& a, const Item& b) {
        return a.head != b.head ? a.head < b.head : before(a.index, b.index);
    });
    std::vector<std::uint8_t> keys(keys_.size());
    std::vector<std::uint32_t> records(records_.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        std::memcpy(keys.data() + i * keyLength_, key(items[i].index), keyLength_);
        records[i] = records_[items[i].index];
    }
    keys_ = std::move(keys);
    records_ = std::move(records);
}

void EntryList::merge(const EntryList& other)
{
    EntryList both(keyLength_);
    both.reserve(count() + other.count());
    std::size_t mine = 0, theirs = 0;
    while (mine < count() || theirs < other.count()) {
        bool takeMine = theirs == other.count();
        if (!takeMine && mine < count()) {
            const int by = std::memcmp(key(mine), other.key(theirs), keyLength_);
            takeMine = by ? by < 0 : records_[mine] < other.records_[theirs];
        }
        const EntryList& from = takeMine ? *this : other;
        std::size_t& at = takeMine ? mine : theirs;
        both.add(from.key(at), from.record(at));
        ++at;
    }
    *this = std::move(both);
}

}  // namespace velnor::xbase
