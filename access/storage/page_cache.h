// access/storage/page_cache.h - the pages of one file that are in memory. Knows no file.
//
// A slot is spare (not in the table), clean (in the table and on the clock) or changed (in the
// table and on the list of changes). Only clean slots that nobody holds are evicted. A slot that is
// taken out of the table while a PageRef holds it is detached: its bytes live until the last holder
// lets go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace velnor {

struct PageSlot {
    std::unique_ptr<std::uint8_t[]> bytes;
    std::uint32_t number = 0;
    std::uint32_t pins = 0;
    std::uint32_t place = 0;  ///< on the clock, or on the list of changes
    bool changed = false;
    bool used = false;  ///< since the hand of the clock last passed
    bool detached = false;

    void release()
    {
        if (--pins == 0 && detached)
            delete this;
    }
};

class PageCache {
public:
    PageCache(std::uint32_t pageSize, std::size_t cacheBytes);
    ~PageCache();
    PageCache(const PageCache&) = delete;
    PageCache& operator=(const PageCache&) = delete;

    PageSlot* find(std::uint32_t number)
    {
        if (last_ && last_->number == number) {
            last_->used = true;
            return last_;
        }
        for (std::size_t at = home(number);; at = (at + 1) & mask_) {
            const Entry& entry = table_[at];
            if (!entry.slot)
                return nullptr;
            if (entry.number == number) {
                entry.slot->used = true;
                return last_ = entry.slot;
            }
        }
    }

    /// A slot to be filled and then inserted; the same again until insert() takes it.
    PageSlot& spare();
    /// Puts the spare slot into the table, as a clean page.
    PageSlot& insert(std::uint32_t number);
    void markChanged(PageSlot& slot)
    {
        if (!slot.changed)
            becomeChanged(slot);
    }
    /// The page goes from clock or list, and from the table.
    void drop(PageSlot& slot);
    /// Drops every page from this number on.
    void dropFrom(std::uint32_t number, std::uint32_t pageCount);
    /// All changes are on the disk: the pages become clean, the oldest above the bound are let go.
    void changesAreSaved();
    /// A changed page holds again what the disk has.
    void markClean(PageSlot& slot);

    const std::vector<PageSlot*>& changed() const { return changed_; }
    std::size_t size() const { return clock_.size() + changed_.size(); }

private:
    struct Entry {
        std::uint32_t number = 0;
        PageSlot* slot = nullptr;
    };

    std::size_t home(std::uint32_t number) const { return (number * 0x9E3779B1u >> 7) & mask_; }
    void becomeChanged(PageSlot& slot);
    void enter(PageSlot& slot);
    void leave(const PageSlot& slot);
    void growTable();
    void putOnClock(PageSlot& slot);
    static void takeFrom(std::vector<PageSlot*>& list, const PageSlot& slot);
    PageSlot* evict();

    std::uint32_t pageSize_;
    std::size_t bound_;  // clean pages
    std::vector<Entry> table_;
    std::size_t mask_;
    PageSlot* last_ = nullptr;
    std::vector<PageSlot*> clock_;
    std::size_t hand_ = 0;
    std::vector<PageSlot*> changed_;
    std::unique_ptr<PageSlot> spare_;
};

}  // namespace velnor
