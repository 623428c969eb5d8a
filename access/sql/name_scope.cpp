#include "access/sql/name_scope.h"

#include "platform/paths.h"

namespace velnor::sql {
namespace {

int positionOf(const ScopeTable& table, std::string_view column)
{
    for (std::size_t i = 0; i < table.columns.size(); ++i)
        if (paths::sameName(table.columns[i].name, column))
            return static_cast<int>(i);
    return -1;
}

/// A table's name in front of a column: "T", "A.T", or a file's name written without brackets,
/// "T.DBF".
bool fits(const ScopeTable& table, const std::vector<std::string>& parts, std::size_t count)
{
    if (count == 1)
        return table.isCalled("", parts[0]);
    if (count == 2)
        return table.isCalled(parts[0], parts[1]) || table.isCalled("", parts[0] + "." + parts[1]);
    return count == 3 && table.isCalled(parts[0], parts[1] + "." + parts[2]);
}

}  // namespace

bool ScopeTable::isCalled(std::string_view ofDatabase, std::string_view table) const
{
    if (!ofDatabase.empty() && !paths::sameName(database, ofDatabase))
        return false;
    return paths::sameName(name, table) || (!bareName.empty() && paths::sameName(bareName, table));
}

FoundColumn NameScope::findHere(const std::vector<std::string>& parts) const
{
    FoundColumn found;
    for (const ScopeTable& table : tables_) {
        if (parts.size() > 1 && !fits(table, parts, parts.size() - 1))
            continue;
        const int position = positionOf(table, parts.back());
        if (position < 0)
            continue;
        found.twice = found.table != nullptr;
        if (found.twice)
            return found;
        found.table = &table;
        found.position = position;
    }
    return found;
}

FoundColumn NameScope::find(const std::vector<std::string>& parts) const
{
    int level = 0;
    for (const NameScope* scope = this; scope; scope = scope->outer_, ++level) {
        FoundColumn found = scope->findHere(parts);
        found.level = level;
        if (found.table)
            return found;
    }
    return {};
}

std::vector<const ScopeTable*> NameScope::called(const std::vector<std::string>& parts) const
{
    std::vector<const ScopeTable*> all;
    for (const ScopeTable& table : tables_)
        if (parts.empty() || fits(table, parts, parts.size()))
            all.push_back(&table);
    return all;
}

Expression expressionOf(const ScopeTable& table, int position)
{
    const ScopeColumn& column = table.columns[static_cast<std::size_t>(position)];
    const std::string number = std::to_string(position);
    Expression e;
    e.sql = table.sql + ".c" + number;
    e.type = column.type;
    e.name = column.name;
    e.ordered = table.source != nullptr;
    e.field = &column.field;
    if (table.source) {
        e.table = table.use;
        e.position = position;
        const ValueKind kind = valueKindOf(column.field.type);
        const bool loses =
            kind == ValueKind::Currency || kind == ValueKind::Decimal || kind == ValueKind::Date;
        e.exact = loses ? table.sql + ".e" + number : e.sql;
    }
    return e;
}

}  // namespace velnor::sql
