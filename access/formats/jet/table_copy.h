// access/formats/jet/table_copy.h - one table written anew into another file of the same version.
//
// Records keep their order and their stored values; long values are stored again; index entries
// keep their order and get their new places, so that nothing is sorted and keys of any sort order
// come over. An index that does not fit its records is made anew from their keys.
//
// With `salvage` whatever can be read is taken and the rest reported; without it damage is 3197. A
// field that cannot be read is Null, and an index whose records break its rule no longer has it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/entry_run.h"
#include "access/formats/jet/jet_table.h"
#include "access/formats/jet/long_value.h"
#include "access/formats/jet/place_map.h"
#include "access/formats/jet/row_filler.h"
#include "access/formats/jet/structure.h"

namespace velnor::jet {

/// Reads a field of the record in hand, by its name; Null when there is no such field.
using RecordField = std::function<ValueView(const char*)>;

/// A number that is another in the new file: the page of a definition.
struct NumberChange {
    std::string field;
    /// The new number; nothing when the record is left out.
    std::function<std::optional<std::int32_t>(std::int32_t old, const RecordField& others)>
        renumber;
};

struct TableCopyOptions {
    bool salvage = false;
    std::optional<NumberChange> numbers;
    /// Salvage: the pages that name the table as their owner. Else its own map tells.
    const std::vector<PageNumber>* pages = nullptr;
    /// Salvage: whether a memo or OLE value of a field is what it should be; all are without this.
    std::function<bool(const std::string& field, std::span<const std::uint8_t> value)> makesSense;
    /// Called now and then: the new file may write what it has gathered.
    std::function<void()> breathe;
    ProblemSink report;
};

class TableCopy {
public:
    /// `to` has the pages of `newDefinition` for its definition, and maps come from `maps`.
    /// `newPageOf` gives the new page of another table's definition, 0 when it is gone.
    TableCopy(JetTable& from, JetFile& to, PageNumber newDefinition, MapRecords& maps,
              const std::function<PageNumber(PageNumber)>& newPageOf,
              const TableCopyOptions& options);
    ~TableCopy();

    /// 3197 for damage unless salvaging.
    void run();

private:
    using Bytes = std::span<const std::uint8_t>;
    struct LongField;

    void define(PageNumber page, MapRecords& maps,
                const std::function<PageNumber(PageNumber)>& newPageOf);
    void copyRecords();
    void copyPage(PageNumber number);
    void copyRecord(int slot, Bytes row, bool stray);
    void copyStrays();
    bool renumber(std::vector<std::uint8_t>& row);
    void moveLongValues();
    void moveLongValue(LongField& field);
    bool acceptable(int field, Bytes value) const;
    Bytes patched();
    Bytes laidAnew();
    void countNulls();
    void lookAtFields();
    bool soundField(int field);
    void dropLostIndexes();
    [[noreturn]] void damaged(const std::string& what) const;
    void lost(RowPointer place, const char* why);
    void note(const std::string& text, bool harmless);

    void copyIndex(int real);
    bool translate(int real);
    bool makeIndex(int real);
    bool makeFromKeys(int real);
    void buildFrom(EntryRun& run, int real, KeyView nothing);
    void loosen(int real, std::uint8_t flag, std::uint32_t records, const char* why);
    std::string indexName(int real) const;
    bool renumbersIndex(int real) const;

    JetTable& from_;
    JetFile& file_;
    const TableCopyOptions& options_;
    bool laidAnew_;
    std::shared_ptr<JetTable> to_;
    std::unique_ptr<RowFiller> filler_;
    std::unique_ptr<RowWriterBuffer> buffer_;
    RowReader reader_;
    std::vector<LongField> longs_;
    PlaceMap places_;
    int numberField_ = -1;
    std::vector<std::uint8_t> row_;
    std::string gathered_;
    std::vector<std::int64_t> without_;  // by real index: records that are not in it
    bool countsNulls_ = false;
    bool definitionChanged_ = false;
    bool plain_ = false;             // records are taken as they are
    std::vector<RowPointer> moved_;  // salvage: where moved records were
    std::int64_t records_ = 0;
    std::int64_t lostRecords_ = 0, lostValues_ = 0;
    std::vector<std::uint32_t> lostIndexes_;  // salvage: those that cannot be made
    std::int64_t largestNumber_ = 0;          // salvage: of the autonumber field
};

}  // namespace velnor::jet
