#include "access/storage/page_cache.h"

#include <algorithm>

namespace velnor {

namespace {
constexpr std::size_t kFewestPages = 8;
constexpr std::size_t kFirstTable = 64;

void discard(PageSlot* slot)
{
    if (slot->pins > 0)
        slot->detached = true;
    else
        delete slot;
}
}  // namespace

PageCache::PageCache(std::uint32_t pageSize, std::size_t cacheBytes)
    : pageSize_(pageSize), bound_(std::max(kFewestPages, cacheBytes / pageSize)),
      table_(kFirstTable), mask_(kFirstTable - 1)
{
}

PageCache::~PageCache()
{
    std::for_each(clock_.begin(), clock_.end(), discard);
    std::for_each(changed_.begin(), changed_.end(), discard);
}

PageSlot& PageCache::spare()
{
    while (!spare_ && clock_.size() >= bound_) {
        spare_.reset(evict());
        if (!spare_ || clock_.size() < bound_)
            break;
        spare_.reset();  // pages that were held have passed the bound: one more goes
    }
    if (!spare_) {
        spare_ = std::make_unique<PageSlot>();
        spare_->bytes = std::make_unique_for_overwrite<std::uint8_t[]>(pageSize_);
    }
    return *spare_;
}

PageSlot& PageCache::insert(std::uint32_t number)
{
    PageSlot& slot = spare();
    if (2 * (size() + 1) > table_.size())
        growTable();
    slot.number = number;
    slot.changed = false;
    putOnClock(slot);
    enter(slot);
    spare_.release();
    return *(last_ = &slot);
}

void PageCache::becomeChanged(PageSlot& slot)
{
    changed_.push_back(&slot);
    takeFrom(clock_, slot);
    slot.place = static_cast<std::uint32_t>(changed_.size() - 1);
    slot.changed = true;
}

void PageCache::markClean(PageSlot& slot)
{
    clock_.reserve(clock_.size() + 1);
    takeFrom(changed_, slot);
    putOnClock(slot);
    slot.changed = false;
}

void PageCache::drop(PageSlot& slot)
{
    takeFrom(slot.changed ? changed_ : clock_, slot);
    leave(slot);
    discard(&slot);
}

void PageCache::dropFrom(std::uint32_t number, std::uint32_t pageCount)
{
    if (pageCount - number < size()) {
        for (; number < pageCount; ++number)
            if (PageSlot* slot = find(number))
                drop(*slot);
        return;
    }
    for (auto* list : {&clock_, &changed_})
        for (std::size_t i = list->size(); i-- > 0;)
            if ((*list)[i]->number >= number)
                drop(*(*list)[i]);
}

void PageCache::changesAreSaved()
{
    clock_.reserve(clock_.size() + changed_.size());
    for (PageSlot* slot : changed_) {
        slot->changed = false;
        putOnClock(*slot);
    }
    changed_.clear();
    if (changed_.capacity() > 4 * bound_)
        changed_.shrink_to_fit();
    while (clock_.size() > bound_) {
        PageSlot* old = evict();
        if (!old)
            break;
        delete old;
    }
}

void PageCache::putOnClock(PageSlot& slot)
{
    slot.used = false;  // a page that is wanted once goes before one that is wanted again
    clock_.push_back(&slot);
    slot.place = static_cast<std::uint32_t>(clock_.size() - 1);
}

/// The last of the list takes the place of the slot.
void PageCache::takeFrom(std::vector<PageSlot*>& list, const PageSlot& slot)
{
    const std::uint32_t place = slot.place;
    list[place] = list.back();
    list[place]->place = place;
    list.pop_back();
}

/// Takes a page that nobody holds off the clock and out of the table; null when all are held.
PageSlot* PageCache::evict()
{
    for (std::size_t tries = 2 * clock_.size(); tries > 0; --tries) {
        if (hand_ >= clock_.size())
            hand_ = 0;
        PageSlot* slot = clock_[hand_];
        if (slot->pins == 0 && !slot->used) {
            takeFrom(clock_, *slot);
            leave(*slot);
            ++hand_;  // the newest page has come here: it gets its round
            return slot;
        }
        slot->used = false;
        ++hand_;
    }
    return nullptr;
}

void PageCache::enter(PageSlot& slot)
{
    std::size_t at = home(slot.number);
    while (table_[at].slot)
        at = (at + 1) & mask_;
    table_[at] = {slot.number, &slot};
}

/// Takes a page out of the table; followers that were pushed away from their home move up.
void PageCache::leave(const PageSlot& slot)
{
    if (last_ == &slot)
        last_ = nullptr;
    std::size_t hole = home(slot.number);
    while (table_[hole].slot != &slot)
        hole = (hole + 1) & mask_;
    for (std::size_t at = (hole + 1) & mask_; table_[at].slot; at = (at + 1) & mask_) {
        const std::size_t wanted = home(table_[at].number);
        if (((at - wanted) & mask_) >= ((at - hole) & mask_)) {
            table_[hole] = table_[at];
            hole = at;
        }
    }
    table_[hole] = {};
}

void PageCache::growTable()
{
    std::vector<Entry> old(2 * table_.size());
    old.swap(table_);
    mask_ = table_.size() - 1;
    for (const Entry& entry : old) {
        if (!entry.slot)
            continue;
        std::size_t at = home(entry.number);
        while (table_[at].slot)
            at = (at + 1) & mask_;
        table_[at] = entry;
    }
}

}  // namespace velnor
