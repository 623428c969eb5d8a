// access/formats/jet/jet_writer.h - adding, changing and removing records of a table.
//
// A change is one record's, and whole or not at all:
// 1. Everything that can refuse it is asked before a page is touched: values, keys, uniqueness of
//    all indexes, relationships, the size of the row.
// 2. Then long values, the row, index entries, and last the old entries and long values are written.
//    What fails there (no room in the file, a damaged page) is undone: of a new record in the
//    opposite order, of all others page by page (whole_change.h).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/jet_table.h"
#include "access/formats/jet/record_keys.h"
#include "access/formats/jet/record_longs.h"
#include "access/formats/jet/relations.h"
#include "access/formats/jet/row_placer.h"

namespace velnor::jet {

class Cascade;

/// A new GUID as text, which lies in `text`.
ValueView randomGuid(std::string& text);

class JetWriter final : public RowWriter {
public:
    /// `randomAutonumber`: new numbers are random, as the table's definition asks.
    JetWriter(std::shared_ptr<JetTable> table, const TableByPage& tables, bool randomAutonumber);

    RowId insert(std::span<const ValueView> values) override;
    void update(RowId row, std::span<const FieldChange> changes) override;
    void remove(RowId row) override;

    JetTable& table() { return *table_; }

    // For changes that follow from one of a related record (cascade.h).
    /// What follows from such a change in turn; 3200, 3201. The change itself may get more fields.
    void follow(LinkedChange& change, std::vector<LinkedChange>& out);
    /// Make it, asking no relationship. What fails is undone by whoever asked for all of it.
    void updateLinked(RowPointer home, std::span<const FieldChange> changes);
    void removeLinked(RowPointer home);

private:
    using Bytes = std::span<const std::uint8_t>;
    /// The record before a change: a copy, since its page will be changed.
    struct OldRow {
        std::vector<std::uint8_t> bytes;
        RowPointer stored;
    };

    void requireCurrent();
    void openOld(RowPointer home);
    void takeKeyValues();
    void openForChange(RowPointer home);
    void takeChanges(std::span<const FieldChange> changes);
    void takeOwnKey(const std::vector<ValueView>& before);
    void replaceRecord(RowPointer home);
    void removeRecord(RowPointer home);
    std::vector<JetTable*> tablesWith(const Cascade& cascade);
    ValueView oldValue(int field);
    ValueView newValue(int field) const { return values_[static_cast<std::size_t>(field)]; }
    void giveAutonumbers();
    void raiseAutonumber();
    ValueView randomNumber();
    bool appendsMany();
    void writeRowFields(bool fresh);
    Bytes buildRow();

    std::shared_ptr<JetTable> table_;
    TableByPage tables_;
    Relations relations_;
    bool randomAutonumber_;
    int appended_ = 0;  // records in a row, up to a bound
    RowPlacer placer_;
    RowWriterBuffer buffer_;
    RowReader reader_;
    RecordKeys keys_;
    RecordLongs longs_;
    OldRow old_;
    std::vector<ValueView> values_;  // of the record as it will be
    std::vector<bool> changed_;
    std::vector<std::pair<int, Value>> ownKey_;
    std::vector<std::string> scratch_;  // old values, by field
    std::string gathered_, guid_;
};

}  // namespace velnor::jet
