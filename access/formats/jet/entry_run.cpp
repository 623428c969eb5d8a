#include "access/formats/jet/entry_run.h"

#include <algorithm>
#include <cstring>

#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

constexpr std::size_t kBlockBytes = 4u << 20;
constexpr std::size_t kLengthBytes = 2;
constexpr std::size_t kPlaceBytes = 4;

/// Key and place of the entry at `p`, in front of which stands the length of both.
KeyView entryAt(const std::uint8_t* p)
{
    return {p + kLengthBytes, loadLE<std::uint16_t>(p)};
}

constexpr std::size_t kHead = 8;

/// Eight bytes of a key from `at` on, filled up with zeros: as a number they order as the bytes do.
std::uint64_t headOf(KeyView key, std::size_t at)
{
    std::uint8_t part[kHead] = {};
    if (at < key.size())
        std::memcpy(part, key.data() + at, std::min(key.size() - at, kHead));
    return loadBE<std::uint64_t>(part);
}

KeyView keyOf(KeyView entry)
{
    return entry.first(entry.size() - kPlaceBytes);
}

}  // namespace

void EntryRun::add(KeyView key, RowPointer row)
{
    const std::size_t size = key.size() + kPlaceBytes;
    if (open_.size() + kLengthBytes + size > kBlockBytes)
        closeBlock();
    if (open_.capacity() == 0 && !blocks_.empty())
        open_.reserve(kBlockBytes);
    const std::size_t at = open_.size();
    open_.resize(at + kLengthBytes + size);
    std::uint8_t* p = open_.data() + at;
    storeLE(p, static_cast<std::uint16_t>(size));
    std::memcpy(p + kLengthBytes, key.data(), key.size());
    storeBE(p + kLengthBytes + key.size(), row.word());
    items_.push_back({headOf(key, 0), static_cast<std::uint32_t>(at)});
    ++count_;
}

std::size_t EntryRun::bytes() const
{
    std::size_t all = open_.size() + items_.size() * sizeof(Item);
    for (const Block& block : blocks_)
        all += block.size();
    return all;
}

void EntryRun::clear()
{
    *this = EntryRun();
}

/// Sorts items whose keys are the same in front of `at`, and whose heads are of there: by the
/// heads, then those with the same by the bytes that follow.
void EntryRun::sortFrom(std::span<Item> items, std::size_t at)
{
    const auto less = [](const Item& a, const Item& b) { return a.head < b.head; };
    if (!std::is_sorted(items.begin(), items.end(), less))
        std::sort(items.begin(), items.end(), less);
    for (std::size_t from = 0, to = 0; from < items.size(); from = to) {
        while (to < items.size() && items[to].head == items[from].head)
            ++to;
        if (to - from > 1)
            sortSame(items.subspan(from, to - from), at + kHead);
    }
}

/// Items whose keys are the same in front of `at`, but for zeros where one has ended.
void EntryRun::sortSame(std::span<Item> items, std::size_t at)
{
    const auto entry = [this](const Item& item) { return entryAt(open_.data() + item.at); };
    const bool ends = std::ranges::any_of(
        items, [&](const Item& item) { return entry(item).size() <= at + kPlaceBytes; });
    if (ends || items.size() < 8) {
        const auto less = [&](const Item& a, const Item& b) {
            return compareEntries(entry(a), entry(b)) < 0;
        };
        if (!std::is_sorted(items.begin(), items.end(), less))
            std::sort(items.begin(), items.end(), less);
        return;
    }
    for (Item& item : items)
        item.head = headOf(keyOf(entry(item)), at);
    sortFrom(items, at);
}

void EntryRun::closeBlock()
{
    sortFrom(items_, 0);
    Block sorted(open_.size());
    std::uint8_t* out = sorted.data();
    for (const Item& item : items_) {
        const std::uint8_t* p = open_.data() + item.at;
        const std::size_t size = kLengthBytes + loadLE<std::uint16_t>(p);
        std::memcpy(out, p, size);
        out += size;
    }
    blocks_.push_back(std::move(sorted));
    items_.clear();
    open_.clear();
}

/// Reads several sorted blocks as one: the block whose next entry is the least lies on top of a
/// heap.
class EntryRun::Merge {
public:
    explicit Merge(const std::vector<Block>& blocks)
    {
        for (const Block& block : blocks) {
            Reader reader{block.data(), block.data() + block.size(), 0};
            if (reader.at != reader.end) {
                reader.head = headOf(keyOf(entryAt(reader.at)), 0);
                heap_.push_back(reader);
            }
        }
        std::make_heap(heap_.begin(), heap_.end(), later);
    }

    std::optional<IndexEntry> next()
    {
        if (given_)
            step();
        if (heap_.empty())
            return std::nullopt;
        given_ = true;
        const KeyView entry = entryAt(heap_.front().at);
        const KeyView key = keyOf(entry);
        const auto word = loadBE<std::uint32_t>(key.data() + key.size());
        return IndexEntry{key, RowPointer::fromWord(word)};
    }

private:
    struct Reader {
        const std::uint8_t* at;
        const std::uint8_t* end;
        std::uint64_t head;
    };
    static bool later(const Reader& a, const Reader& b)
    {
        if (a.head != b.head)
            return a.head > b.head;
        return compareEntries(entryAt(a.at), entryAt(b.at)) > 0;
    }

    /// The top block goes on to its next entry, and down to where that belongs.
    void step()
    {
        given_ = false;
        Reader reader = heap_.front();
        reader.at += kLengthBytes + loadLE<std::uint16_t>(reader.at);
        if (reader.at == reader.end) {
            std::pop_heap(heap_.begin(), heap_.end(), later);
            heap_.pop_back();
            return;
        }
        reader.head = headOf(keyOf(entryAt(reader.at)), 0);
        std::size_t hole = 0;
        for (;;) {
            std::size_t child = 2 * hole + 1;
            if (child >= heap_.size())
                break;
            if (child + 1 < heap_.size() && later(heap_[child], heap_[child + 1]))
                ++child;
            if (!later(reader, heap_[child]))
                break;
            heap_[hole] = heap_[child];
            hole = child;
        }
        heap_[hole] = reader;
    }

    std::vector<Reader> heap_;
    bool given_ = false;
};

EntrySource EntryRun::sorted()
{
    if (!items_.empty())
        closeBlock();
    return [merge = std::make_shared<Merge>(blocks_)] { return merge->next(); };
}

}  // namespace velnor::jet
