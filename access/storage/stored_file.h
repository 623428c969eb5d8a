// access/storage/stored_file.h - one file of a set: its length, its pages in memory and on the
// disk.
//
// Four lengths: `size` with all changes; `saved`, of the last commit; `disk`, of the file on the
// disk, which is longer than `saved` once pages were written early; `valid` <= disk, how much of
// the disk still counts after the file was made shorter. Invariant: a page that reaches behind
// `valid` and starts before `disk` and `size` is in the cache as changed, or ends at `valid`.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "access/storage/page_cache.h"
#include "access/storage/page_file.h"
#include "platform/file_system.h"

namespace velnor {

class UndoJournal;

/// Whose file it is: the set's counter of changes, and whether changes are allowed.
struct FileOwner {
    std::uint64_t generation = 0;
    bool readOnly = false;
    bool broken =
        false;  ///< a commit failed and could not be undone: the disk is not to be trusted
};

class StoredFile {
public:
    /// Without a file: it is made by the next commit.
    StoredFile(FileOwner& owner, std::string path, const PageFileOptions& options,
               std::unique_ptr<File> file);

    const std::string& path() const { return path_; }
    std::uint32_t pageSize() const { return pageSize_; }
    std::uint64_t size() const { return size_; }
    std::uint32_t pageCount() const
    {
        return static_cast<std::uint32_t>(pageOf(size_ + pageSize_ - 1));
    }
    void setCodec(const PageCodec* codec) { options_.codec = codec; }

    /// The page in the cache, loaded when it is not there.
    PageSlot& page(std::uint32_t number)
    {
        if (PageSlot* slot = cache_.find(number)) [[likely]]
            return *slot;
        return load(number);
    }
    PageSlot& append();
    void edit(PageSlot& slot);
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> out);
    std::size_t peekAt(std::uint64_t offset, std::span<std::uint8_t> out);
    void writeAt(std::uint64_t offset, std::span<const std::uint8_t> bytes);
    void resize(std::uint64_t bytes);

    // For the set.
    int rank() const { return options_.rank; }
    bool changed() const
    {
        return toBeMade_ || early_ || size_ != saved_ || !cache_.changed().empty();
    }
    std::size_t pendingBytes() const;
    /// True for a file that the next commit makes.
    bool toBeMade() const { return toBeMade_; }
    bool onDisk() const { return file_ != nullptr; }
    void wantMade() { toBeMade_ = true; }
    void make(FileSystem& files);
    void unmake() { file_.reset(); }
    std::uint64_t savedSize() const { return saved_; }
    /// Hands over everything that write() or writeEarly() will overwrite or cut off, once a commit.
    void saveOld(UndoJournal& journal, std::uint32_t number);
    void write();
    /// Before the commit: the pages become clean ones, and can go from memory. Not of a file that
    /// was made shorter.
    void writeEarly();
    bool mayWriteEarly() const
    {
        return (file_ || toBeMade_) && size_ >= saved_ && valid_ == disk_;
    }
    bool wroteEarly() const { return early_; }
    void cutOff();
    void changesAreSaved();
    /// Back to the last commit, which the disk holds again; pages that somebody holds are read
    /// again in place.
    void rollback();

    /// From here on the file keeps what its pages hold before they change, until the end of the
    /// savepoint, the commit or the rollback.
    void beginSavepoint();
    /// Pages and length are again what they were at the beginning. False when they still are.
    bool goBack();
    void endSavepoint() { before_.reset(); }

private:
    /// What a savepoint goes back to.
    struct Before {
        std::uint64_t size = 0;
        std::unordered_map<std::uint32_t, std::unique_ptr<std::uint8_t[]>> pages;
    };

    std::uint64_t pageOf(std::uint64_t offset) const
    {
        return shift_ ? offset >> shift_ : offset / pageSize_;
    }
    std::uint64_t startOf(std::uint32_t number) const { return std::uint64_t{number} * pageSize_; }
    PageSlot& load(std::uint32_t number);
    void fill(std::uint8_t* bytes, std::uint32_t number);
    void readFromDisk(std::uint64_t offset, std::span<std::uint8_t> out);
    PageSlot& pageToOverwrite(std::uint32_t number, bool whole);
    PageSlot& insertZeroed(std::uint32_t number);
    void readPastCache(std::uint64_t offset, std::span<std::uint8_t> out);
    void readThroughCache(std::uint64_t offset, std::span<std::uint8_t> out);
    void grow(std::uint64_t bytes);
    void shrink(std::uint64_t bytes);
    void needWritable();
    void needPages(std::uint64_t bytes) const;
    std::vector<PageSlot*> inWriteOrder() const;
    void writePages();
    void writeRun(std::span<PageSlot* const> run, std::vector<std::uint8_t>& buffer);
    bool kept(std::uint32_t number) const { return number < kept_.size() && kept_[number]; }
    void reread(PageSlot& slot);
    void markChanged(PageSlot& slot)
    {
        if (before_) [[unlikely]]
            keepBefore(slot);
        cache_.markChanged(slot);
    }
    void keepBefore(const PageSlot& slot);

    FileOwner& owner_;
    std::string path_;
    PageFileOptions options_;
    std::unique_ptr<File> file_;
    std::uint32_t pageSize_;
    unsigned shift_;  // 0: the page size is no power of two
    bool toBeMade_;
    std::uint64_t saved_;
    std::uint64_t disk_;
    std::uint64_t valid_;
    std::uint64_t size_;
    bool early_ = false;      // pages were written since the last commit
    std::vector<bool> kept_;  // pages of the last commit that the journal has
    std::unique_ptr<Before> before_;  // while there is a savepoint
    PageCache cache_;
};

}  // namespace velnor
