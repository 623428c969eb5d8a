// access/formats/xbase/dbf_table.h - one open table: its DBF file, memo file and counts.
//
// 1. A new record changes the pages of the file at once; the count in the header, the date, the
// next autonumbers and
//    the end mark behind the last record are written by commit(), so that the header is never ahead
//    of the records.
// 2. What is kept in memory (count, autonumbers, live counts) is read again after a failed commit.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "access/formats/xbase/dbf_header.h"
#include "access/formats/xbase/index_set.h"
#include "access/formats/xbase/live_counts.h"
#include "access/formats/xbase/memo_file.h"
#include "access/storage/page_file.h"

namespace velnor::xbase {

struct TableOpening {
    FileSystem* files = nullptr;
    std::string path;  ///< "C:\FOLDER\ORDERS.DBF", as spelled on the disk
    bool readOnly = true;
    bool foxWord = false;          ///< opened by a FoxPro word; else FoxPro kinds are 3274
    bool listsIndexFiles = false;  ///< opened by the dBASE III word
    bool beingMade = false;        ///< all its files are siblings "NAME.EXT-new", see replace_set.h
    std::string codePage;
};

class DbfTable {
public:
    explicit DbfTable(const TableOpening& opening);

    const std::string& path() const { return opening_.path; }
    const TableOpening& opening() const { return opening_; }
    const DbfHeader& header() const { return header_; }
    /// The header as it stands in the file.
    std::vector<std::uint8_t> headerBytes();
    bool readOnly() const { return opening_.readOnly; }
    /// Null when the table has no memo field, or its memo file is missing.
    MemoFile* memo() { return memo_ ? &*memo_ : nullptr; }
    bool memoMissing() const { return header_.hasMemoField() && !memo_; }
    const std::string& memoPath() const { return memoPath_; }
    /// Why records cannot be written although the store could; empty when they can.
    std::string whyNotUpdatable() const;
    IndexSet& indexes() { return indexes_; }
    std::vector<std::string> indexFiles() const;
    /// Opened by a FoxPro word: CDX indexes are shown, else those of dBASE.
    bool foxWord() const { return opening_.foxWord; }
    /// Opened by the dBASE III word: its indexes are files of their own that an INF file lists.
    bool listsIndexFiles() const { return opening_.listsIndexFiles; }
    FileSystem& fileSystem() { return *opening_.files; }
    PageFile& companion(const std::string& path, const PageFileOptions& options,
                        bool create = false)
    {
        return set().companion(onDisk(path), options, create);
    }
    /// Where a file of this table really stands.
    std::string onDisk(const std::string& path) const;
    /// Commits, then takes a companion away; all that was opened beside the table is opened again.
    void removeCompanion(const std::string& path);
    /// The mark in the header that a production index stands beside the table.
    void setProductionIndex(bool there);
    /// The mark of a dBASE field that is a key of the production index by itself.
    void markIndexedField(std::size_t field, bool indexed);
    void noteChange() { changed_ = true; }
    /// Called now and then while an index is made, which ends by what it throws.
    void onPause(std::function<void()> look) { look_ = std::move(look); }
    void pause() const
    {
        if (look_)
            look_();
    }

    /// Records of the file, deleted ones included.
    std::uint32_t count() const { return count_; }
    std::uint64_t fileBytes() { return set().main().size(); }
    std::uint64_t generation() const { return set().generation(); }
    /// Reads `records` whole records from a number on. 3197 when they are not there.
    void readRecords(std::uint32_t first, std::uint32_t records, std::span<std::uint8_t> out);
    /// As readRecords, for one record that is nowhere near the last one.
    void readLoneRecord(std::uint32_t number, std::span<std::uint8_t> out);
    const LiveCounts& liveCounts();
    /// Live ones among so many records from a number on.
    std::int64_t countLive(std::uint32_t first, std::uint32_t records);
    std::int64_t recordCount() { return liveCounts().live(); }

    std::uint32_t append(std::span<const std::uint8_t> record);
    void overwrite(std::uint32_t number, std::span<const std::uint8_t> record);
    void markDeleted(std::uint32_t number);
    std::uint32_t nextNumber(std::size_t field) const { return header_.fields[field].nextNumber; }
    void setNextNumber(std::size_t field, std::uint32_t number);

    void commit();
    void rollback();
    /// Within a commit that changes much: takes changed pages out of memory.
    void relieve();
    std::size_t pendingBytes() const
    {
        return files_ ? files_->pendingBytes() + indexes_.pendingBytes() : 0;
    }

private:
    FileSet& set() const;
    void readHead();
    void findMemo();
    template <class Use> void forEachFlag(std::uint32_t first, std::uint32_t records, Use use);
    void writeHead();
    void needRoom() const;

    TableOpening opening_;
    std::unique_ptr<FileSet> files_;
    DbfHeader header_;
    std::optional<MemoFile> memo_;
    std::string memoPath_;
    IndexSet indexes_{*this};
    std::uint32_t count_ = 0;
    LiveCounts liveCounts_;
    bool changed_ = false;
    bool appended_ = false;
    std::function<void()> look_;
};

}  // namespace velnor::xbase
