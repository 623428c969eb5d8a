// access/sql/grouped_rows.h - the records of a table in memory, those with equal values of some
// fields together: a GROUP BY needs no sort then.
//
// Each spelling of a key ("Lima", "LIMA") has a chain of its own records; spellings that are equal
// follow each other. Keys are kept once a spelling, the other fields once a record.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "access/sql/kept_rows.h"

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

    struct Spelling {
        std::uint64_t hash;
        std::uint32_t first = kNone, last = kNone;  // records
        std::uint32_t count = 0;
        std::uint32_t next = kNone;    // an equal spelling
        std::uint32_t bucket = kNone;  // the next one of the same hash bucket
        bool leads = true;             // the first one of its group
    };
    struct Block {
        std::unique_ptr<ValueView[]> values;
        std::unique_ptr<std::uint32_t[]> next;
    };

    std::uint32_t spellingOf(RowCursor& cursor);
    std::uint32_t addSpelling(std::uint64_t hash);
    void joinEqual(std::uint32_t spelling);
    bool equalKeys(std::uint32_t a, std::uint32_t b) const;
    void addRecord(std::uint32_t spelling, RowCursor& cursor);
    void growBuckets();
    std::size_t bytes() const;
    ValueView keyValue(std::uint32_t spelling, std::size_t key) const
    {
        return keys_[spelling * keyFields_.size() + key];
    }
    ValueView value(std::uint32_t record, std::size_t place) const
    {
        return blocks_[record / kBlockRecords]
            .values[record % kBlockRecords * otherFields_.size() + place];
    }
    std::uint32_t next(std::uint32_t record) const
    {
        return blocks_[record / kBlockRecords].next[record % kBlockRecords];
    }

    std::vector<int> keyFields_, otherFields_;
    std::vector<int>
        place_;  // of each field: below 0 the key -1 - n, else the place among the others
    std::vector<Spelling> spellings_;
    std::vector<ValueView> keys_, wanted_;
    std::vector<std::uint32_t> exact_, folded_;  // hash buckets: of spellings, and of groups
    std::vector<std::uint32_t> nextGroup_;
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
