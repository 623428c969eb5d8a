#include "access/sql/plan_run.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>

#include "access/value_text.h"

namespace velnor::sql {
namespace {

constexpr double kMillisecond = 1.0 / 86400000;
constexpr std::size_t kLongestList = 1u << 16;  // of values behind IN

bool sameSide(SqlType type, ValueView v)
{
    if (v.kind() == ValueKind::Text)
        return type == SqlType::Text;
    if (v.kind() == ValueKind::Bytes)
        return type == SqlType::Bytes;
    return v.isNull() || isNumber(type) || type == SqlType::Date;
}

/// A bound that lies at the value or, where the field cannot hold it, a little outside.
bool boundKey(const FieldDef& field, ValueView plain, bool low, Value& key)
{
    const SqlType type = sqlTypeOf(field.type);
    if (type == SqlType::Date && plain.kind() != ValueKind::Text) {
        const double days = plain.kind() == ValueKind::Real
                                ? plain.asReal()
                                : static_cast<double>(plain.asInteger());
        plain = ValueView::real(days + (low ? -kMillisecond : kMillisecond));
    } else if (plain.kind() == ValueKind::Real &&
               (type == SqlType::Integer || valueKindOf(field.type) == ValueKind::Decimal)) {
        const double whole = low ? std::floor(plain.asReal()) : std::ceil(plain.asReal());
        if (!(std::fabs(whole) < 9e15))
            return false;
        plain = ValueView::integer(static_cast<std::int64_t>(whole));
    }
    ValueView made;
    if (!keyOfPlain(field, plain, made))
        return false;
    key.assign(made);
    return true;
}

}  // namespace

ValueView PlanRun::termValue(int term) const
{
    return values_[static_cast<std::size_t>(term)].view();
}

/// False when a condition is true for no record.
bool PlanRun::readTests(const AccessPlan& plan, std::span<sqlite3_value* const> values)
{
    values_.assign(plan.terms.size(), Value());
    tests_.clear();
    tests_.resize(plan.terms.size());
    const auto& fields = module_.table().layout().fields;
    for (std::size_t i = 0; i < plan.terms.size(); ++i) {
        const PlanTerm& term = plan.terms[i];
        auto test = std::make_unique<ScanTest>(term.field, term.op);
        bool decides = true;
        if (term.argument >= 0) {
            const SqlType type = sqlTypeOf(fields[static_cast<std::size_t>(term.field)].type);
            sqlite3_value* const value = values[static_cast<std::size_t>(term.argument)];
            if (term.list) {
                sqlite3_value* item = nullptr;
                std::size_t items = 0;
                for (int rc = sqlite3_vtab_in_first(value, &item); rc == SQLITE_OK && item;
                     rc = sqlite3_vtab_in_next(value, &item)) {
                    decides = decides && sameSide(type, plainOf(item)) && ++items <= kLongestList;
                    if (decides)
                        test->add(plainOf(item));
                }
                test->sortList();
            } else {
                const ValueView plain = plainOf(value);
                decides = sameSide(type, plain);
                values_[i].assign(plain);
                test->add(plain);
            }
            if (decides && test->passesNone())
                return false;
        }
        if (decides)
            tests_[i] = std::move(test);
    }
    return true;
}

Tests PlanRun::tests() const
{
    Tests all;
    for (const auto& test : tests_)
        if (test)
            all.push_back(*test);
    return all;
}

RowRoad* PlanRun::begin(const AccessPlan& plan, std::span<sqlite3_value* const> values)
{
    RowRoad* const records = beginRecords(plan, values);
    RunContext& context = module_.context();
    if (!context.grouping)
        return records;
    groups_ = std::make_unique<GroupValues>(*context.grouping);
    if (records)
        groups_->fill(*records, context.options.memory * 2);
    groups_->sort(context);
    groupRoad_ = std::make_unique<GroupValuesRoad>(*groups_, context.grouping->keys.size());
    return groupRoad_->first() ? groupRoad_.get() : nullptr;
}

RowRoad* PlanRun::beginRecords(const AccessPlan& plan, std::span<sqlite3_value* const> values)
{
    road_.reset();
    if (!readTests(plan, values))
        return nullptr;
    bool there = false;
    try {
        if (closed_ != &plan)
            road_ = roadOf(plan);
        there = road_ && road_->first();
    } catch (const EngineError& error) {
        // An index that is older than its table, or cannot be searched this way: past all records
        // then.
        if (plan.ordered || error.code() == EngineErrorNumber::Cancelled)
            throw;
        closed_ = &plan;
        road_.reset();
    }
    if (!road_) {
        road_ = scanRoad();
        there = road_->first();
    }
    return there ? road_.get() : nullptr;
}

/// A cursor on an index, or past all records: made once, since a join comes here for every record.
std::shared_ptr<RowCursor> PlanRun::cursorOn(const std::string& index, int number)
{
    for (const Kept& kept : cursors_)
        if (kept.index == index && kept.number == number)
            return kept.cursor;
    const auto name = index.empty() ? std::nullopt : std::optional<std::string_view>(index);
    cursors_.push_back({index, number, module_.table().cursor(name)});
    return cursors_.back().cursor;
}

std::unique_ptr<RowRoad> PlanRun::roadOf(const AccessPlan& plan)
{
    switch (plan.road) {
    case Road::Index:
        return indexRoad(plan);
    case Road::Spelling:
        return spellingRoad(plan);
    case Road::Kept:
        return keptRoad(plan);
    case Road::Grouped:
        return groupedRoad(plan);
    case Road::Scan:
        break;
    }
    return scanRoad();
}

std::unique_ptr<RowRoad> PlanRun::scanRoad(bool backwards)
{
    return std::make_unique<ScanRoad>(cursorOn({}), tests(), module_.context(), backwards);
}

std::unique_ptr<RowRoad> PlanRun::indexRoad(const AccessPlan& plan)
{
    const auto& fields = module_.table().layout().fields;
    const auto fieldOf = [&](int term) -> const FieldDef& {
        return fields[static_cast<std::size_t>(plan.terms[static_cast<std::size_t>(term)].field)];
    };
    IndexRoad::Bounds bounds;
    bool widened = false;  // a date: nothing behind it narrows the part
    for (const int term : plan.equalTerms) {
        const ValueView plain = termValue(term);
        const FieldDef& field = fieldOf(term);
        if (!tests_[static_cast<std::size_t>(term)])
            return nullptr;
        if (plain.kind() == ValueKind::Text && !isAscii(plain.asText()))
            return nullptr;
        Value low, high;
        ValueView exact;
        widened = sqlTypeOf(field.type) == SqlType::Date;
        if (widened) {
            if (!boundKey(field, plain, true, low) || !boundKey(field, plain, false, high))
                return nullptr;
        } else {
            if (!keyOfPlain(field, plain, exact))
                return nullptr;
            low.assign(exact);
            high.assign(exact);
        }
        bounds.low.push_back(std::move(low));
        bounds.high.push_back(std::move(high));
        if (widened)
            break;
    }
    const auto add = [&](int term, bool low, std::vector<Value>& to) {
        Value key;
        if (term >= 0 && !widened && tests_[static_cast<std::size_t>(term)] &&
            boundKey(fieldOf(term), termValue(term), low, key))
            to.push_back(std::move(key));
    };
    add(plan.lowTerm, true, bounds.low);
    add(plan.highTerm, false, bounds.high);
    if (!plan.ordered && bounds.low.empty() && bounds.high.empty())
        return nullptr;
    return std::make_unique<IndexRoad>(cursorOn(plan.index), cursorOn(plan.index, 1),
                                       std::move(bounds), tests(), module_.context(),
                                       plan.backwards);
}

std::unique_ptr<RowRoad> PlanRun::spellingRoad(const AccessPlan& plan)
{
    const int term = plan.equalTerms.front();
    const ValueView plain = termValue(term);
    if (plain.kind() != ValueKind::Text || !isAscii(plain.asText()))
        return nullptr;
    return std::make_unique<SpellingRoad>(cursorOn(plan.index),
                                          plan.terms[static_cast<std::size_t>(term)].field,
                                          std::string(plain.asText()), tests(), module_.context());
}

std::unique_ptr<RowRoad> PlanRun::groupedRoad(const AccessPlan& plan)
{
    ScanRoad road(cursorOn({}), tests(), module_.context(), false);
    grouped_ = std::make_unique<GroupedRows>(plan.groupFields, plan.usedFields);
    grouped_->fill(road, module_.context().options.memory * 2);
    grouped_->sort(plan.fallingGroups, module_.context());
    return std::make_unique<GroupedRoad>(*grouped_);
}

/// Takes the records into memory that pass the constant conditions; false when they are too many.
bool PlanRun::keep(const AccessPlan& plan, std::vector<int> keyFields)
{
    Tests constant;
    for (std::size_t i = 0; i < tests_.size(); ++i)
        if (tests_[i] && plan.terms[i].constant)
            constant.push_back(*tests_[i]);
    std::vector<int> fields = plan.usedFields;
    for (const int field : keyFields)
        if (std::find(fields.begin(), fields.end(), field) == fields.end())
            fields.push_back(field);
    ScanRoad road(cursorOn({}), std::move(constant), module_.context(), false);
    kept_ = std::make_unique<KeptTable>(std::move(fields), std::move(keyFields));
    keptTooLarge_ = !kept_->fill(road, module_.context().options.memory * 2);
    if (keptTooLarge_)
        kept_.reset();
    else
        keptFor_ = &plan;
    return !keptTooLarge_;
}

std::unique_ptr<RowRoad> PlanRun::keptRoad(const AccessPlan& plan)
{
    std::vector<int> keyFields;
    std::vector<Value> key;
    for (const int term : plan.equalTerms) {
        if (!tests_[static_cast<std::size_t>(term)])
            return nullptr;
        keyFields.push_back(plan.terms[static_cast<std::size_t>(term)].field);
        key.push_back(values_[static_cast<std::size_t>(term)]);
    }
    if (keptTooLarge_)
        return nullptr;
    if (keptFor_ != &plan && !keep(plan, std::move(keyFields)))
        return nullptr;
    return std::make_unique<KeptRoad>(*kept_, std::move(key));
}

}  // namespace velnor::sql
