// access/sql/group_values.h - groups of records worked out while the records come: nothing of a
// record is kept but what the functions over its group need.
#pragma once

#include <cstdint>
#include <vector>

#include "access/sql/accumulators.h"
#include "access/sql/group_keys.h"
#include "access/sql/grouping.h"

namespace velnor::sql {

class GroupValues {
public:
    explicit GroupValues(const Grouping& grouping);
    /// Takes the record on which a road stands, and all behind it. GroupsTooLarge beyond
    /// `mostBytes`.
    void fill(RowRoad& road, std::size_t mostBytes);
    /// The groups in the order of their keys, to be called at the end.
    void sort(RunContext& context);

    std::size_t size() const { return order_.size(); }
    /// Key n of the group in this place, as the table has it.
    ValueView key(std::size_t place, std::size_t n) const
    {
        return keys_.value(keys_.leaderOf(order_[place]), n);
    }
    /// Function n of it, in plain form.
    ValueView function(std::size_t place, std::size_t n) const;

private:
    /// Where a function keeps what it needs: in which list, at which place of a group's part.
    struct Slot {
        Aggregate kind;
        std::size_t value;  // in values_
        std::size_t at;
        bool ofRecords = false;  // counts them, and keeps nothing
    };

    std::size_t valueOf(int field);
    std::size_t placeFor(const GroupFunction& function);
    void addGroup();
    void addRecord(std::uint32_t group);
    void addNumber(const Slot& slot, std::uint32_t group, ValueView value);
    void addKept(const Slot& slot, std::uint32_t group, ValueView value);
    std::size_t bytes() const;
    Sum& sum(const Slot& slot, std::size_t group) { return sums_[group * sumsAGroup_ + slot.at]; }

    GroupKeys keys_;
    std::vector<int> fields_;        // that functions need
    std::vector<ValueView> values_;  // of the record in hand, by place in fields_
    std::vector<Slot> slots_;        // of the functions, one each
    std::vector<Slot> work_;         // slots without those that share the work of another one
    std::size_t countsAGroup_ = 0, sumsAGroup_ = 0, spreadsAGroup_ = 0, keptAGroup_ = 0;
    std::vector<std::int64_t> records_;  // of each group
    std::vector<std::int64_t> counts_;
    std::vector<Sum> sums_;
    std::vector<Spread> spreads_;
    std::vector<Value> kept_;
    std::vector<char> keeps_;  // whether kept_ holds one: it may be Null
    std::size_t keptBytes_ = 0;
    std::vector<std::uint32_t> order_;
};

/// Group by group; has no fields but the further columns.
class GroupValuesRoad final : public RowRoad {
public:
    GroupValuesRoad(const GroupValues& groups, std::size_t keys) : groups_(groups), keys_(keys) {}
    bool first() override { return groups_.size() > (at_ = 0); }
    bool next() override { return ++at_ < groups_.size(); }
    RowId row() const override { return 0; }
    ValueView raw(int) override { return {}; }
    ValueView plain(int) override { return {}; }
    ValueView exact(int) override { return {}; }
    ValueView further(int column) override;

private:
    const GroupValues& groups_;
    std::size_t keys_;
    std::size_t at_ = 0;
    std::string scratch_;
};

}  // namespace velnor::sql
