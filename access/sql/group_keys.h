// access/sql/group_keys.h - the different values that some fields have in the records of a table.
//
// Each spelling of a key ("Lima", "LIMA") has a number, in the order in which they came; spellings
// that are equal make a group, which has a number, too. Keys are kept once a spelling.
#pragma once

#include <cstdint>
#include <vector>

#include "access/sql/kept_rows.h"

namespace velnor::sql {

class GroupKeys {
public:
    explicit GroupKeys(std::vector<int> fields);

    /// The spelling of a record's key; `valueOf(field)` gives the record's values as the table has
    /// them.
    template <class ValueOf> std::uint32_t spelling(ValueOf&& valueOf)
    {
        for (std::size_t i = 0; i < fields_.size(); ++i)
            wanted_[i] = valueOf(fields_[i]);
        return findWanted();
    }
    const std::vector<int>& fields() const { return fields_; }
    std::uint32_t spellings() const { return static_cast<std::uint32_t>(spellings_.size()); }
    std::uint32_t groups() const { return static_cast<std::uint32_t>(leaders_.size()); }
    std::uint32_t groupOf(std::uint32_t spelling) const { return spellings_[spelling].group; }
    /// Its first spelling.
    std::uint32_t leaderOf(std::uint32_t group) const { return leaders_[group]; }
    /// The value of key field n.
    ValueView value(std::uint32_t spelling, std::size_t n) const
    {
        return keys_[spelling * fields_.size() + n];
    }
    /// The groups in the order of their keys, falling where told.
    std::vector<std::uint32_t> order(const std::vector<bool>& falling, RunContext& context) const;
    std::size_t bytes() const;

private:
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    struct Spelling {
        std::uint64_t hash;
        std::uint32_t group;
        std::uint32_t bucket;  // the next one of the same hash bucket
    };

    std::uint32_t findWanted();
    std::uint32_t addWanted(std::uint64_t hash);
    std::uint32_t findGroup(std::uint32_t spelling);
    std::uint64_t foldedHash(std::uint32_t spelling) const;
    bool equal(std::uint32_t a, std::uint32_t b) const;
    void growBuckets();

    std::vector<int> fields_;
    std::vector<Spelling> spellings_;
    std::vector<ValueView> keys_, wanted_;
    std::vector<std::uint32_t> exact_, folded_;    // hash buckets: of spellings, and of groups
    std::vector<std::uint32_t> leaders_, bucket_;  // of each group
    TextHeap texts_;
};

}  // namespace velnor::sql
