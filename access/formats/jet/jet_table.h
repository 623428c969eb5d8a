// access/formats/jet/jet_table.h - an open table: its definition, its data pages, its index trees.
//
// All cursors and writers of a table share one JetTable, so that each sees at once what another
// did. The list of data pages and the number of records on each are kept in memory when they were
// asked for.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/jet/data_page.h"
#include "access/formats/jet/index_ordinals.h"
#include "access/formats/jet/index_rules.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/jet_index.h"
#include "access/formats/jet/row_codec.h"
#include "access/formats/jet/table_def.h"
#include "access/formats/jet/usage_map.h"

namespace velnor::jet {

/// A real index of an open table.
struct OpenIndex : IndexPlan {
    explicit OpenIndex(IndexPlan plan) : IndexPlan(std::move(plan)) {}
    std::unique_ptr<UsageMap> map;
    std::unique_ptr<IndexTree> tree;
    std::unique_ptr<IndexOrdinals> ordinals;
};

/// A record's bytes, with its page held.
struct HeldRow {
    PageRef page;
    std::span<const std::uint8_t> bytes;
    RowPointer stored;  // where the bytes are: the home place, or the target of a move
};

class JetTable {
public:
    /// 3274 when the definition is damaged.
    JetTable(JetFile& file, PageNumber definition, std::string name);
    /// A table whose definition is given: that of the file is damaged.
    JetTable(JetFile& file, TableDef definition, std::string name);
    JetTable(const JetTable&) = delete;
    JetTable& operator=(const JetTable&) = delete;

    JetFile& file() { return file_; }
    const std::string& name() const { return name_; }
    const TableDef& def() const { return def_; }
    TableDef& def() { return def_; }
    const RowPlan& plan() const { return plan_; }
    PageNumber page() const { return def_.page(); }

    /// Data pages in ascending order. When the map of owned pages is empty or damaged although
    /// there are records, they are found by their owner field, and the table can only be read.
    const std::vector<PageNumber>& pages();
    /// Place of a page in pages(), or where it would stand.
    std::size_t placeOf(PageNumber page);
    /// Grows with every change of the list.
    std::uint64_t pagesVersion() const { return pagesVersion_; }
    /// Why records of this table must not be changed; empty when they may.
    const std::string& whyReadOnly();

    /// A data page of this table, held; nothing for a page that is damaged or belongs to another.
    std::optional<PageRef> dataPage(PageNumber number);
    /// The record at a home place; nothing when it is deleted, hidden or damaged.
    std::optional<HeldRow> row(RowPointer home);
    /// The same on a data page that the caller holds.
    std::optional<HeldRow> rowOn(const PageRef& page, int slot);

    std::int64_t recordCount();
    /// Records on a page, by its place in pages().
    int recordsOn(std::size_t place);
    /// Number of records in front of a page, and the page that holds the n-th record.
    std::int64_t recordsBefore(std::size_t place);
    std::optional<std::size_t> placeOfRecord(std::int64_t n, std::int64_t& before);

    int indexCount() const { return static_cast<int>(def_.realIndexes.size()); }
    OpenIndex& index(int real);
    /// The real index behind a name; -1 when there is none.
    int realIndexOf(std::string_view name) const;

    UsageMap& owned() { return *owned_; }
    UsageMap& space() { return *space_; }

    // For writers.
    void pageAdded(PageNumber page);
    void pageRemoved(PageNumber page);
    void recordsChanged(PageNumber page, int delta);
    /// Enters what waits in the indexes.
    void settle();
    /// What changes of records change of the definition, before it is saved.
    struct Numbers {
        std::uint32_t records = 0;
        std::int32_t lastAutonumber = 0;
    };
    Numbers numbers() const { return {def_.recordCount, def_.lastAutonumber}; }
    /// A change of records is undone. `pages`: its pages went back, and what is known of them is
    /// read anew when asked for.
    void takeBack(const Numbers& numbers, bool pages);
    /// Writes what was kept in memory: entries of indexes that wait, counts of the definition.
    void saveCounts();
    /// Whether entries of an index wait for that.
    bool entriesWait() const;
    void countsChanged() { countsDirty_ = true; }
    /// Another program, or a failed commit, changed the file: everything is read anew when asked
    /// for.
    void reload();
    /// The table has another structure now, or is gone: who still holds this one cannot write.
    void retire() { retired_ = true; }
    bool retired() const { return retired_; }

private:
    void forgetPages();
    void findPages();
    void findPagesByOwner();
    void loadCounts();

    JetFile& file_;
    std::string name_;
    TableDef def_;
    RowPlan plan_;
    std::optional<UsageMap> owned_, space_;
    std::vector<std::unique_ptr<OpenIndex>> indexes_;

    bool pagesKnown_ = false;
    std::vector<PageNumber> pages_;
    std::uint64_t pagesVersion_ = 0;
    std::string whyReadOnly_;

    bool countsKnown_ = false;
    std::vector<std::uint8_t> counts_;  // records on each page of pages_
    std::int64_t records_ = 0;
    bool countsDirty_ = false;
    bool retired_ = false;
    // The last answer of recordsBefore, to go on from.
    std::size_t sumPlace_ = 0;
    std::int64_t sum_ = 0;
};

}  // namespace velnor::jet
