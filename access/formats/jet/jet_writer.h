// access/formats/jet/jet_writer.h - adding, changing and removing records of a table.
//
// A change is one record's, and whole or not at all:
// 1. Everything that can refuse it is asked before a page is touched: values, keys, uniqueness of
// all
//    indexes, relationships, the size of the row.
// 2. Then long values, the row, index entries, and last the old entries and long values are
// written. What
//    fails there (no room in the file, a damaged page) is undone in the opposite order.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/jet_table.h"
#include "access/formats/jet/long_value.h"
#include "access/formats/jet/relations.h"
#include "access/formats/jet/row_placer.h"

namespace velnor::jet {

/// A new GUID as text, which lies in `text`.
ValueView randomGuid(std::string& text);

class JetWriter final : public RowWriter {
public:
    /// `randomAutonumber`: new numbers are random, as the table's definition asks.
    JetWriter(std::shared_ptr<JetTable> table, const TableByPage& tables, bool randomAutonumber);

    RowId insert(std::span<const ValueView> values) override;
    void update(RowId row, std::span<const FieldChange> changes) override;
    void remove(RowId row) override;

    // For changes that follow from one of a related record (cascade.h).
    /// What follows from such a change in turn, and the old values of its fields; 3200, 3201.
    void follow(LinkedChange& change, std::vector<std::pair<int, Value>>& before,
                std::vector<LinkedChange>& out);
    /// Make it, asking no relationship.
    void updateLinked(RowPointer home, std::span<const FieldChange> changes);
    void removeLinked(RowPointer home);

private:
    using Bytes = std::span<const std::uint8_t>;
    struct IndexPart {
        OpenIndex* open = nullptr;
        int real =
            0;  // its definition is looked up each time: it is read anew after a failed commit
        std::unique_ptr<KeyBuilder> keys;
        std::vector<std::uint8_t> oldKey, newKey;
        bool hadOld = false, hasNew = false;  // an entry stands, will stand
        bool changes = false;
        bool canWait = false;  // no other record's key can be the same, or it may be
        bool inserted = false;
    };
    struct LongPart {
        int field = 0;
        std::unique_ptr<LongValueColumn> column;
        bool set = false;  // the change gives a value
        ValueView value;
        std::string stored;  // header and inline bytes of the new value
        std::string old;     // of the value replaced
        bool written = false;
    };
    /// The record before a change: a copy, since its page will be changed.
    struct OldRow {
        std::vector<std::uint8_t> bytes;
        RowPointer stored;
    };

    const RealIndex& definition(const IndexPart& index) const
    {
        return table_->def().realIndexes.at(static_cast<std::size_t>(index.real));
    }
    void requireCurrent();
    void openOld(RowPointer home);
    void takeKeyValues();
    void change(RowPointer home, std::span<const FieldChange> changes, bool related);
    void take(RowPointer home, bool related);
    ValueView oldValue(int field);
    ValueView newValue(int field) const { return values_[field]; }
    void giveAutonumbers();
    ValueView randomNumber();

    void buildKey(IndexPart& index, std::vector<std::uint8_t>& key, bool& has);
    void prepareNewKeys(RowPointer self);
    void prepareOldKeys();
    void refuseDuplicate(IndexPart& index, RowPointer self);
    bool appendsMany();
    void insertEntries(RowPointer home, bool later);
    void undoEntries(RowPointer home);
    void eraseOldEntries(RowPointer home);

    void writeRowFields(bool fresh);
    Bytes buildRow();
    void encodeLong(const LongPart& part, std::string& bytes, std::size_t& plain) const;
    void writeLongValues(bool mayInline);
    void undoLongValues();
    void eraseOldLongValues();
    std::size_t inlineBytes(const LongPart& part);

    std::shared_ptr<JetTable> table_;
    TableByPage tables_;
    Relations relations_;
    bool randomAutonumber_;
    int appended_ = 0;  // records in a row, up to a bound
    RowPlacer placer_;
    RowWriterBuffer buffer_;
    RowReader reader_;
    std::vector<IndexPart> indexes_;
    std::vector<LongPart> longs_;
    std::vector<int> longOfField_;  // -1
    OldRow old_;
    std::vector<ValueView> values_;  // of the record as it will be
    std::vector<ValueView> keyValues_;
    std::vector<bool> changed_;
    std::vector<std::string> scratch_;  // old values, by field
    std::string encoded_, gathered_, guid_;
};

}  // namespace velnor::jet
