#include "access/sql/grouped_rows.h"

#include <algorithm>
#include <utility>

namespace velnor::sql {

GroupedRows::GroupedRows(std::vector<int> keyFields, const std::vector<int>& usedFields)
    : keys_(std::move(keyFields))
{
    const auto place = [&](int field, int at) {
        if (static_cast<std::size_t>(field) >= place_.size())
            place_.resize(static_cast<std::size_t>(field) + 1);
        place_[static_cast<std::size_t>(field)] = at;
    };
    const std::vector<int>& keys = keys_.fields();
    for (const int field : usedFields)
        if (std::find(keys.begin(), keys.end(), field) == keys.end()) {
            place(field, static_cast<int>(otherFields_.size()));
            otherFields_.push_back(field);
        }
    for (std::size_t i = 0; i < keys.size(); ++i)
        place(keys[i], -1 - static_cast<int>(i));
}

std::size_t GroupedRows::bytes() const
{
    const std::size_t record = otherFields_.size() * sizeof(ValueView) + sizeof(std::uint32_t);
    return keys_.bytes() + texts_.bytes() + blocks_.size() * kBlockRecords * record +
           chains_.capacity() * sizeof(Chain);
}

/// A new spelling comes behind the first one of its group.
GroupedRows::Chain& GroupedRows::chainOf(std::uint32_t spelling)
{
    if (spelling == chains_.size()) {
        chains_.emplace_back();
        const std::uint32_t leader = keys_.leaderOf(keys_.groupOf(spelling));
        if (leader != spelling)
            chains_[spelling].next = std::exchange(chains_[leader].next, spelling);
    }
    return chains_[spelling];
}

void GroupedRows::addRecord(Chain& chain, RowCursor& cursor)
{
    ++chain.count;
    if (otherFields_.empty())  // the number of records is all there is to them
        return;
    const std::uint32_t record = records_++;
    const std::size_t at = record % kBlockRecords;
    if (at == 0)
        blocks_.push_back(
            {std::make_unique_for_overwrite<ValueView[]>(kBlockRecords * otherFields_.size()),
             std::make_unique_for_overwrite<std::uint32_t[]>(kBlockRecords)});
    Block& block = blocks_.back();
    for (std::size_t i = 0; i < otherFields_.size(); ++i)
        block.values[at * otherFields_.size() + i] = texts_.keep(cursor.field(otherFields_[i]));
    block.next[at] = kNone;
    if (chain.first == kNone)
        chain.first = record;
    else
        blocks_[chain.last / kBlockRecords].next[chain.last % kBlockRecords] = record;
    chain.last = record;
}

void GroupedRows::fill(CursorRoad& road, std::size_t mostBytes)
{
    RowCursor& cursor = road.cursor();
    const auto valueOf = [&](int field) { return cursor.field(field); };
    std::uint32_t looked = 0;
    for (bool there = road.first(); there; there = road.next()) {
        addRecord(chainOf(keys_.spelling(valueOf)), cursor);
        if ((++looked & 0xFFF) == 0 && (bytes() > mostBytes || looked > 0xFFFF0000u))
            throw GroupsTooLarge();
    }
}

void GroupedRows::sort(const std::vector<bool>& falling, RunContext& context)
{
    order_ = keys_.order(falling, context);
    for (std::uint32_t& place : order_)
        place = keys_.leaderOf(place);
}

bool GroupedRoad::toSpelling(std::uint32_t spelling)
{
    spelling_ = spelling;
    record_ = rows_.chains_[spelling].first;
    left_ = rows_.chains_[spelling].count;
    return true;
}

bool GroupedRoad::first()
{
    group_ = 0;
    return !rows_.order_.empty() && toSpelling(rows_.order_[0]);
}

bool GroupedRoad::next()
{
    if (--left_ > 0) {
        if (record_ != GroupedRows::kNone)
            record_ = rows_.next(record_);
        return true;
    }
    if (rows_.chains_[spelling_].next != GroupedRows::kNone)
        return toSpelling(rows_.chains_[spelling_].next);
    return ++group_ < rows_.order_.size() && toSpelling(rows_.order_[group_]);
}

ValueView GroupedRoad::raw(int field)
{
    const int place = rows_.place_[static_cast<std::size_t>(field)];
    if (place < 0)
        return rows_.keys_.value(spelling_, static_cast<std::size_t>(-1 - place));
    return rows_.value(record_, static_cast<std::size_t>(place));
}

}  // namespace velnor::sql
