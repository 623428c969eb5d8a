#include "access/storage/stored_file.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "access/engine_error.h"
#include "access/storage/undo_journal.h"

namespace velnor {

namespace {
constexpr std::size_t kReadPastCache = 16u << 10;
constexpr std::size_t kLongestRun = 1u << 20;

unsigned shiftOf(std::uint32_t pageSize)
{
    return std::has_single_bit(pageSize) ? std::countr_zero(pageSize) : 0;
}
}  // namespace

StoredFile::StoredFile(FileOwner& owner, std::string path, const PageFileOptions& options,
                       std::unique_ptr<File> file)
    : owner_(owner), path_(std::move(path)), options_(options), file_(std::move(file)),
      pageSize_(std::max(options.pageSize, 1u)), shift_(shiftOf(pageSize_)), toBeMade_(!file_),
      saved_(file_ ? file_->size() : 0), disk_(saved_), valid_(saved_), size_(saved_),
      cache_(pageSize_, options.cacheBytes)
{
    needPages(size_);
}

std::size_t StoredFile::pendingBytes() const
{
    if (!changed())
        return 0;
    return std::max<std::size_t>(cache_.changed().size(), 1) * pageSize_;
}

PageSlot& StoredFile::load(std::uint32_t number)
{
    if (number >= pageCount())
        throw EngineError(EngineErrorNumber::Corrupt, path_ + " has no page " +
                                                          std::to_string(number) + ", it has " +
                                                          std::to_string(pageCount()));
    fill(cache_.spare().bytes.get(), number);
    return cache_.insert(number);
}

/// The content of a page that is not changed.
void StoredFile::fill(std::uint8_t* bytes, std::uint32_t number)
{
    const std::uint64_t start = startOf(number);
    const std::uint64_t there =
        start < valid_ ? std::min<std::uint64_t>(pageSize_, valid_ - start) : 0;
    readFromDisk(start, {bytes, static_cast<std::size_t>(there)});
    std::memset(bytes + there, 0, pageSize_ - there);
    if (options_.codec && there > 0)
        options_.codec->decode(number, {bytes, pageSize_});
}

void StoredFile::readFromDisk(std::uint64_t offset, std::span<std::uint8_t> out)
{
    if (out.empty())
        return;
    if (owner_.broken)
        throw EngineError(EngineErrorNumber::CannotOpen,
                          path_ + " must be opened again: a write to it failed");
    if (file_->readAt(offset, out) != out.size())
        throw EngineError(EngineErrorNumber::Corrupt,
                          path_ + " was made shorter by another program");
}

PageSlot& StoredFile::append()
{
    needWritable();
    const std::uint32_t number = pageCount();
    const std::uint64_t start = startOf(number);
    needPages(start + pageSize_);
    if (size_ < start)
        grow(start);
    PageSlot& slot = insertZeroed(number);
    size_ = start + pageSize_;
    return slot;
}

void StoredFile::edit(PageSlot& slot)
{
    needWritable();
    if (slot.detached)
        throw EngineError(EngineErrorNumber::Corrupt,
                          path_ + " no longer has page " + std::to_string(slot.number));
    markChanged(slot);
}

std::size_t StoredFile::readAt(std::uint64_t offset, std::span<std::uint8_t> out)
{
    if (offset >= size_)
        return 0;
    out = out.first(static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), size_ - offset)));
    if (out.size() >= kReadPastCache && !options_.codec)
        readPastCache(offset, out);
    else
        readThroughCache(offset, out);
    return out.size();
}

std::size_t StoredFile::peekAt(std::uint64_t offset, std::span<std::uint8_t> out)
{
    if (out.empty() || offset >= size_ || options_.codec ||
        cache_.find(static_cast<std::uint32_t>(pageOf(offset))))
        return readAt(offset, out);
    out = out.first(static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), size_ - offset)));
    readPastCache(offset, out);
    return out.size();
}

void StoredFile::readThroughCache(std::uint64_t offset, std::span<std::uint8_t> out)
{
    while (!out.empty()) {
        const auto number = static_cast<std::uint32_t>(pageOf(offset));
        const std::size_t within = static_cast<std::size_t>(offset - startOf(number));
        const std::size_t count = std::min<std::size_t>(out.size(), pageSize_ - within);
        std::memcpy(out.data(), page(number).bytes.get() + within, count);
        out = out.subspan(count);
        offset += count;
    }
}

/// One read of the file; the changed pages are laid over it.
void StoredFile::readPastCache(std::uint64_t offset, std::span<std::uint8_t> out)
{
    const std::uint64_t there = offset < valid_ ? valid_ - offset : 0;
    const auto onDisk = static_cast<std::size_t>(std::min<std::uint64_t>(there, out.size()));
    readFromDisk(offset, out.first(onDisk));
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(onDisk), out.end(), std::uint8_t{0});

    const std::uint64_t end = offset + out.size();
    const auto layOver = [&](const PageSlot& slot) {
        const std::uint64_t start = startOf(slot.number);
        const std::uint64_t from = std::max(offset, start);
        const std::uint64_t to = std::min(end, start + pageSize_);
        if (from < to)
            std::memcpy(out.data() + (from - offset), slot.bytes.get() + (from - start), to - from);
    };
    const auto first = static_cast<std::uint32_t>(pageOf(offset));
    const auto last = static_cast<std::uint32_t>(pageOf(end - 1));
    if (cache_.changed().size() <= last - first) {
        for (const PageSlot* slot : cache_.changed())
            layOver(*slot);
        return;
    }
    for (std::uint32_t number = first; number <= last; ++number)
        if (const PageSlot* slot = cache_.find(number); slot && slot->changed)
            layOver(*slot);
}

void StoredFile::writeAt(std::uint64_t offset, std::span<const std::uint8_t> bytes)
{
    needWritable();
    if (bytes.empty())
        return;
    if (offset > std::numeric_limits<std::uint64_t>::max() - bytes.size())
        needPages(std::numeric_limits<std::uint64_t>::max() - pageSize_);
    needPages(offset + bytes.size());
    if (offset > size_)
        grow(offset);
    while (!bytes.empty()) {
        const auto number = static_cast<std::uint32_t>(pageOf(offset));
        const std::size_t within = static_cast<std::size_t>(offset - startOf(number));
        const std::size_t count = std::min<std::size_t>(bytes.size(), pageSize_ - within);
        PageSlot& slot = pageToOverwrite(number, count == pageSize_);
        markChanged(slot);
        std::memcpy(slot.bytes.get() + within, bytes.data(), count);
        bytes = bytes.subspan(count);
        offset += count;
        size_ = std::max(size_, offset);
    }
}

PageSlot& StoredFile::pageToOverwrite(std::uint32_t number, bool whole)
{
    if (PageSlot* slot = cache_.find(number)) [[likely]]
        return *slot;
    if ((whole && !before_) || startOf(number) >= valid_)
        return insertZeroed(number);
    return load(number);
}

PageSlot& StoredFile::insertZeroed(std::uint32_t number)
{
    std::memset(cache_.spare().bytes.get(), 0, pageSize_);
    PageSlot& slot = cache_.insert(number);
    cache_.markChanged(slot);
    return slot;
}

void StoredFile::resize(std::uint64_t bytes)
{
    needWritable();
    needPages(bytes);
    if (bytes > size_)
        grow(bytes);
    else if (bytes < size_)
        shrink(bytes);
}

/// The new bytes read as zeros. Beyond the end of the disk's file that comes by itself; where old
/// bytes of the disk, or encoded pages, are in the way, the pages become changed ones.
void StoredFile::grow(std::uint64_t bytes)
{
    const std::uint64_t stale = options_.codec ? bytes : std::min(bytes, disk_);
    const std::uint64_t from = size_;
    if (options_.codec || valid_ < disk_) {
        auto number = static_cast<std::uint32_t>(pageOf(from));
        for (; startOf(number) < stale; ++number)
            markChanged(pageToOverwrite(number, false));
    }
    size_ = bytes;
}

void StoredFile::shrink(std::uint64_t bytes)
{
    const std::uint32_t before = pageCount();
    const auto kept = static_cast<std::uint32_t>(pageOf(bytes + pageSize_ - 1));
    if (before_)
        for (auto number = static_cast<std::uint32_t>(pageOf(bytes)); number < before; ++number)
            keepBefore(page(number));
    cache_.dropFrom(kept, before);
    if (kept > 0) {
        const std::uint64_t within = bytes - startOf(kept - 1);
        if (PageSlot* slot = within < pageSize_ ? cache_.find(kept - 1) : nullptr)
            std::memset(slot->bytes.get() + within, 0, pageSize_ - within);
    }
    valid_ = std::min(valid_, bytes);
    size_ = bytes;
}

void StoredFile::beginSavepoint()
{
    before_ = std::make_unique<Before>();
    before_->size = size_;
}

void StoredFile::keepBefore(const PageSlot& slot)
{
    if (startOf(slot.number) >= before_->size)
        return;  // it was not there
    if (before_->pages.contains(slot.number))
        return;
    auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(pageSize_);
    std::memcpy(bytes.get(), slot.bytes.get(), pageSize_);
    before_->pages.emplace(slot.number, std::move(bytes));
}

bool StoredFile::goBack()
{
    const std::unique_ptr<Before> before = std::move(before_);
    if (!before || (before->pages.empty() && size_ == before->size))
        return false;
    needWritable();
    if (size_ > before->size)
        shrink(before->size);
    else if (size_ < before->size)
        grow(before->size);
    for (const auto& [number, bytes] : before->pages) {
        PageSlot& slot = page(number);
        cache_.markChanged(slot);
        std::memcpy(slot.bytes.get(), bytes.get(), pageSize_);
    }
    return true;
}

void StoredFile::needWritable()
{
    if (owner_.readOnly)
        throw EngineError(EngineErrorNumber::ReadOnly, path_ + " is open for reading only");
    if (owner_.broken)
        throw EngineError(EngineErrorNumber::CannotOpen,
                          path_ + " must be opened again: a write to it failed");
    ++owner_.generation;
    if (!file_)
        toBeMade_ = true;
}

void StoredFile::needPages(std::uint64_t bytes) const
{
    if (pageOf(bytes) >= std::numeric_limits<std::uint32_t>::max())
        throw EngineError(EngineErrorNumber::DatabaseFull, path_ + " would grow too large");
}

void StoredFile::make(FileSystem& files)
{
    file_ = files.open(path_, OpenMode::CreateNew);
}

std::vector<PageSlot*> StoredFile::inWriteOrder() const
{
    struct Placed {
        int rank;
        PageSlot* slot;
    };
    std::vector<Placed> placed;
    placed.reserve(cache_.changed().size());
    for (PageSlot* slot : cache_.changed()) {
        const bool first = slot->number == 0;
        const int rank =
            options_.writeRank && !first ? options_.writeRank(slot->number, slot->bytes.get()) : 0;
        placed.push_back({first ? std::numeric_limits<int>::max() : rank, slot});
    }
    std::sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) {
        return a.rank != b.rank ? a.rank < b.rank : a.slot->number < b.slot->number;
    });
    std::vector<PageSlot*> slots(placed.size());
    std::transform(placed.begin(), placed.end(), slots.begin(),
                   [](const Placed& p) { return p.slot; });
    return slots;
}

namespace {
/// Calls `use` with each run of neighbouring pages, at most kLongestRun bytes long.
template <class Use>
void forEachRun(const std::vector<PageSlot*>& slots, std::uint32_t pageSize, Use use)
{
    const std::size_t longest = std::max<std::size_t>(kLongestRun / pageSize, 1);
    for (std::size_t first = 0; first < slots.size();) {
        std::size_t count = 1;
        while (count < longest && first + count < slots.size() &&
               slots[first + count]->number == slots[first]->number + count)
            ++count;
        use(std::span<PageSlot* const>(slots).subspan(first, count));
        first += count;
    }
}
}  // namespace

void StoredFile::saveOld(UndoJournal& journal, std::uint32_t number)
{
    if (saved_ == 0)
        return;
    std::vector<PageSlot*> slots;
    for (PageSlot* slot : cache_.changed())
        if (startOf(slot->number) < saved_ && !kept(slot->number))
            slots.push_back(slot);
    std::sort(slots.begin(), slots.end(),
              [](const PageSlot* a, const PageSlot* b) { return a->number < b->number; });
    forEachRun(slots, pageSize_, [&](std::span<PageSlot* const> run) {
        const std::uint64_t from = startOf(run.front()->number);
        const std::uint64_t to = std::min(saved_, from + run.size() * pageSize_);
        journal.save(number, *file_, from, to - from);
    });
    if (kept_.empty()) {
        for (std::uint64_t from = size_; from < saved_; from += kLongestRun)
            journal.save(number, *file_, from, std::min<std::uint64_t>(kLongestRun, saved_ - from));
    } else {
        for (std::uint64_t from = size_; from < saved_;) {
            const auto page = static_cast<std::uint32_t>(pageOf(from));
            const std::uint64_t to = std::min(saved_, startOf(page) + pageSize_);
            if (!kept(page))
                journal.save(number, *file_, from, to - from);
            from = to;
        }
    }
    kept_.resize(static_cast<std::size_t>(pageOf(saved_ + pageSize_ - 1)));
    for (const PageSlot* slot : slots)
        kept_[slot->number] = true;
}

void StoredFile::write()
{
    writePages();
    file_->sync();
}

void StoredFile::writeEarly()
{
    early_ = true;
    writePages();
    cache_.changesAreSaved();
    disk_ = std::max(disk_, size_);
    valid_ = size_;
}

void StoredFile::writePages()
{
    const std::vector<PageSlot*> slots = inWriteOrder();
    std::vector<std::uint8_t> buffer;
    const PageSlot* last = size_ > disk_ ? cache_.find(pageCount() - 1) : nullptr;
    if (size_ > disk_ && !(last && last->changed))
        file_->resize(size_);  // ends in zeros that no page holds
    forEachRun(slots, pageSize_, [&](std::span<PageSlot* const> run) { writeRun(run, buffer); });
}

void StoredFile::cutOff()
{
    if (size_ >= disk_)
        return;
    file_->resize(size_);
    file_->sync();
}

void StoredFile::writeRun(std::span<PageSlot* const> run, std::vector<std::uint8_t>& buffer)
{
    const std::uint64_t start = startOf(run.front()->number);
    const std::uint64_t end = std::min(size_, start + run.size() * pageSize_);
    if (run.size() == 1 && !options_.codec)
        return file_->writeAt(start,
                              {run.front()->bytes.get(), static_cast<std::size_t>(end - start)});
    buffer.resize(run.size() * pageSize_);
    std::uint8_t* to = buffer.data();
    for (const PageSlot* slot : run) {
        std::memcpy(to, slot->bytes.get(), pageSize_);
        if (options_.codec)
            options_.codec->encode(slot->number, {to, pageSize_});
        to += pageSize_;
    }
    file_->writeAt(start, {buffer.data(), static_cast<std::size_t>(end - start)});
}

void StoredFile::changesAreSaved()
{
    cache_.changesAreSaved();
    saved_ = disk_ = valid_ = size_;
    early_ = false;
    kept_ = {};
    toBeMade_ = false;
    before_.reset();
}

void StoredFile::rollback()
{
    before_.reset();
    const std::uint32_t pages = pageCount();
    const std::uint64_t shortened = valid_ < saved_ ? pageOf(valid_) : pages;
    size_ = valid_ = disk_ = saved_;
    if (pageCount() < pages)
        cache_.dropFrom(pageCount(), pages);
    toBeMade_ = false;
    for (std::uint32_t number = 0; early_ && number < kept_.size(); ++number)
        if (PageSlot* slot = kept_[number] ? cache_.find(number) : nullptr; slot && !slot->changed)
            reread(*slot);  // it holds what was written early
    early_ = false;
    kept_ = {};
    if (PageSlot* slot = cache_.find(static_cast<std::uint32_t>(shortened)); slot && !slot->changed)
        reread(*slot);  // it was cut: its tail is zeros
    for (std::size_t i = cache_.changed().size(); i-- > 0;)
        reread(*cache_.changed()[i]);
}

void StoredFile::reread(PageSlot& slot)
{
    if (slot.pins == 0 || slot.number >= pageCount() || owner_.broken)
        return cache_.drop(slot);
    if (slot.changed)
        cache_.markClean(slot);
    try {
        fill(slot.bytes.get(), slot.number);
    } catch (const std::exception&) {
        cache_.drop(slot);  // the holder may look at it, but no longer change it
    }
}

}  // namespace velnor
