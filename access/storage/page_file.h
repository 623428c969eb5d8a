// access/storage/page_file.h - page cache, commit and undo journal of the files of one store.
//
// A FileSet is the main file of a store and its companions ("ORDERS.DBF", "ORDERS.DBT"): they share
// a folder and a base name, and are committed together. Changes stay in memory until commit().
//
// Crash safety; the code cites these numbers:
// 1. Bytes that existed at the last commit are overwritten only after their old content is in
//    NAME.EXT-undo (EXT of the main file), synced, with its folder. Entries name their file by
//    extension, so that the journal follows a rename; a companion with another base name
//    ("BYNAME.NDX") by its name.
// 2. Commit: journal; write the data files, sync them; cut the journal to zero, sync it, remove it.
//    The cut is the moment of commit.
// 3. Opening a set whose journal has a valid head undoes it first; 3045 when its owner lives.
// 4. Within a commit the files are written in the order of their rank (memo, records, index), in
// each the
//    pages in the order of `writeRank`, then by number, page 0 last: a program that reads in
//    between finds no count ahead of its data. Files that become shorter are cut after all that.
// 5. An error is not a crash: when commit() fails, the files are put back to the last commit at
// once.
// 6. Pages may be written before the commit (spill()), by rule 1: the journal then stands, and
// grows, until the commit or the rollback.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace velnor {

class PageFile;
struct PageSlot;

/// A page held in the cache: it is not moved or dropped while a PageRef names it.
class PageRef {
public:
    PageRef() = default;
    PageRef(PageRef&& other) noexcept;
    PageRef& operator=(PageRef&& other) noexcept;
    PageRef(const PageRef&) = delete;
    PageRef& operator=(const PageRef&) = delete;
    ~PageRef() { release(); }

    explicit operator bool() const { return slot_ != nullptr; }
    std::uint32_t number() const;
    const std::uint8_t* data() const { return data_; }
    /// Marks the page changed and gives its bytes for writing.
    std::uint8_t* edit();
    void release();

private:
    friend class PageFile;
    PageFile* file_ = nullptr;
    PageSlot* slot_ = nullptr;
    const std::uint8_t* data_ = nullptr;
};

/// Turns stored pages into plain ones and back (encoded Access files). Page numbers from 0.
class PageCodec {
public:
    virtual ~PageCodec() = default;
    virtual void decode(std::uint32_t page, std::span<std::uint8_t> bytes) const = 0;
    virtual void encode(std::uint32_t page, std::span<std::uint8_t> bytes) const = 0;
};

struct PageFileOptions {
    std::uint32_t pageSize = 4096;
    std::size_t cacheBytes =
        4u << 20;                      ///< clean pages kept; changed pages come on top until commit
    int rank = 1;                      ///< place among the files of the set at commit
    const PageCodec* codec = nullptr;  ///< must outlive the file
    /// Of a main file that counts for nothing until it is whole and gets its name: without this it
    /// is written without journal and without sync, and is of no use after a failure.
    bool undone = true;
    std::function<int(std::uint32_t page, const std::uint8_t* bytes)> writeRank;
};

class PageFile {
public:
    ~PageFile();
    std::uint32_t pageSize() const;
    /// Length in bytes, with what is not yet committed.
    std::uint64_t size() const;
    /// Whole pages, a short last one counted.
    std::uint32_t pageCount() const;
    /// 3197 past the end. A short last page is filled up with zeros.
    PageRef read(std::uint32_t page);
    /// A new zeroed page at the end.
    PageRef append();
    /// Bytes at any place, over page borders; returns how many there were. Large reads of unchanged
    /// pages go past the cache.
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> out);
    /// As readAt, but pages that are not in the cache stay out of it: for small reads here and
    /// there.
    std::size_t peekAt(std::uint64_t offset, std::span<std::uint8_t> out);
    /// Grows the file when it passes the end.
    void writeAt(std::uint64_t offset, std::span<const std::uint8_t> bytes);
    void resize(std::uint64_t bytes);
    /// Set at any time: applies to pages loaded and stored from now on.
    void setCodec(const PageCodec* codec);

private:
    friend class FileSet;
    friend class PageRef;
    struct State;
    explicit PageFile(std::unique_ptr<State> state);
    PageRef hold(PageSlot& slot);
    std::unique_ptr<State> state_;
};

class FileSet {
public:
    /// Takes the lock on the main file (shared to read, exclusive to write: 3045 when refused), and
    /// undoes a journal that a dead owner left behind. A read-only set whose journal must be undone
    /// still undoes it, when the folder can be written (else 3051). 3024 when there is no such
    /// file, 3044 no such folder, 3051 when the system refuses.
    FileSet(FileSystem& files, std::string_view mainPath, const PageFileOptions& options,
            bool readOnly);
    ~FileSet();  // what is not committed is dropped
    FileSet(const FileSet&) = delete;
    FileSet& operator=(const FileSet&) = delete;

    PageFile& main();
    /// A companion by its path, in the main file's folder; opened once, kept open. 3024 when it
    /// does not exist, unless `create`: then the next commit makes it, also when nothing is written
    /// to it. Until that commit there is no such file, and after a rollback it must be asked for
    /// again.
    PageFile& companion(std::string_view path, const PageFileOptions& options, bool create = false);
    bool readOnly() const;
    const std::string& path() const;

    /// 3026 when the disk is full, 3051 for other failures: the files and their pages are then back
    /// at the last commit, and the set can be used on.
    void commit();
    /// Takes changed pages out of memory before the commit, so that a long change needs no more of
    /// it than a short one (6). They are dropped by a failure, a rollback or a crash as all others.
    /// Where a file of the set became shorter they stay in memory. Fails as commit().
    void spill();
    /// Drops every change since the last commit. A PageRef held over it shows the old bytes.
    void rollback();
    std::size_t pendingBytes() const;
    /// Grows by one with every change of any page: cursors compare it to know that a copy is stale.
    std::uint64_t generation() const;

    /// For a change of many pages that may fail half way: goBack() makes pages and lengths again
    /// what they were when this was made. There is nothing to go back to after a commit or a
    /// rollback. Within another one it does nothing: the outer one goes back.
    class Savepoint {
    public:
        explicit Savepoint(FileSet& set);
        ~Savepoint();
        Savepoint(const Savepoint&) = delete;
        Savepoint& operator=(const Savepoint&) = delete;
        /// False when no page was changed. Ends the savepoint.
        bool goBack();

    private:
        FileSet* set_;  // null within another
    };

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Undoes the journal of a main file, if there is one and its owner is dead. True when it did.
bool recoverFiles(FileSystem& files, std::string_view mainPath);

}  // namespace velnor
