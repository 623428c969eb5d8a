// access/sql/grouped_rows.h - the records of a table in memory, those with equal values of some
// fields together: a GROUP BY needs no sort then.
//
// Each spelling of a key ("Lima", "LIMA") has a chain of its own records; spellings that are equal
// follow each other. Keys are kept once a spelling, the other fields once a record.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "access/sql/group_keys.h"

namespace velnor::sql {

/// Thrown when the records need more memory than they may have.
struct GroupsTooLarge {};

class GroupedRows {
public:
    GroupedRows(std::vector<int> keyFields, const std::vector<int>& usedFields);
    /// Takes all records of a road. GroupsTooLarge beyond `mostBytes`.
    void fill(CursorRoad& road, std::size_t mostBytes);
    /// The groups in the order of their keys, falling where told.
    void sort(const std::vector<bool>& falling, RunContext& context);

private:
    friend class GroupedRoad;
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;
    static constexpr std::size_t kBlockRecords = 1u << 14;

    /// The records of a spelling.
    struct Chain {
        std::uint32_t first = kNone, last = kNone;
        std::uint32_t count = 0;
        std::uint32_t next = kNone;  // an equal spelling
    };
    struct Block {
        std::unique_ptr<ValueView[]> values;
        std::unique_ptr<std::uint32_t[]> next;
    };

    Chain& chainOf(std::uint32_t spelling);
    void addRecord(Chain& chain, RowCursor& cursor);
    std::size_t bytes() const;
    ValueView value(std::uint32_t record, std::size_t place) const
    {
        return blocks_[record / kBlockRecords]
            .values[record % kBlockRecords * otherFields_.size() + place];
    }
    std::uint32_t next(std::uint32_t record) const
    {
        return blocks_[record / kBlockRecords].next[record % kBlockRecords];
    }

    GroupKeys keys_;
    std::vector<int> otherFields_;
    std::vector<int>
        place_;  // of each field: below 0 the key -1 - n, else the place among the others
    std::vector<Chain> chains_;         // by spelling
    std::vector<std::uint32_t> order_;  // the first spelling of each group
    std::vector<Block> blocks_;
    std::uint32_t records_ = 0;
    TextHeap texts_;
};

/// Group by group.
class GroupedRoad final : public RowRoad {
public:
    explicit GroupedRoad(const GroupedRows& rows) : rows_(rows) {}
    bool first() override;
    bool next() override;
    RowId row() const override { return 0; }
    ValueView raw(int field) override;
    ValueView plain(int field) override { return plainValue(raw(field)); }
    ValueView exact(int field) override { return exactValue(raw(field), scratch_); }

private:
    bool toSpelling(std::uint32_t spelling);

    const GroupedRows& rows_;
    std::size_t group_ = 0;
    std::uint32_t spelling_ = 0, record_ = 0, left_ = 0;
    std::string scratch_;
};

}  // namespace velnor::sql
