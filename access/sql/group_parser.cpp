// Statements that ask for groups and functions over them alone: the form in which a table gives its
// groups itself (grouping.h).
#include <algorithm>
#include <array>

#include "access/sql/statement_parser.h"

namespace velnor::sql {
namespace {

constexpr std::string_view kWhere = " WHERE ", kHaving = " HAVING ", kFalls = " DESC";

Aggregate aggregateCalled(std::string_view name)
{
    static constexpr std::array kNames{
        std::pair{"COUNT", Aggregate::Count},   std::pair{"SUM", Aggregate::Sum},
        std::pair{"AVG", Aggregate::Average},   std::pair{"STDEV", Aggregate::StDev},
        std::pair{"STDEVP", Aggregate::StDevP}, std::pair{"VAR", Aggregate::Var},
        std::pair{"VARP", Aggregate::VarP},     std::pair{"MIN", Aggregate::Min},
        std::pair{"MAX", Aggregate::Max},       std::pair{"FIRST", Aggregate::First},
        std::pair{"LAST", Aggregate::Last},
    };
    const auto found = std::find_if(kNames.begin(), kNames.end(),
                                    [&](const auto& known) { return name == known.first; });
    return found->second;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

}  // namespace

void StatementParser::noteFunction(const FunctionDef& function, const Expression* argument,
                                   const std::string& sql)
{
    const auto& tables = select_->scope.tables();
    const bool plain =
        !argument ||
        (argument->position >= 0 && !tables.empty() && argument->table == tables[0].use &&
         argument->sql == tables[0].sql + ".c" + std::to_string(argument->position));
    if (!plain) {
        select_->otherFunctions = true;
        return;
    }
    const auto& known = select_->functionSql;
    if (std::find(known.begin(), known.end(), sql) != known.end())
        return;
    select_->functions.push_back(
        {aggregateCalled(function.name), argument ? argument->position : GroupFunction::kRecords});
    select_->functionSql.push_back(sql);
}

/// The further column that an expression is; empty when it is none.
std::string StatementParser::furtherColumn(const Select& select, std::string_view sql,
                                           bool exact) const
{
    const auto placeIn = [&](const std::vector<std::string>& list) {
        return static_cast<std::size_t>(std::find(list.begin(), list.end(), sql) - list.begin());
    };
    const std::string front = select.scope.tables()[0].sql + ".";
    if (const std::size_t n = placeIn(select.groups); n < select.groups.size())
        return front + (exact ? "x" : "k") + std::to_string(n);
    if (const std::size_t n = placeIn(select.functionSql); n < select.functionSql.size())
        return front + "g" + std::to_string(n);
    return {};
}

/// HAVING in further columns, with an AND or a WHERE in front; nothing when it asks for more.
std::optional<std::string> StatementParser::groupConditions(const Select& select) const
{
    std::string made = select.where.empty()
                           ? std::string()
                           : std::string(kWhere) + "(" + select.where.substr(kWhere.size()) + ")";
    if (select.having.empty())
        return made;
    std::string having = select.having.substr(kHaving.size());
    if (having.find('\'') != having.npos)  // a text could look like a function
        return std::nullopt;
    for (const std::string& function : select.functionSql)
        replaceAll(having, function, furtherColumn(select, function, false));
    const std::string front = select.scope.tables()[0].sql + ".";
    if (having.find(front + "c") != having.npos || having.find(front + "e") != having.npos)
        return std::nullopt;
    return made + (made.empty() ? std::string(kWhere) : " AND ") + "(" + having + ")";
}

std::optional<std::string> StatementParser::groupOrder(const Select& select,
                                                       const std::string& order,
                                                       const std::vector<std::string>& keys) const
{
    static const std::string kCollated = std::string(" COLLATE ") + kTextOrder;
    std::string made;
    std::size_t at = std::string_view(" ORDER BY ").size();
    for (const std::string& key : keys) {
        const std::string plain =
            key.ends_with(kCollated) ? key.substr(0, key.size() - kCollated.size()) : key;
        const std::string column = furtherColumn(select, plain, false);
        if (column.empty())
            return std::nullopt;
        at += key.size();
        const bool falls = order.compare(at, kFalls.size(), kFalls) == 0;
        made += (made.empty() ? " ORDER BY " : ", ") + column;
        made += falls ? kFalls : "";
        at += (falls ? kFalls.size() : 0) + std::string_view(", ").size();
    }
    return made;
}

void StatementParser::findGrouping(const Select& select, const std::string& order,
                                   const std::vector<std::string>& keys)
{
    const auto& tables = select.scope.tables();
    const bool grouped = select.aggregated || !select.groups.empty();
    const bool more = select.distinct || select.otherFunctions || made_.tieColumns > 0 ||
                      (select.top && select.percent) ||
                      (select.groups.empty() && !select.having.empty());
    if (!grouped || more || made_.tables.size() != 1 || tables.size() != 1 || !tables[0].source ||
        std::count(select.groupFields.begin(), select.groupFields.end(), -1) > 0)
        return;
    std::string outputs;
    for (std::size_t i = 0; i < select.outputs.size(); ++i) {
        const std::string column =
            furtherColumn(select, select.outputs[i].value.sql, made_.columns[i].exact);
        if (column.empty())
            return;
        outputs += (i ? ", " : "") + column;
    }
    const auto conditions = groupConditions(select);
    const auto sorted = groupOrder(select, order, keys);
    if (!conditions || !sorted)
        return;
    Grouping made{select.groupFields, select.functions,
                  "SELECT " + outputs + " FROM " + select.from + *conditions + *sorted};
    if (select.top)
        made.sql += " LIMIT " + std::to_string(static_cast<std::int64_t>(*select.top));
    made_.grouping = std::move(made);
}

}  // namespace velnor::sql
