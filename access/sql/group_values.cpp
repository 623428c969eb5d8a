#include "access/sql/group_values.h"

#include <algorithm>

#include "access/sql/grouped_rows.h"

namespace velnor::sql {
namespace {

enum class Kept : std::uint8_t { Nothing, Count, Sum, Spread, Value };

Kept keptFor(const GroupFunction& function)
{
    switch (function.kind) {
    case Aggregate::Count:
        return function.field == GroupFunction::kRecords ? Kept::Nothing : Kept::Count;
    case Aggregate::Sum:
    case Aggregate::Average:
        return Kept::Sum;
    case Aggregate::StDev:
    case Aggregate::StDevP:
    case Aggregate::Var:
    case Aggregate::VarP:
        return Kept::Spread;
    default:
        return Kept::Value;
    }
}

double realOf(ValueView number)
{
    return number.kind() == ValueKind::Integer ? static_cast<double>(number.asInteger())
                                               : number.asReal();
}

}  // namespace

GroupValues::GroupValues(const Grouping& grouping) : keys_(grouping.keys)
{
    for (std::size_t i = 0; i < grouping.functions.size(); ++i) {
        const GroupFunction& function = grouping.functions[i];
        const Kept kept = keptFor(function);
        if (kept == Kept::Nothing) {
            slots_.push_back({function.kind, 0, 0, true});
            continue;
        }
        // Sum and Avg of a field are one work, and so are its StDev and Var.
        const auto shares = std::find_if(
            grouping.functions.begin(), grouping.functions.begin() + static_cast<std::ptrdiff_t>(i),
            [&](const GroupFunction& other) {
                return other == function || (other.field == function.field && kept != Kept::Value &&
                                             keptFor(other) == kept);
            });
        const auto other = static_cast<std::size_t>(shares - grouping.functions.begin());
        const std::size_t value = valueOf(function.field);
        const bool own = other == i;
        slots_.push_back({function.kind, value, own ? placeFor(function) : slots_[other].at});
        if (own)
            work_.push_back(slots_.back());
    }
    values_.resize(fields_.size());
    if (grouping.keys.empty()) {  // one group, also of no records
        keys_.spelling([](int) { return ValueView(); });
        addGroup();
    }
}

std::size_t GroupValues::valueOf(int field)
{
    const auto found = std::find(fields_.begin(), fields_.end(), field);
    const auto at = static_cast<std::size_t>(found - fields_.begin());
    if (found == fields_.end())
        fields_.push_back(field);
    return at;
}

std::size_t GroupValues::placeFor(const GroupFunction& function)
{
    switch (keptFor(function)) {
    case Kept::Count:
        return countsAGroup_++;
    case Kept::Sum:
        return sumsAGroup_++;
    case Kept::Spread:
        return spreadsAGroup_++;
    default:
        return keptAGroup_++;
    }
}

void GroupValues::addGroup()
{
    records_.push_back(0);
    counts_.resize(counts_.size() + countsAGroup_);
    sums_.resize(sums_.size() + sumsAGroup_);
    spreads_.resize(spreads_.size() + spreadsAGroup_);
    kept_.resize(kept_.size() + keptAGroup_);
    keeps_.resize(keeps_.size() + keptAGroup_);
}

void GroupValues::addNumber(const Slot& slot, std::uint32_t group, ValueView value)
{
    if (value.kind() == ValueKind::Integer)
        sum(slot, group).addInteger(value.asInteger());
    else
        sum(slot, group).addReal(realOf(value));
}

void GroupValues::addKept(const Slot& slot, std::uint32_t group, ValueView value)
{
    const std::size_t at = group * keptAGroup_ + slot.at;
    Value& kept = kept_[at];
    if (keeps_[at]) {
        if (slot.kind == Aggregate::First)
            return;
        const int order = slot.kind == Aggregate::Last ? 0 : comparePlain(value, kept.view());
        if ((slot.kind == Aggregate::Min && order >= 0) ||
            (slot.kind == Aggregate::Max && order <= 0))
            return;
    }
    keeps_[at] = 1;
    kept.assign(value);
    if (value.kind() == ValueKind::Text)
        keptBytes_ += value.asText().size();
}

void GroupValues::addRecord(std::uint32_t group)
{
    ++records_[group];
    for (const Slot& slot : work_) {
        const ValueView value = values_[slot.value];
        const bool ends = slot.kind == Aggregate::First || slot.kind == Aggregate::Last;
        if (value.isNull() && !ends)
            continue;
        switch (slot.kind) {
        case Aggregate::Count:
            ++counts_[group * countsAGroup_ + slot.at];
            break;
        case Aggregate::Sum:
        case Aggregate::Average:
            addNumber(slot, group, value);
            break;
        case Aggregate::StDev:
        case Aggregate::StDevP:
        case Aggregate::Var:
        case Aggregate::VarP:
            spreads_[group * spreadsAGroup_ + slot.at].add(realOf(value));
            break;
        default:
            addKept(slot, group, value);
        }
    }
}

std::size_t GroupValues::bytes() const
{
    return keys_.bytes() + (records_.capacity() + counts_.capacity()) * 8 +
           sums_.capacity() * sizeof(Sum) + spreads_.capacity() * sizeof(Spread) +
           kept_.capacity() * (sizeof(Value) + 1) + keptBytes_;
}

void GroupValues::fill(RowRoad& road, std::size_t mostBytes)
{
    const auto valueOf = [&](int field) { return road.raw(field); };
    std::uint32_t looked = 0;
    do {
        const std::uint32_t group =
            keys_.fields().empty() ? 0 : keys_.groupOf(keys_.spelling(valueOf));
        if (group == records_.size())
            addGroup();
        for (std::size_t i = 0; i < fields_.size(); ++i)
            values_[i] = road.plain(fields_[i]);
        addRecord(group);
        if ((++looked & 0xFFF) == 0 && bytes() > mostBytes)
            throw GroupsTooLarge();
    } while (road.next());
}

void GroupValues::sort(RunContext& context)
{
    order_ = keys_.order(std::vector<bool>(keys_.fields().size()), context);
}

ValueView GroupValues::function(std::size_t place, std::size_t n) const
{
    const std::size_t group = order_[place];
    const Slot& slot = slots_[n];
    const auto summed = [&]() -> const Sum& { return sums_[group * sumsAGroup_ + slot.at]; };
    const auto spread = [&](int missing, bool root) {
        return spreads_[group * spreadsAGroup_ + slot.at].variance(missing, root);
    };
    switch (slot.kind) {
    case Aggregate::Count:
        break;
    case Aggregate::Sum:
        return summed().total();
    case Aggregate::Average:
        return summed().average();
    case Aggregate::StDev:
        return spread(1, true);
    case Aggregate::StDevP:
        return spread(0, true);
    case Aggregate::Var:
        return spread(1, false);
    case Aggregate::VarP:
        return spread(0, false);
    default:
        return kept_[group * keptAGroup_ + slot.at].view();
    }
    return ValueView::integer(slot.ofRecords ? records_[group]
                                             : counts_[group * countsAGroup_ + slot.at]);
}

ValueView GroupValuesRoad::further(int column)
{
    const auto n = static_cast<std::size_t>(column);
    if (n < keys_)
        return plainValue(groups_.key(at_, n));
    if (n < 2 * keys_)
        return exactValue(groups_.key(at_, n - keys_), scratch_);
    return groups_.function(at_, n - 2 * keys_);
}

}  // namespace velnor::sql
