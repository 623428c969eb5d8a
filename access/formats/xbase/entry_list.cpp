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

void EntryList::eraseFront(std::size_t entries)
{
    keys_.erase(keys_.begin(), keys_.begin() + static_cast<std::ptrdiff_t>(entries * keyLength_));
    records_.erase(records_.begin(), records_.begin() + static_cast<std::ptrdiff_t>(entries));
}

bool ListedEntries::more(EntryList& into)
{
    constexpr std::size_t kAtOnce = 2048;
    const std::size_t end = std::min(list_.count(), at_ + kAtOnce);
    for (; at_ < end; ++at_)
        into.add(list_.key(at_), list_.record(at_));
    return at_ < list_.count();
}

bool EntryList::before(std::size_t a, std::size_t b) const
{
    const int by = std::memcmp(key(a), key(b), keyLength_);
    return by ? by < 0 : records_[a] < records_[b];
}

/// By eight bytes of the keys from `at` on; those that are equal there, by the next eight.
void EntryList::sortFrom(std::span<Item> items, std::size_t at) const
{
    if (at >= keyLength_) {
        std::sort(items.begin(), items.end(), [this](const Item& a, const Item& b) {
            return records_[a.index] < records_[b.index];
        });
        return;
    }
    const std::size_t width = std::min<std::size_t>(keyLength_ - at, 8);
    for (Item& item : items) {
        std::uint8_t head[8] = {};
        std::memcpy(head, key(item.index) + at, width);
        item.head = loadBE<std::uint64_t>(head);
    }
    const auto less = [](const Item& a, const Item& b) { return a.head < b.head; };
    if (!std::is_sorted(items.begin(), items.end(), less))
        std::sort(items.begin(), items.end(), less);
    for (std::size_t from = 0; from < items.size();) {
        std::size_t end = from + 1;
        while (end < items.size() && items[end].head == items[from].head)
            ++end;
        if (end - from > 1)
            sortFrom(items.subspan(from, end - from), at + 8);
        from = end;
    }
}

void EntryList::sort()
{
    bool sorted = true;
    for (std::size_t i = 1; sorted && i < count(); ++i)
        sorted = !before(i, i - 1);
    if (sorted)
        return;
    std::vector<Item> items(count());
    for (std::size_t i = 0; i < count(); ++i)
        items[i].index = static_cast<std::uint32_t>(i);
    sortFrom(items, 0);
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
