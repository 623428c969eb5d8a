#include "access/sql/access_plan.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>

#include "access/sql/functions.h"
#include "access/sql/plain_value.h"
#include "platform/paths.h"

namespace velnor::sql {
namespace {

constexpr double kScanRecord = 1;   // cost of looking at one record in a walk past all
constexpr double kFetchRecord = 8;  // of one that an index leads to
constexpr double kSeek = 40;
constexpr double kEqualPart = 1.0 / 50, kRangePart = 1.0 / 4, kOtherPart = 0.9;

struct AskedOp {
    unsigned char asked;
    TestOp test;
};
constexpr std::array kAskedOps{
    AskedOp{SQLITE_INDEX_CONSTRAINT_EQ, TestOp::Equal},
    AskedOp{SQLITE_INDEX_CONSTRAINT_NE, TestOp::Different},
    AskedOp{SQLITE_INDEX_CONSTRAINT_LT, TestOp::Less},
    AskedOp{SQLITE_INDEX_CONSTRAINT_LE, TestOp::LessEqual},
    AskedOp{SQLITE_INDEX_CONSTRAINT_GT, TestOp::Greater},
    AskedOp{SQLITE_INDEX_CONSTRAINT_GE, TestOp::GreaterEqual},
    AskedOp{SQLITE_INDEX_CONSTRAINT_ISNULL, TestOp::IsNull},
    AskedOp{SQLITE_INDEX_CONSTRAINT_ISNOTNULL, TestOp::NotNull},
};

std::optional<TestOp> testOf(unsigned char asked)
{
    for (const AskedOp& op : kAskedOps)
        if (op.asked == asked)
            return op.test;
    return std::nullopt;
}

bool sameSide(SqlType type, ValueView constant)
{
    if (constant.isNull())
        return true;
    switch (constant.kind()) {
    case ValueKind::Text:
        return type == SqlType::Text;
    case ValueKind::Bytes:
        return type == SqlType::Bytes;
    default:
        return isNumber(type) || type == SqlType::Date;
    }
}

double partOf(TestOp op)
{
    switch (op) {
    case TestOp::Equal:
    case TestOp::IsNull:
        return kEqualPart;
    case TestOp::OneOf:
        return kEqualPart * 3;
    case TestOp::Different:
    case TestOp::NotNull:
        return kOtherPart;
    default:
        return kRangePart;
    }
}

bool isLower(TestOp op)
{
    return op == TestOp::Greater || op == TestOp::GreaterEqual;
}

bool isUpper(TestOp op)
{
    return op == TestOp::Less || op == TestOp::LessEqual;
}

}  // namespace

int positionOfField(const TableLayout& layout, std::string_view name)
{
    for (std::size_t i = 0; i < layout.fields.size(); ++i)
        if (paths::sameName(layout.fields[i].name, name))
            return static_cast<int>(i);
    return -1;
}

int AccessPlanner::fieldOf(int column) const
{
    const int fields = static_cast<int>(layout_.fields.size());
    return column < 0 ? -1 : column < fields ? column : column - fields;
}

bool AccessPlanner::takeCondition(sqlite3_index_info& info, int number, Condition& condition) const
{
    const auto& asked = info.aConstraint[number];
    const int fields = static_cast<int>(layout_.fields.size());
    const std::optional<TestOp> op = testOf(asked.op);
    if (!op || !asked.usable || asked.iColumn < 0 || asked.iColumn >= fields)
        return false;
    const SqlType type = sqlTypeOf(layout_.fields[static_cast<std::size_t>(asked.iColumn)].type);
    condition = {{asked.iColumn, *op, -1, false, true}, number, true};
    if (op == TestOp::IsNull || op == TestOp::NotNull)
        return true;
    if (type == SqlType::Text &&
        std::strcmp(sqlite3_vtab_collation(&info, number), kTextOrder) != 0)
        return false;
    if (op == TestOp::Equal && sqlite3_vtab_in(&info, number, -1)) {
        condition.term.op = TestOp::OneOf;
        condition.term.list = true;
        condition.term.constant = condition.exact = false;
        return true;
    }
    sqlite3_value* value = nullptr;
    condition.term.constant = sqlite3_vtab_rhs_value(&info, number, &value) == SQLITE_OK && value;
    condition.exact = condition.term.constant && sameSide(type, plainOf(value));
    return true;
}

void AccessPlanner::readConditions(sqlite3_index_info& info)
{
    for (int i = 0; i < info.nConstraint; ++i) {
        Condition condition{};
        if (takeCondition(info, i, condition))
            conditions_.push_back(condition);
    }
    // What throws out most comes first.
    std::stable_sort(conditions_.begin(), conditions_.end(), [](const auto& a, const auto& b) {
        return partOf(a.term.op) < partOf(b.term.op);
    });
    const int fields = static_cast<int>(layout_.fields.size());
    const auto used = [&](int column) { return info.colUsed >> std::min(column, 63) & 1; };
    for (int field = 0; field < fields; ++field)
        if (used(field) || used(field + fields))
            used_.push_back(field);
}

const AccessPlanner::Condition* AccessPlanner::conditionOn(int field, bool equal) const
{
    for (const Condition& c : conditions_)
        if (c.term.field == field && (!equal || c.term.op == TestOp::Equal))
            return &c;
    return nullptr;
}

bool AccessPlanner::searchable(const IndexDef& index) const
{
    const IndexOrder order = table_.orderOf(index);
    const bool plain =
        index.expression.empty() ||
        (index.fields.size() == 1 && (paths::sameName(index.expression, index.fields[0].name) ||
                                      order.texts == TextKeys::Blind));
    return plain && !order.leavesEqualOut && !index.fields.empty() && index.condition.empty() &&
           index.cannotKeep.empty() &&
           std::none_of(index.fields.begin(), index.fields.end(),
                        [](const IndexFieldDef& f) { return f.descending; });
}

void AccessPlanner::considerIndex(const IndexDef& index)
{
    const TextKeys texts = table_.orderOf(index).texts;
    AccessPlan plan;
    plan.road = Road::Index;
    plan.index = index.name;
    double part = 1;
    for (std::size_t i = 0; i < index.fields.size(); ++i) {
        const int field = positionOfField(layout_, index.fields[i].name);
        const bool text =
            field >= 0 &&
            sqlTypeOf(layout_.fields[static_cast<std::size_t>(field)].type) == SqlType::Text;
        const bool spelled = text && texts == TextKeys::Bytes;
        if (field < 0 || (text && texts == TextKeys::Unknown) || (spelled && i > 0))
            break;
        const Condition* equal = conditionOn(field, true);
        if (equal) {
            plan.equalTerms.push_back(static_cast<int>(equal - conditions_.data()));
            part *= kEqualPart;
            if (!spelled)
                continue;
            plan.road = Road::Spelling;
            break;
        }
        for (std::size_t c = 0; !text && c < conditions_.size(); ++c) {
            const PlanTerm& term = conditions_[c].term;
            int& bound = isLower(term.op) ? plan.lowTerm : plan.highTerm;
            if (term.field != field || bound >= 0 || (!isLower(term.op) && !isUpper(term.op)))
                continue;
            bound = static_cast<int>(c);
            part *= kRangePart;
        }
        break;
    }
    if (plan.equalTerms.empty() && plan.lowTerm < 0 && plan.highTerm < 0)
        return;
    const bool whole = plan.equalTerms.size() == index.fields.size();
    const auto records = static_cast<double>(records_);
    // A key that is meant to name one record names few.
    const double found =
        whole && (index.unique || index.primary) ? 1 : std::max(1.0, records * part);
    const double cost = kSeek + found * kFetchRecord;
    if (cost >= cost_)
        return;
    best_ = std::move(plan);
    cost_ = cost;
    rows_ = found;
    ordered_ = false;
}

bool AccessPlanner::givesOrder(const IndexDef& index, const sqlite3_index_info& info,
                               bool& backwards) const
{
    if (!table_.orderOf(index).nullsFirst || index.ignoreNulls || info.nOrderBy == 0 ||
        static_cast<std::size_t>(info.nOrderBy) > index.fields.size() || !index.expression.empty())
        return false;
    backwards = info.aOrderBy[0].desc;
    for (int i = 0; i < info.nOrderBy; ++i) {
        const auto& wanted = info.aOrderBy[i];
        const int field = positionOfField(layout_, index.fields[static_cast<std::size_t>(i)].name);
        if (field < 0 || wanted.iColumn != field || static_cast<bool>(wanted.desc) != backwards)
            return false;
        const SqlType type = sqlTypeOf(layout_.fields[static_cast<std::size_t>(field)].type);
        if (type != SqlType::Integer && type != SqlType::Currency)
            return false;
    }
    return true;
}

void AccessPlanner::considerIndexes(sqlite3_index_info& info)
{
    for (const IndexDef& index : layout_.indexes)
        if (searchable(index))
            considerIndex(index);
    if (info.nOrderBy == 0)
        return;
    for (const IndexDef& index : layout_.indexes) {
        bool backwards = false;
        if (!searchable(index) || !givesOrder(index, info, backwards))
            continue;
        if (best_.road == Road::Index && best_.index == index.name && best_.equalTerms.empty()) {
            best_.backwards = backwards;
            ordered_ = true;
            return;
        }
        if (best_.road != Road::Scan)
            continue;
        // The whole table by its index: dearer than a scan, but nothing is left to sort.
        best_ = {};
        best_.road = Road::Index;
        best_.index = index.name;
        best_.backwards = backwards;
        cost_ = static_cast<double>(records_) * kFetchRecord;
        ordered_ = true;
        return;
    }
}

/// Bytes of the used fields of all records in memory, at most.
double AccessPlanner::keptBytes() const
{
    double record = 24;
    for (const int field : used_) {
        const FieldDef& def = layout_.fields[static_cast<std::size_t>(field)];
        const SqlType type = sqlTypeOf(def.type);
        const bool wide = type == SqlType::Bytes || (type == SqlType::Text && def.size == 0);
        if (wide)
            return 1e18;
        record += 24 + (type == SqlType::Text ? 3.0 * def.size : 0);
    }
    return record * static_cast<double>(records_);
}

/// An equality with a value of another table, and no index for it: the records are kept by that
/// field.
void AccessPlanner::considerKept()
{
    AccessPlan plan;
    plan.road = Road::Kept;
    double part = 1;
    for (std::size_t i = 0; i < conditions_.size(); ++i) {
        if (conditions_[i].term.constant)
            part *= conditions_[i].exact ? partOf(conditions_[i].term.op) : 1;
        else if (conditions_[i].term.op == TestOp::Equal)
            plan.equalTerms.push_back(static_cast<int>(i));
    }
    if (plan.equalTerms.empty() || keptBytes() > static_cast<double>(memory_))
        return;
    const auto records = static_cast<double>(records_);
    const double found = std::max(1.0, records * part * kEqualPart);
    const double cost = 2 + found + records / 10;
    if (cost >= cost_)
        return;
    best_ = std::move(plan);
    cost_ = cost;
    rows_ = found;
    ordered_ = false;
}

/// GROUP BY or DISTINCT over all records: equal ones can come together without being sorted.
void AccessPlanner::considerGroups(sqlite3_index_info& info)
{
    const int distinct = sqlite3_vtab_distinct(&info);
    if (!groups_ || best_.road != Road::Scan || info.nOrderBy == 0 ||
        (distinct != 1 && distinct != 2))
        return;
    const int fields = static_cast<int>(layout_.fields.size());
    std::vector<int> keys;
    for (int i = 0; i < info.nOrderBy; ++i) {
        const int column = info.aOrderBy[i].iColumn;
        if (column < 0 || column >= fields)
            return;
        keys.push_back(column);
        best_.fallingGroups.push_back(info.aOrderBy[i].desc);
    }
    best_.road = Road::Grouped;
    best_.groupFields = std::move(keys);
    ordered_ = true;
}

void AccessPlanner::settle(sqlite3_index_info& info)
{
    int arguments = 0;
    for (Condition& c : conditions_) {
        const bool value = c.term.op != TestOp::IsNull && c.term.op != TestOp::NotNull;
        if (value) {
            if (c.term.list)
                sqlite3_vtab_in(&info, c.number, 1);
            c.term.argument = arguments;
            info.aConstraintUsage[c.number].argvIndex = ++arguments;
        }
        if (c.exact && value)
            info.aConstraintUsage[c.number].omit = 1;
        best_.terms.push_back(c.term);
    }
    best_.usedFields = used_;
    info.estimatedCost = std::max(1.0, cost_);
    info.estimatedRows = std::max<sqlite3_int64>(1, static_cast<sqlite3_int64>(rows_));
    best_.ordered = ordered_;
    info.orderByConsumed = ordered_;
}

AccessPlan AccessPlanner::plan(sqlite3_index_info& info)
{
    readConditions(info);
    const auto records = static_cast<double>(records_);
    rows_ = records;
    for (const Condition& c : conditions_)
        rows_ *= partOf(c.term.op);
    cost_ = records * kScanRecord + 10;
    considerIndexes(info);
    considerKept();
    considerGroups(info);
    settle(info);
    return std::move(best_);
}

}  // namespace velnor::sql
