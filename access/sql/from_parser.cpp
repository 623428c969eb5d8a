// FROM: tables, subqueries and how they are joined.
#include "access/sql/conversion_rules.h"
#include "access/sql/statement_parser.h"
#include "platform/paths.h"

namespace velnor::sql {

void StatementParser::readFrom(Select& select)
{
    inFrom_ = true;
    select.from = readJoined(select);
    while (takeSign(","))
        select.from += ", " + readJoined(select);
    inFrom_ = false;
}

std::string StatementParser::readJoined(Select& select)
{
    std::string made = readFromItem(select);
    for (;;) {
        std::string kind = " JOIN ";
        const bool outer = atWord("LEFT") || atWord("RIGHT") || atWord("FULL");
        if (outer) {
            kind = " " + capitals(token().text) + " JOIN ";
            ++at_;
            takeWord("OUTER");
        } else if (takeWord("CROSS")) {
            needWord("JOIN");
            made += ", " + readFromItem(select);
            continue;
        } else if (!takeWord("INNER") && !atWord("JOIN")) {
            return made;
        }
        needWord("JOIN");
        made += kind + readFromItem(select);
        needWord("ON");
        const Expression on = parseExpression();
        needTruth(on);
        made += " ON " + asCondition(on);
    }
}

std::string StatementParser::readFromItem(Select& select)
{
    if (!atSign("("))
        return readTable(select);
    if (tokens_[at_ + 1].isWord("SELECT"))
        return readSubquery(select);
    enter();
    needSign("(");
    std::string made = readJoined(select);
    needSign(")");
    leave();
    // Joins go from left to right by themselves.
    const bool leftmost = select.from.empty() && tokens_[at_].kind == TokenKind::Word;
    return leftmost ? made : "(" + made + ")";
}

std::string StatementParser::takeAlias()
{
    const bool as = takeWord("AS");
    const bool name = token().kind == TokenKind::Name ||
                      (token().kind == TokenKind::Word && !isReservedWord(token().text));
    if (!name && as)
        syntax("a name is missing");
    return name ? tokens_[at_++].text : std::string();
}

std::string StatementParser::readSubquery(Select& select)
{
    const std::size_t at = token().at;
    enter();
    needSign("(");
    Query query = parseQuery(nullptr);
    needSign(")");
    leave();
    ScopeTable table;
    table.sql = "q" + std::to_string(subqueries_++);
    table.name = takeAlias();
    if (table.name.empty())
        syntaxAt("a subquery needs a name: (...) AS name", at);
    table.columns = std::move(query.columns);
    std::string made = "(" + query.sql + ") AS " + table.sql;
    select.scope.add(std::move(table));
    return made;
}

std::string StatementParser::readTable(Select& select)
{
    const Token& first = token();
    if (first.kind == TokenKind::Word && isReservedWord(first.text))
        syntax("the name of a table is missing");
    const std::size_t at = first.at;
    const std::vector<std::string> parts = takeNameParts();
    ScopeTable table;
    std::string name = parts[0];
    for (std::size_t i = 1; i < parts.size(); ++i)
        name += "." + parts[i];
    if (parts.size() > 1 && tables_.hasDatabase(parts[0])) {
        table.database = parts[0];
        name = name.substr(parts[0].size() + 1);
    }
    table.source = tables_.find(table.database, name);
    if (!table.source)
        fail(EngineErrorNumber::TableNotFound, "There is no table '" + name + "'", statement_, at);
    table.use = static_cast<int>(made_.tables.size());
    made_.tables.push_back(table.source);
    table.sql = "a" + std::to_string(table.use);
    for (const FieldDef& field : table.source->layout().fields)
        table.columns.push_back({field.name, sqlTypeOf(field.type), field});
    std::string made = "v" + std::to_string(table.use) + " AS " + table.sql;
    const std::string alias = takeAlias();
    table.name = alias.empty() ? name : alias;
    if (alias.empty())
        table.bareName = table.source->layout().name;
    select.scope.add(std::move(table));
    return made;
}

}  // namespace velnor::sql
