#include "access/formats/jet/entry_run.h"

#include <algorithm>
#include <cstring>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

constexpr std::size_t kBlockBytes = 1u << 20;
constexpr std::size_t kReadBytes = 1u << 20;        // for all blocks of the file together
constexpr std::size_t kLeastReadBytes = 16u << 10;  // for one
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
    if (openBytes_ + kLengthBytes + size > kBlockBytes)
        closeBlock();
    if (!open_)
        open_ = std::make_unique_for_overwrite<std::uint8_t[]>(kBlockBytes);
    const std::size_t at = std::exchange(openBytes_, openBytes_ + kLengthBytes + size);
    std::uint8_t* p = open_.get() + at;
    storeLE(p, static_cast<std::uint16_t>(size));
    std::memcpy(p + kLengthBytes, key.data(), key.size());
    storeBE(p + kLengthBytes + key.size(), row.word());
    items_.push_back({headOf(key, 0), static_cast<std::uint32_t>(at)});
    ++count_;
    bytes_ += kLengthBytes + size;
}

bool EntryRun::full() const
{
    return noFile_ && inMemory_ > mostInMemory_;
}

void EntryRun::clear()
{
    *this = EntryRun(*space_, mostInMemory_);
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
    const auto entry = [this](const Item& item) { return entryAt(open_.get() + item.at); };
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
    Block sorted;
    sorted.bytes.resize(openBytes_);
    std::uint8_t* out = sorted.bytes.data();
    for (const Item& item : items_) {
        const std::uint8_t* p = open_.get() + item.at;
        const std::size_t size = kLengthBytes + loadLE<std::uint16_t>(p);
        std::memcpy(out, p, size);
        out += size;
    }
    inMemory_ += sorted.bytes.size();
    blocks_.push_back(std::move(sorted));
    items_.clear();
    openBytes_ = 0;
    if (inMemory_ > mostInMemory_ && !noFile_)
        moveToFile();
}

/// A disk that is full says so at the commit: here memory does as well.
void EntryRun::moveToFile()
{
    if (!file_)
        file_ = space_->scratch();
    noFile_ = !file_;
    try {
        for (Block& block : blocks_) {
            if (block.bytes.empty() || noFile_)
                continue;
            file_->writeAt(fileEnd_, block.bytes);
            block.from = fileEnd_;
            block.to = fileEnd_ += block.bytes.size();
            inMemory_ -= block.bytes.size();
            block.bytes = {};
        }
    } catch (const RunError&) {
        noFile_ = true;
    }
}

/// Reads several sorted blocks as one: the block whose next entry is the least lies on top of a
/// heap.
class EntryRun::Merge {
public:
    Merge(const std::vector<Block>& blocks, File* file) : file_(file), readers_(blocks.size())
    {
        bufferBytes_ = std::max(kReadBytes / std::max<std::size_t>(blocks.size(), 1), kLeastReadBytes);
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            Reader& reader = readers_[i];
            reader.at = blocks[i].bytes.data();
            reader.end = reader.at + blocks[i].bytes.size();
            reader.from = blocks[i].from;
            reader.to = blocks[i].to;
            if (load(reader))
                heap_.push_back(&reader);
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
        const KeyView entry = entryAt(heap_.front()->at);
        const KeyView key = keyOf(entry);
        const auto word = loadBE<std::uint32_t>(key.data() + key.size());
        return IndexEntry{key, RowPointer::fromWord(word)};
    }

private:
    struct Reader {
        const std::uint8_t* at = nullptr;
        const std::uint8_t* end = nullptr;
        std::uint64_t head = 0;
        std::uint64_t from = 0, to = 0;  // what is still in the file
        Bytes buffer;
    };
    static bool later(const Reader* a, const Reader* b)
    {
        if (a->head != b->head)
            return a->head > b->head;
        return compareEntries(entryAt(a->at), entryAt(b->at)) > 0;
    }

    /// Brings the whole next entry into memory; false at the end.
    bool load(Reader& reader)
    {
        if (reader.from < reader.to) {
            const auto left = static_cast<std::size_t>(reader.end - reader.at);
            if (left < kLengthBytes || left < kLengthBytes + entryAt(reader.at).size())
                refill(reader, left);
        }
        if (reader.at == reader.end)
            return false;
        reader.head = headOf(keyOf(entryAt(reader.at)), 0);
        return true;
    }

    void refill(Reader& reader, std::size_t left)
    {
        if (left > 0)
            std::memmove(reader.buffer.data(), reader.at, left);
        const auto wanted = static_cast<std::size_t>(
            std::min<std::uint64_t>(bufferBytes_, reader.to - reader.from));
        reader.buffer.resize(left + wanted);
        if (file_->readAt(reader.from, {reader.buffer.data() + left, wanted}) != wanted)
            throw EngineError(EngineErrorNumber::Corrupt, "A file for sorting was cut short.");
        reader.from += wanted;
        reader.at = reader.buffer.data();
        reader.end = reader.at + reader.buffer.size();
    }

    /// The top block goes on to its next entry, and down to where that belongs.
    void step()
    {
        given_ = false;
        Reader* reader = heap_.front();
        reader->at += kLengthBytes + entryAt(reader->at).size();
        if (!load(*reader)) {
            reader->buffer = {};
            heap_.front() = heap_.back();
            heap_.pop_back();
            if (heap_.empty())
                return;
            reader = heap_.front();
        }
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

    File* file_;
    std::size_t bufferBytes_;
    std::vector<Reader> readers_;
    std::vector<Reader*> heap_;
    bool given_ = false;
};

EntrySource EntryRun::sorted()
{
    if (!items_.empty())
        closeBlock();
    items_ = {};
    open_.reset();
    if (file_)
        moveToFile();
    return [merge = std::make_shared<Merge>(blocks_, file_.get())] { return merge->next(); };
}

}  // namespace velnor::jet
