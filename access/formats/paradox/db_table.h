// access/formats/paradox/db_table.h - one open table: its DB file, long values, primary index and
// secondary indexes, committed together.
//
// 1. For reading, the DB and MB files are enough: the order of the records is that of the chain of
//    blocks. The primary index is opened when something is written; one that is stale or damaged is
//    then made anew.
// 2. A kept index that is stale when the table is opened for writing is made anew, too. What cannot
//    be kept right (texts under a sort order that nobody knows) refuses the change that would need
//    it.
// 3. commit() gives the table its next stamp, and every index that is kept the stamp that ties it
// to
//    the table. An index that is not kept stays behind, and counts as stale from then on.
// 4. What is kept in memory is read again after a failed commit.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/paradox/companions.h"
#include "access/formats/paradox/mb_file.h"
#include "access/formats/paradox/record_chain.h"
#include "access/formats/paradox/record_names.h"
#include "access/formats/paradox/secondary_index.h"
#include "access/formats/paradox/tree_file.h"
#include "access/formats/paradox/val_file.h"
#include "access/storage/page_file.h"

namespace velnor::paradox {

struct TableOpening {
    FileSystem* files = nullptr;
    std::string path;  ///< "C:\FOLDER\ORDERS.DB", as spelled on the disk
    bool readOnly = true;
    std::string codePage;
    std::vector<std::string> passwords;  ///< any of them may be the table's
};

class DbTable {
public:
    /// 3274 when it is no table, 3031 when it has a password and this is not the one.
    explicit DbTable(const TableOpening& opening);
    ~DbTable();

    const TableOpening& opening() const { return opening_; }
    const std::string& path() const { return opening_.path; }
    std::string name() const;
    const FileHeader& header() const { return header_; }
    bool keyed() const { return header_.kind == FileKind::KeyedTable; }
    RecordChain& chain();
    BlockFile& blocks() { return *blocks_; }
    /// Null when the table has no long field, or its MB file is missing.
    MbFile* mb() { return mb_ ? &*mb_ : nullptr; }
    bool mbMissing() const { return header_.hasLongFields() && !mb_; }
    const std::vector<Companion>& companions() const { return companions_; }
    const std::optional<ValFile>& checks() const { return checks_; }
    RecordNames& names();
    /// Grows with every change: cursors compare it.
    std::uint64_t generation() const { return generation_; }

    std::string primaryIndexName() const { return name() + "#PX"; }
    /// The secondary indexes that lie beside the table, opened on first use.
    std::vector<std::unique_ptr<SecondaryIndex>>& indexes();
    /// Index files that cannot be read, with the reason.
    const std::vector<std::pair<std::string, std::string>>& indexTroubles();
    /// Why records cannot be written although the store could; empty when they can.
    std::string whyNotUpdatable();

    /// The place of a record by its name; nothing when it is gone.
    std::optional<Place> placeOf(RowId row);
    RowId rowAt(Place place);
    /// The place of a record by its primary key, looked for in a block first.
    std::optional<Place> placeOfKey(const std::uint8_t* key, std::uint32_t hintBlock);

    // Writing. Each refuses before anything is changed: 3022, 3800, 3049, 3027.
    /// Opens the indexes for writing, and makes stale ones anew. Called by each of the following.
    void prepareWriting();
    /// Refuses what addRecord() and changeRecord() would refuse; `own`: the record it replaces.
    void testRecord(const std::uint8_t* record, const std::uint8_t* own);
    RowId addRecord(const std::uint8_t* record);
    void changeRecord(RowId row, Place place, const std::uint8_t* before,
                      const std::uint8_t* record);
    void removeRecord(Place place, const std::uint8_t* before);
    /// Makes the files of a new index and fills it, in one commit. 3800 for one over texts whose
    /// order is not known, 3022 when it is unique and two records have the same values.
    void makeIndex(const std::string& extension, const FileHeader& made);
    std::uint32_t lastNumber() const { return header_.lastNumber; }
    void setLastNumber(std::uint32_t number);
    void noteChange();

    PageFile& companion(const std::string& path, bool create = false);
    FileSet& set() const;
    /// Commits, closes everything, does some work on the files, and opens them again.
    template <class Work> void withFilesClosed(Work work)
    {
        commit();
        close();
        try {
            work();
        } catch (...) {
            open();
            throw;
        }
        open();
    }

    void commit();
    void rollback();
    std::size_t pendingBytes() const;

private:
    class MbCodec;

    void open();
    void close();
    void openMb();
    void openChecks();
    void checkPassword() const;
    void openIndexes();
    void openForWriting();
    void openPrimaryTree();
    void openIndexTree(SecondaryIndex& index);
    void rebuildIndex(SecondaryIndex& index);
    bool fitsTable(SecondaryIndex& index);
    void refuseUnknownOrder() const;
    void addEntries(const std::uint8_t* record, std::uint32_t block);
    void replaceEntries(const std::uint8_t* before, const std::uint8_t* record,
                        std::uint32_t block);
    void stamp();
    std::optional<Place> placeOfHash(RowId row, const RecordNames::Hint& hint);

    TableOpening opening_;
    std::unique_ptr<FileSet> files_;
    FileHeader header_;
    std::unique_ptr<MbCodec> mbCodec_;
    std::vector<Companion> companions_;
    std::unique_ptr<BlockFile> blocks_;
    std::unique_ptr<RecordChain> chain_;
    std::optional<RecordNames> names_;
    std::optional<MbFile> mb_;
    std::optional<ValFile> checks_;

    FileHeader treeHeader_;
    std::unique_ptr<BlockFile> treeBlocks_;
    std::unique_ptr<TreeFile> tree_;
    bool indexesOpen_ = false;
    std::vector<std::unique_ptr<SecondaryIndex>> indexes_;
    std::vector<std::pair<std::string, std::string>> troubles_;

    bool writing_ = false;  // prepareWriting() is done
    bool changed_ = false;
    bool makesCompanions_ = false;  // the next commit makes files
    std::uint64_t generation_ = 1;
    std::vector<std::uint8_t> entry_, oldEntry_;
};

}  // namespace velnor::paradox
