// access/formats/xbase/index_set.h - the indexes of an open table.
//
// A writer asks needKept() once, and before() with the old and new image of a record; it writes the
// record, then calls after(). Deleted records stay in the indexes, unless an index asks for their
// mark. Index files are companions of the table's file: commit and undo cover them.
// Indexes of all kinds are kept right, whatever word the table was opened by; listed are those of
// the word's own kind.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/xbase/index_forms.h"
#include "access/formats/xbase/inf_file.h"
#include "access/formats/xbase/table_index.h"
#include "access/storage/page_file.h"

namespace velnor::xbase {

class IndexSet {
public:
    explicit IndexSet(DbfTable& table);
    ~IndexSet();

    /// Those that the table's word shows, in the order of the files.
    std::vector<IndexDef> definitions();
    /// 3015 when there is none of this name.
    TableIndex& find(std::string_view name);
    /// 3800 when an index cannot be kept right.
    void needKept();

    void before(std::uint32_t number, RecordImage oldImage, RecordImage newImage);
    void after(std::uint32_t number);
    bool caresForDeletion();
    /// Enters what waits, and counts the change in the heads of the files.
    void beforeCommit();
    void committed();
    std::size_t pendingBytes() const;
    /// After a rollback: all is read again.
    void forget();
    /// Grows when indexes found before are no more.
    std::uint64_t epoch() const { return epoch_; }

    void add(const IndexDef& def);
    void drop(std::string_view name);

    /// 3800 when an index could not be built anew from the records.
    void needRebuildable();
    /// The name of an index whose expression or condition names a field; empty when none does.
    std::string indexOnField(std::size_t field);
    /// Makes the indexes of `old` on this table, which has none yet, in files of the same names.
    /// With `report` those that cannot be built are left out and reported.
    void takeOver(IndexSet& old, const ProblemSink* report = nullptr);

    /// Every index and what its file is called; for a check.
    struct Named {
        std::string file;
        TableIndex* index;
    };
    std::vector<Named> all();
    /// Files that could not be opened, and why.
    std::vector<std::pair<std::string, std::string>> troubles();

private:
    struct IndexFile {
        std::string path;
        IndexKind kind = IndexKind::Cdx;
        PageFile* pages = nullptr;
        std::unique_ptr<IndexFileFormat> format;
        std::vector<std::unique_ptr<TableIndex>> indexes;
    };
    PageFileOptions indexFileOptions() const;
    void open();
    void openFile(const std::string& name);
    void openFormat(IndexFile& file);
    std::unique_ptr<TableIndex> openIndex(IndexFile& file, IndexTag tag);
    IndexFile& makeFile(IndexKind kind, const std::string& path, std::uint8_t languageMark);
    IndexFile& fileForNew(IndexKind kind, const std::string& path);
    NewTag sameTag(const TableIndex& index) const;
    std::uint64_t takeOver(IndexFile& file, TableIndex& index, bool tolerant);
    void takeOver(IndexFile& from, const ProblemSink* report);
    void markPlainField(const std::unique_ptr<TableIndex>& gone, IndexKind kind,
                        const std::vector<std::unique_ptr<TableIndex>>& indexes);
    bool shows(const IndexFile& file) const;
    IndexKind kindForNew() const;
    std::vector<std::size_t> fieldsFor(const IndexDef& def) const;
    std::string nameFor(const IndexDef& def);
    NewTag newTag(const IndexDef& def, IndexKind kind);

    DbfTable& table_;
    bool open_ = false;
    std::uint64_t epoch_ = 0;
    std::vector<std::unique_ptr<IndexFile>> files_;
    std::vector<std::pair<std::string, std::string>> troubles_;
};

}  // namespace velnor::xbase
