// access/sql/kept_rows.h - records of a table kept in memory: some of their fields, found by the
// values of others.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "access/sql/row_road.h"

namespace velnor::sql {

/// Texts and bytes that stay where they are.
class TextHeap {
public:
    /// The same value, its text or bytes in this heap.
    ValueView keep(ValueView v);
    std::size_t bytes() const { return bytes_; }

private:
    std::string_view put(std::string_view text);
    std::vector<std::unique_ptr<char[]>> blocks_;
    char* free_ = nullptr;
    std::size_t left_ = 0;
    std::size_t bytes_ = 0;
};

/// Chosen fields of records, as their cursor gave them.
class KeptRows {
public:
    explicit KeptRows(std::vector<int> fields);
    void add(RowCursor& cursor);
    std::size_t size() const { return rows_.size(); }
    std::size_t bytes() const;
    RowId row(std::size_t record) const { return rows_[record]; }
    ValueView value(std::size_t record, int field) const
    {
        return cells_[record * fields_.size() + static_cast<std::size_t>(place_[field])];
    }

private:
    std::vector<int> fields_;
    std::vector<int> place_;  // of each field of the table; -1: not kept
    std::vector<ValueView> cells_;
    std::vector<RowId> rows_;
    TextHeap texts_;
};

/// Kept records by the values of some fields.
class KeptTable {
public:
    KeptTable(std::vector<int> fields, std::vector<int> keyFields);
    /// Takes all records of a road; false when they need more than `mostBytes`.
    bool fill(CursorRoad& road, std::size_t mostBytes);

    static constexpr std::uint32_t kNone = 0xFFFFFFFF;
    /// The first record whose key fields have these plain values, and the one behind it.
    std::uint32_t find(std::span<const Value> key) const;
    std::uint32_t findNext(std::uint32_t record, std::span<const Value> key) const;
    const KeptRows& rows() const { return rows_; }

private:
    std::uint32_t settle(std::uint32_t record, std::span<const Value> key) const;

    std::vector<int> keyFields_;
    KeptRows rows_;
    std::vector<std::uint32_t> heads_, chain_;
};

/// The records of one key.
class KeptRoad final : public RowRoad {
public:
    KeptRoad(const KeptTable& table, std::vector<Value> key) : table_(table), key_(std::move(key))
    {
    }
    bool first() override { return (at_ = table_.find(key_)) != KeptTable::kNone; }
    bool next() override { return (at_ = table_.findNext(at_, key_)) != KeptTable::kNone; }
    RowId row() const override { return table_.rows().row(at_); }
    ValueView raw(int field) override { return table_.rows().value(at_, field); }
    ValueView plain(int field) override { return plainValue(raw(field)); }
    ValueView exact(int field) override { return exactValue(raw(field), scratch_); }

private:
    const KeptTable& table_;
    std::vector<Value> key_;
    std::uint32_t at_ = KeptTable::kNone;
    std::string scratch_;
};

}  // namespace velnor::sql
