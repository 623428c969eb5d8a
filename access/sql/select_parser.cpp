// SELECT statements: the order of their parts, outputs, groups, order, TOP and UNION.
#include <algorithm>
#include <cmath>

#include "access/sql/conversion_rules.h"
#include "access/sql/statement_parser.h"
#include "access/statement_errors.h"
#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::sql {
namespace {

constexpr int kTextSize = 255;

FieldDef fieldOfType(SqlType type)
{
    FieldDef field;
    switch (type) {
    case SqlType::Boolean:
        field.type = FieldType::Boolean;
        field.size = 1;
        break;
    case SqlType::Integer:
        field.type = FieldType::Long;
        field.size = 4;
        break;
    case SqlType::Real:
        field.type = FieldType::Double;
        field.size = 8;
        break;
    case SqlType::Currency:
        field.type = FieldType::Currency;
        field.size = 8;
        break;
    case SqlType::Date:
        field.type = FieldType::Date;
        field.size = 8;
        break;
    case SqlType::Bytes:
        field.type = FieldType::LongBinary;
        break;
    default:
        field.type = FieldType::Text;
        field.size = kTextSize;
    }
    return field;
}

/// A field of a result: what concerns writing is left out.
FieldDef resultField(const Expression& e)
{
    FieldDef field = e.field ? *e.field : fieldOfType(e.type);
    field.required = field.autonumber = false;
    field.defaultValue.clear();
    field.validationRule.clear();
    field.validationText.clear();
    return field;
}

/// What the columns of two statements of a UNION have in common.
void widen(ScopeColumn& column, const ScopeColumn& other)
{
    if (column.type == other.type || other.type == SqlType::Null)
        return;
    const bool numbers = isNumber(column.type) && isNumber(other.type);
    const SqlType type = column.type == SqlType::Null ? other.type
                         : numbers                    ? SqlType::Real
                                                      : SqlType::Unknown;
    const std::string name = column.name;
    column.field = column.type == SqlType::Null ? other.field : fieldOfType(type);
    column.type = type;
    column.field.name = name;
}

bool endsOrderItem(const Token& token)
{
    return token.kind == TokenKind::End || token.isSign(",") || token.isSign(")") ||
           token.isSign(";") || token.isWord("ASC") || token.isWord("DESC");
}

}  // namespace

// The whole statement

void StatementParser::parseTop()
{
    if (!atSelect())
        syntax("a statement begins with SELECT");
    Select select(nullptr);
    parseSelectInto(select);
    if (atWord("UNION")) {
        const Query query = finishUnion(select);
        made_.sql = query.sql;
        for (const ScopeColumn& column : query.columns)
            made_.columns.push_back({column.field, false});
        return;
    }
    std::vector<std::string> keys;
    select_ = &select;
    const std::string order = readOrder(select, &keys);
    select_ = nullptr;
    finishTop(select, order, keys);
}

void StatementParser::finishTop(Select& select, const std::string& order,
                                const std::vector<std::string>& keys)
{
    for (const Output& output : select.outputs) {
        OutputColumn column{resultField(output.value), false};
        column.field.name = output.name;
        column.exact = !select.distinct && !output.value.exact.empty() &&
                       output.value.exact != output.value.sql;
        made_.columns.push_back(std::move(column));
    }
    std::string more;
    const bool ties = select.top && !keys.empty() && !select.distinct;
    if (ties) {
        for (const std::string& key : keys)
            more += ", " + key;
        made_.tieColumns = static_cast<int>(keys.size());
        if (select.percent) {
            made_.topPercent = select.top;
            made_.countSql = "SELECT COUNT(*) FROM (" + bodyOf(select, false, "") + ")";
        } else {
            made_.top = static_cast<std::int64_t>(*select.top);
        }
    }
    const std::string body = bodyOf(select, true, more);
    made_.sql = ties ? body + order : limited(select, body, order);
    putRecordsSql(select, more, order);
    findGrouping(select, order, keys);
}

/// One table and its fields as they are: the names of its records are enough.
void StatementParser::putRecordsSql(const Select& select, const std::string& more,
                                    const std::string& order)
{
    const auto& tables = select.scope.tables();
    if (tables.size() != 1 || !tables[0].source || select.distinct || select.aggregated ||
        !select.groups.empty())
        return;
    for (const Output& output : select.outputs) {
        if (output.value.position < 0 || output.value.table != tables[0].use) {
            made_.fieldOfColumn.clear();
            return;
        }
        made_.fieldOfColumn.push_back(output.value.position);
    }
    const std::string body =
        "SELECT " + tables[0].sql + ".rowid" + more + " FROM " + select.from + select.where;
    made_.recordsSql = made_.tieColumns ? body + order : limited(select, body, order);
}

StatementParser::Query StatementParser::parseQuery(const NameScope* outer)
{
    Select* const outerSelect = select_;
    const bool allowed = aggregatesAllowed_;
    const int inside = inAggregate_;
    const bool inFrom = inFrom_;
    inAggregate_ = 0;
    inFrom_ = false;
    Select select(outer);
    parseSelectInto(select);
    Query query;
    if (atWord("UNION")) {
        query = finishUnion(select);
    } else {
        select_ = &select;
        const std::string order = readOrder(select, nullptr);
        const std::string body = bodyOf(select, false, "");
        query.sql = limited(select, body, order);
        for (const Output& output : select.outputs) {
            ScopeColumn column{output.name, output.value.type, resultField(output.value)};
            column.field.name = output.name;
            query.columns.push_back(std::move(column));
        }
    }
    select_ = outerSelect;
    aggregatesAllowed_ = allowed;
    inAggregate_ = inside;
    inFrom_ = inFrom;
    return query;
}

StatementParser::Query StatementParser::finishUnion(Select& first)
{
    const auto part = [&](Select& select) {
        Query query;
        const std::string body = bodyOf(select, false, "");
        query.sql = select.top ? "SELECT * FROM (" + limited(select, body, "") + ")" : body;
        for (const Output& output : select.outputs) {
            ScopeColumn column{output.name, output.value.type, resultField(output.value)};
            column.field.name = output.name;
            query.columns.push_back(std::move(column));
        }
        return query;
    };
    Query all = part(first);
    std::size_t parts = 1;
    while (atWord("UNION")) {
        const std::size_t at = token().at;
        ++at_;
        const bool keepEqual = takeWord("ALL");
        if (++parts > 100)
            syntax("too many statements in one UNION");
        Select select(nullptr);
        parseSelectInto(select);
        const Query next = part(select);
        if (next.columns.size() != all.columns.size())
            fail(kUnionWidths, "The statements of a UNION have different numbers of fields",
                 statement_, at);
        for (std::size_t i = 0; i < all.columns.size(); ++i)
            widen(all.columns[i], next.columns[i]);
        all.sql += (keepEqual ? " UNION ALL " : " UNION ") + next.sql;
    }
    if (!takeWord("ORDER"))
        return all;
    needWord("BY");
    std::string order;
    do {
        const std::size_t at = token().at;
        std::size_t n = 0;
        if (token().kind == TokenKind::Number) {
            n = static_cast<std::size_t>(std::strtoul(token().text.c_str(), nullptr, 10));
            ++at_;
        } else {
            const std::string name = takeNameParts().back();
            while (n < all.columns.size() && !paths::sameName(all.columns[n].name, name))
                ++n;
            n = n < all.columns.size() ? n + 1 : 0;
        }
        if (n == 0 || n > all.columns.size())
            fail(EngineErrorNumber::UnknownField, "A UNION is ordered by its fields alone",
                 statement_, at);
        order += (order.empty() ? " ORDER BY " : ", ") + std::to_string(n);
        if (takeWord("DESC"))
            order += " DESC";
        else
            takeWord("ASC");
    } while (takeSign(","));
    all.sql += order;
    return all;
}

// One SELECT

void StatementParser::parseSelectInto(Select& select)
{
    enter();
    needWord("SELECT");
    readPrefix(select);
    const std::size_t outputs = at_;
    findFrom();
    const std::size_t from = at_;
    select_ = &select;
    aggregatesAllowed_ = false;
    if (takeWord("FROM"))
        readFrom(select);
    const std::size_t afterFrom = at_;
    at_ = outputs;
    aggregatesAllowed_ = true;
    readOutputs(select);
    if (at_ != from)
        syntax("an operator is missing");
    at_ = afterFrom;
    aggregatesAllowed_ = false;
    if (takeWord("WHERE")) {
        const Expression where = parseExpression();
        needTruth(where);
        select.where = " WHERE " + asCondition(where);
    }
    readGroups(select);
    aggregatesAllowed_ = true;
    if (takeWord("HAVING")) {
        const Expression having = parseExpression();
        needTruth(having);
        select.having = " HAVING " + asCondition(having);
    }
    checkGroups(select);
    groupByRecords(select);
    leave();
}

void StatementParser::readPrefix(Select& select)
{
    select.distinct = takeWord("DISTINCT");
    select.distinctRow = !select.distinct && takeWord("DISTINCTROW");
    if (!select.distinct && !select.distinctRow)
        takeWord("ALL");
    if (!atWord("TOP") || tokens_[at_ + 1].kind != TokenKind::Number)
        return;
    ++at_;
    const auto number = parseReal(token().text);
    ++at_;
    select.percent = takeWord("PERCENT");
    if (!number || *number < 0 || *number > (select.percent ? 100 : 9e15) ||
        (!select.percent && std::trunc(*number) != *number))
        syntaxAt("TOP takes a whole number, or a percentage", tokens_[at_ - 1].at);
    select.top = number;
}

/// Moves to the FROM of this SELECT, or to what stands in its place.
void StatementParser::findFrom()
{
    for (int depth = 0; token().kind != TokenKind::End; ++at_) {
        if (depth == 0 &&
            (atWord("FROM") || atWord("WHERE") || atWord("ORDER") || atWord("GROUP") ||
             atWord("UNION") || atWord("HAVING") || atSign(")") || atSign(";")))
            return;
        depth += atSign("(") - atSign(")");
    }
}

void StatementParser::readOutputs(Select& select)
{
    do {
        addOutput(select);
    } while (takeSign(","));
    nameOutputs(select);
}

void StatementParser::addOutput(Select& select)
{
    const std::size_t begin = at_;
    if (takeSign("*")) {
        addStar(select, {}, tokens_[begin].at);
        return;
    }
    const bool name = token().kind == TokenKind::Name ||
                      (token().kind == TokenKind::Word && !tokens_[at_ + 1].isSign("("));
    if (name) {
        const std::vector<std::string> parts = takeNameParts();
        if ((takeSign(".") || takeSign("!")) && takeSign("*")) {
            addStar(select, parts, tokens_[begin].at);
            return;
        }
        at_ = begin;
    }
    Output output{{}, {}, select.named.size(), 0};
    output.value = asValue(parseExpression());
    output.endColumn = select.named.size();
    const auto first = tokens_.begin() + static_cast<std::ptrdiff_t>(begin);
    output.asks = std::any_of(first, tokens_.begin() + static_cast<std::ptrdiff_t>(at_),
                              [](const Token& t) { return t.isWord("SELECT"); });
    output.name = takeAlias();
    select.outputs.push_back(std::move(output));
}

void StatementParser::addStar(Select& select, const std::vector<std::string>& name, std::size_t at)
{
    const auto tables = select.scope.called(name);
    if (tables.empty())
        fail(EngineErrorNumber::UnknownField,
             name.empty() ? "* needs a table in FROM" : "Unknown table in front of *", statement_,
             at);
    for (const ScopeTable* table : tables)
        for (std::size_t i = 0; i < table->columns.size(); ++i) {
            Output output{expressionOf(*table, static_cast<int>(i)), {}, select.named.size(), 0};
            output.value.at = at;
            select.named.push_back({output.value.sql, output.value.name, at});
            output.endColumn = select.named.size();
            select.outputs.push_back(std::move(output));
        }
}

/// Names that people did not give: those of fields, with their table when they come twice, or
/// Expr1000 ...
void StatementParser::nameOutputs(Select& select) const
{
    int number = 1000;
    for (Output& output : select.outputs) {
        if (!output.name.empty())
            continue;
        output.name = output.value.name;
        if (output.name.empty())
            output.name = "Expr" + std::to_string(number++);
    }
    std::vector<std::string> names;
    for (Output& output : select.outputs)
        names.push_back(paths::foldName(output.name));
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (select.outputs[i].value.name.empty() ||
            std::count(names.begin(), names.end(), names[i]) < 2)
            continue;
        const std::string& sql = select.outputs[i].value.sql;
        for (const ScopeTable& table : select.scope.tables())
            if (sql.substr(0, table.sql.size() + 1) == table.sql + ".")
                select.outputs[i].name = table.name + "." + select.outputs[i].name;
    }
}

void StatementParser::readGroups(Select& select)
{
    if (!takeWord("GROUP"))
        return;
    needWord("BY");
    do {
        const Expression e = asValue(parseExpression());
        select.groups.push_back(e.sql);
        const std::string field = "a" + std::to_string(e.table) + ".c" + std::to_string(e.position);
        select.groupFields.push_back(e.sql == field ? e.position : -1);
        select.groupBy += (select.groupBy.empty() ? " GROUP BY " : ", ") + sortKey(e);
    } while (takeSign(","));
}

void StatementParser::checkGroups(const Select& select) const
{
    if (!select.aggregated && select.groups.empty())
        return;
    const auto grouped = [&](const std::string& sql) {
        return std::find(select.groups.begin(), select.groups.end(), sql) != select.groups.end();
    };
    for (const Output& output : select.outputs) {
        if (grouped(output.value.sql))
            continue;
        for (std::size_t i = output.firstColumn; i < output.endColumn; ++i)
            if (!grouped(select.named[i].sql))
                fail(kNotInGroup,
                     "'" + select.named[i].name +
                         "' is neither in GROUP BY nor in a function like Sum or Count",
                     statement_, select.named[i].at);
    }
}

/// DISTINCTROW over a join: a record of the tables that give fields comes once, however many
/// records of the others it meets. Where every table gives one, nothing comes twice.
void StatementParser::groupByRecords(Select& select) const
{
    const bool grouped = select.aggregated || !select.groups.empty() || !select.having.empty();
    if (!select.distinctRow || grouped)
        return;
    const auto gives = [&](const std::string& front) {
        for (const Output& output : select.outputs)
            for (std::size_t i = output.firstColumn; i < output.endColumn; ++i)
                if (select.named[i].sql.starts_with(front))
                    return true;
        return false;
    };
    for (const Output& output : select.outputs)
        if (output.asks)  // it may depend on the records of any table
            return;
    std::size_t giving = 0;
    std::string keys;
    const auto add = [&](const std::string& key) { keys += (keys.empty() ? "" : ", ") + key; };
    for (const ScopeTable& table : select.scope.tables()) {
        const std::string front = table.sql + ".";
        if (!gives(front))
            continue;
        ++giving;
        if (table.source)
            add(front + "rowid");
        for (std::size_t i = 0; !table.source && i < table.columns.size(); ++i)
            add(expressionOf(table, static_cast<int>(i)).sql + " COLLATE BINARY");
    }
    if (giving > 0 && giving < select.scope.tables().size())
        select.groupBy = " GROUP BY " + keys;
}

int StatementParser::outputCalled(const Select& select, const std::string& name) const
{
    for (std::size_t i = 0; i < select.outputs.size(); ++i)
        if (paths::sameName(select.outputs[i].name, name))
            return static_cast<int>(i);
    return -1;
}

std::string StatementParser::orderItem(Select& select)
{
    const Token& first = token();
    const bool alone = endsOrderItem(tokens_[at_ + 1]);
    if (first.kind == TokenKind::Number && alone) {
        const auto n = parseReal(first.text);
        if (!n || *n < 1 || *n > static_cast<double>(select.outputs.size()) || std::trunc(*n) != *n)
            syntaxAt("ORDER BY has no field of this number", first.at);
        ++at_;
        return sortKey(select.outputs[static_cast<std::size_t>(*n) - 1].value);
    }
    const bool name = first.kind == TokenKind::Name || first.kind == TokenKind::Word;
    if (name && alone && !select.scope.find({first.text}).table)
        if (const int n = outputCalled(select, first.text); n >= 0) {
            ++at_;
            return sortKey(select.outputs[static_cast<std::size_t>(n)].value);
        }
    const Expression e = asValue(parseExpression());
    const bool given = std::any_of(select.outputs.begin(), select.outputs.end(),
                                   [&](const Output& o) { return o.value.sql == e.sql; });
    if (select.distinct && !given)
        fail(kOrderNotInDistinct, "With DISTINCT, ORDER BY takes only fields that are selected",
             statement_, first.at);
    return sortKey(e);
}

std::string StatementParser::readOrder(Select& select, std::vector<std::string>* keys)
{
    std::string order;
    if (!takeWord("ORDER"))
        return order;
    needWord("BY");
    aggregatesAllowed_ = true;
    do {
        const std::string key = orderItem(select);
        if (keys)
            keys->push_back(key);
        order += (order.empty() ? " ORDER BY " : ", ") + key;
        if (takeWord("DESC"))
            order += " DESC";
        else
            takeWord("ASC");
    } while (takeSign(","));
    return order;
}

std::string StatementParser::bodyOf(const Select& select, bool exact, const std::string& more) const
{
    std::string made = select.distinct ? "SELECT DISTINCT " : "SELECT ";
    for (std::size_t i = 0; i < select.outputs.size(); ++i) {
        const Expression& e = select.outputs[i].value;
        made += i ? ", " : "";
        made += select.distinct ? sortKey(e) : exact && !e.exact.empty() ? e.exact : e.sql;
        if (!exact)
            made += " AS c" + std::to_string(i);
    }
    made += more;
    if (!select.from.empty())
        made += " FROM " + select.from;
    return made + select.where + select.groupBy + select.having;
}

/// With TOP: so many records, or so many in a hundred.
std::string StatementParser::limited(const Select& select, const std::string& body,
                                     const std::string& order) const
{
    if (!select.top)
        return body + order;
    if (!select.percent)
        return body + order + " LIMIT " + std::to_string(static_cast<std::int64_t>(*select.top));
    return body + order + " LIMIT (SELECT CAST(COUNT(*) * " + numberSql(*select.top) +
           " / 100 + 0.9999999 AS INTEGER) FROM (" + bodyOf(select, false, "") + "))";
}

}  // namespace velnor::sql
