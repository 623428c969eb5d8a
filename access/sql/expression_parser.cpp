// Expressions, by rank: ^, sign, * /, \, Mod, + -, &, comparisons, Not, And, Or Xor Eqv Imp.
#include <cmath>

#include "access/sql/conversion_rules.h"
#include "access/sql/like_pattern.h"
#include "access/sql/statement_parser.h"
#include "access/statement_errors.h"
#include "access/value_text.h"

namespace velnor::sql {
namespace {

Expression conditionOf(std::string sql, std::size_t at)
{
    Expression e;
    e.sql = std::move(sql);
    e.type = SqlType::Boolean;
    e.at = at;
    e.condition = true;
    return e;
}

Expression valueOf(std::string sql, SqlType type, std::size_t at)
{
    Expression e;
    e.sql = std::move(sql);
    e.type = type;
    e.at = at;
    return e;
}

SqlType sumType(SqlType a, SqlType b, bool minus)
{
    if (a == SqlType::Date || b == SqlType::Date)
        return minus && a == b ? SqlType::Real : SqlType::Date;
    if (a == SqlType::Real || b == SqlType::Real)
        return SqlType::Real;
    return a == SqlType::Currency || b == SqlType::Currency ? SqlType::Currency : SqlType::Integer;
}

bool isText(const Expression& e)
{
    return e.type == SqlType::Text && !e.condition;
}

bool isTextOrNull(const Expression& e)
{
    return isText(e) || e.type == SqlType::Null;
}

std::string inBrackets(const std::string& sql)
{
    return "(" + sql + ")";
}

}  // namespace

void StatementParser::needTruth(const Expression& e) const
{
    if (e.type == SqlType::Text || e.type == SqlType::Bytes)
        mismatch("a condition is expected", e.at);
}

void StatementParser::needNumber(Expression& e)
{
    if (!toNumber(e))
        mismatch("a number is expected", e.at);
}

Expression StatementParser::parseEither()
{
    Expression left = parseBoth();
    for (bool more = true; more;) {
        const std::string word = token().kind == TokenKind::Word ? capitals(token().text) : "";
        more = word == "OR" || word == "XOR" || word == "EQV" || word == "IMP";
        if (!more)
            break;
        ++at_;
        needTruth(left);
        std::string made = left.sql;
        if (word == "OR") {  // a long chain stays flat
            do {
                const Expression right = parseBoth();
                needTruth(right);
                made += " OR " + right.sql;
            } while (takeWord("OR"));
        } else {
            const Expression right = parseBoth();
            needTruth(right);
            const char* op = word == "XOR" ? ") <> (NOT " : word == "EQV" ? ") = (NOT " : ") OR (";
            made = "(NOT " + made + op + right.sql + ")";
        }
        left = conditionOf(inBrackets(made), left.at);
    }
    return left;
}

Expression StatementParser::parseBoth()
{
    Expression left = parseNot();
    if (!atWord("AND"))
        return left;
    needTruth(left);
    std::string made = left.sql;
    while (takeWord("AND")) {
        const Expression right = parseNot();
        needTruth(right);
        made += " AND " + right.sql;
    }
    return conditionOf(inBrackets(made), left.at);
}

Expression StatementParser::parseNot()
{
    if (!atWord("NOT"))
        return parseComparison();
    const std::size_t at = token().at;
    enter();
    ++at_;
    const Expression e = parseNot();
    leave();
    needTruth(e);
    return conditionOf("(NOT " + e.sql + ")", at);
}

Expression StatementParser::compare(Expression a, const std::string& op, Expression b)
{
    a = asValue(std::move(a));
    b = asValue(std::move(b));
    const SqlType first = a.type, second = b.type;
    if (!meet(a, b))
        mismatch(std::string(typeWord(first)) + " is compared with " + typeWord(second),
                 a.textConstant ? a.at : b.at);
    return conditionOf(inBrackets(comparison(a, op, b)), a.at);
}

Expression StatementParser::parseComparison()
{
    Expression left = parseJoinText();
    for (;;) {
        const bool sign = atSign("=") || atSign("<>") || atSign("<") || atSign(">") ||
                          atSign("<=") || atSign(">=");
        if (sign) {
            const std::string op = token().text;
            ++at_;
            left = compare(std::move(left), op, parseJoinText());
        } else if (atWord("IS")) {
            left = parseIsNull(std::move(left));
        } else {
            const Token& after = tokens_[atWord("NOT") ? at_ + 1 : at_];
            const bool negated = atWord("NOT");
            const bool like = after.isWord("LIKE"), in = after.isWord("IN"),
                       between = after.isWord("BETWEEN");
            if (!like && !in && !between)
                return left;
            at_ += negated ? 2 : 1;
            left = like ? parseLike(std::move(left), negated)
                   : in ? parseIn(std::move(left), negated)
                        : parseBetween(std::move(left), negated);
        }
    }
}

Expression StatementParser::parseIsNull(Expression value)
{
    needWord("IS");
    const bool negated = takeWord("NOT");
    needWord("NULL");
    value = asValue(std::move(value));
    return conditionOf("(" + value.sql + (negated ? " IS NOT NULL)" : " IS NULL)"), value.at);
}

Expression StatementParser::parseLike(Expression value, bool negated)
{
    const Expression pattern = parseJoinText();
    if (pattern.textConstant && !isPattern(pattern.constant))
        syntaxAt("a \"[\" without its \"]\" in a pattern", pattern.at);
    const std::string made = "v_like(" + asText(value) + ", " + asText(pattern) + ")";
    return conditionOf(negated ? "(NOT " + made + ")" : made, value.at);
}

Expression StatementParser::parseBetween(Expression value, bool negated)
{
    Expression low = parseJoinText();
    needWord("AND");
    Expression high = parseJoinText();
    const Expression from = compare(value, ">=", std::move(low));
    const Expression to = compare(value, "<=", std::move(high));
    const std::string made = "(" + from.sql + " AND " + to.sql + ")";
    return conditionOf(negated ? "(NOT " + made + ")" : made, value.at);
}

Expression StatementParser::parseIn(Expression value, bool negated)
{
    value = asValue(std::move(value));
    enter();
    needSign("(");
    std::string list;
    SqlType type = SqlType::Unknown;
    if (atSelect()) {
        const Query query = parseQuery(&select_->scope);
        if (query.columns.size() != 1)
            syntaxAt("a subquery behind IN gives one field", value.at);
        type = query.columns[0].type;
        if (!comparable(value.type, type))
            mismatch(std::string(typeWord(value.type)) + " is compared with " + typeWord(type),
                     value.at);
        list = query.sql;
    } else {
        do {
            Expression item = asValue(parseExpression());
            if (!meet(value, item))
                mismatch(std::string(typeWord(value.type)) + " is compared with " +
                             typeWord(item.type),
                         item.at);
            list += (list.empty() ? "" : ", ") + item.sql;
        } while (takeSign(","));
    }
    needSign(")");
    leave();
    const std::string made = "(" + sortKey(value) + (negated ? " NOT IN (" : " IN (") + list + "))";
    return conditionOf(made, value.at);
}

Expression StatementParser::parseJoinText()
{
    Expression left = parseSum();
    if (!atSign("&"))
        return left;
    // Null counts as an empty text here, unless all of it is Null.
    std::string made = asText(left);
    while (takeSign("&"))
        made += ", " + asText(parseSum());
    return valueOf("v_join(" + made + ")", SqlType::Text, left.at);
}

Expression StatementParser::parseSum()
{
    Expression left = parseModulo();
    while (atSign("+") || atSign("-")) {
        const bool minus = atSign("-");
        ++at_;
        Expression right = parseModulo();
        left = asValue(std::move(left));
        right = asValue(std::move(right));
        const bool texts = isText(left) || isText(right);
        if (!minus && texts && isTextOrNull(left) && isTextOrNull(right)) {
            left = valueOf("(" + left.sql + " || " + right.sql + ")", SqlType::Text, left.at);
            continue;
        }
        needNumber(left);
        needNumber(right);
        left = valueOf("(" + left.sql + (minus ? " - " : " + ") + right.sql + ")",
                       sumType(left.type, right.type, minus), left.at);
    }
    return left;
}

Expression StatementParser::parseModulo()
{
    Expression left = parseWholeDivision();
    while (takeWord("MOD")) {
        Expression right = parseWholeDivision();
        needNumber(left);
        needNumber(right);
        left = valueOf("v_mod(" + left.sql + ", " + right.sql + ")", SqlType::Integer, left.at);
    }
    return left;
}

Expression StatementParser::parseWholeDivision()
{
    Expression left = parseProduct();
    while (takeSign("\\")) {
        Expression right = parseProduct();
        needNumber(left);
        needNumber(right);
        left =
            valueOf("v_wholediv(" + left.sql + ", " + right.sql + ")", SqlType::Integer, left.at);
    }
    return left;
}

Expression StatementParser::parseProduct()
{
    Expression left = parseSigned();
    while (atSign("*") || atSign("/")) {
        const bool division = atSign("/");
        ++at_;
        Expression right = parseSigned();
        needNumber(left);
        needNumber(right);
        const auto whole = [](SqlType t) { return t == SqlType::Integer || t == SqlType::Boolean; };
        const bool amount = left.type != SqlType::Real && right.type != SqlType::Real &&
                            (left.type == SqlType::Currency || right.type == SqlType::Currency);
        const SqlType type = division                                ? SqlType::Real
                             : whole(left.type) && whole(right.type) ? SqlType::Integer
                             : amount                                ? SqlType::Currency
                                                                     : SqlType::Real;
        left = valueOf("(" + left.sql + (division ? " * 1.0 / " : " * ") + right.sql + ")", type,
                       left.at);
    }
    return left;
}

Expression StatementParser::parseSigned()
{
    const std::size_t at = token().at;
    if (!atSign("-") && !atSign("+"))
        return parsePower();
    const bool minus = atSign("-");
    enter();
    ++at_;
    Expression e = parseSigned();
    leave();
    needNumber(e);
    if (!minus)
        return e;
    return valueOf("(-" + e.sql + ")", e.type == SqlType::Boolean ? SqlType::Integer : e.type, at);
}

Expression StatementParser::parsePower()
{
    Expression left = parsePrimary();
    while (takeSign("^")) {
        Expression right = parseSigned();
        needNumber(left);
        needNumber(right);
        left = valueOf("v_power(" + left.sql + ", " + right.sql + ")", SqlType::Real, left.at);
    }
    return left;
}

Expression StatementParser::parsePrimary()
{
    switch (token().kind) {
    case TokenKind::Number:
    case TokenKind::Text:
    case TokenKind::Date:
        return parseConstant();
    case TokenKind::Word:
    case TokenKind::Name:
        return parseName();
    case TokenKind::Sign:
        if (atSign("("))
            return parseParenthesis();
        break;
    case TokenKind::End:
        break;
    }
    syntax("a value is missing");
}

Expression StatementParser::parseConstant()
{
    const Token& constant = token();
    ++at_;
    if (constant.kind == TokenKind::Text) {
        Expression e = valueOf(quoted(constant.text), SqlType::Text, constant.at);
        e.textConstant = true;
        e.constant = constant.text;
        return e;
    }
    if (constant.kind == TokenKind::Date) {
        const auto date = parseDate(constant.text);
        if (!date)
            syntaxAt("this is no date", constant.at);
        return valueOf(numberSql(straightDate(*date)), SqlType::Date, constant.at);
    }
    const auto number = parseReal(constant.text);
    if (!number || !std::isfinite(*number))
        syntaxAt("this is no number", constant.at);
    const bool whole = constant.text.find_first_of(".eE") == std::string::npos;
    const auto exact = whole ? integerOf(ValueView::text(constant.text)) : std::nullopt;
    if (exact)
        return valueOf(std::to_string(*exact), SqlType::Integer, constant.at);
    return valueOf(numberSql(*number), SqlType::Real, constant.at);
}

Expression StatementParser::scalarOf(const Query& query, std::size_t at) const
{
    if (query.columns.size() != 1)
        fail(EngineErrorNumber::SyntaxError, "Syntax error: a subquery gives one field here",
             statement_, at);
    return valueOf("(" + query.sql + ")", query.columns[0].type, at);
}

Expression StatementParser::parseParenthesis()
{
    const std::size_t at = token().at;
    enter();
    needSign("(");
    Expression e;
    if (atSelect()) {
        e = scalarOf(parseQuery(select_ ? &select_->scope : nullptr), at);
    } else {
        e = parseExpression();
        e.exact.clear();
    }
    needSign(")");
    leave();
    return e;
}

Expression StatementParser::parseName()
{
    const Token& first = token();
    if (first.kind == TokenKind::Word) {
        if (tokens_[at_ + 1].isSign("(")) {
            const std::string name = first.text;
            const std::size_t at = first.at;
            ++at_;
            return parseCall(name, at);
        }
        const bool truth = atWord("TRUE") || atWord("YES") || atWord("ON");
        const bool alone = !tokens_[at_ + 1].isSign(".") && !tokens_[at_ + 1].isSign("!");
        if (alone && (atWord("TRUE") || atWord("FALSE") || atWord("NULL"))) {
            const SqlType type = atWord("NULL") ? SqlType::Null : SqlType::Boolean;
            ++at_;
            return valueOf(type == SqlType::Null ? "NULL" : truth ? "-1" : "0", type, first.at);
        }
        if (isReservedWord(first.text))
            syntax("a value is missing");
    }
    const std::vector<std::string> parts = takeNameParts();
    const FoundColumn found = select_ ? select_->scope.find(parts) : FoundColumn{};
    const std::string& name = parts.back();
    if (found.twice)
        fail(kAmbiguousField, "The field '" + name + "' stands in more than one table of FROM",
             statement_, first.at);
    if (!found.table)
        fail(EngineErrorNumber::UnknownField, "Unknown field '" + name + "'", statement_, first.at);
    Expression e = expressionOf(*found.table, found.position);
    e.at = first.at;
    if (found.level == 0 && inAggregate_ == 0)
        select_->named.push_back({e.sql, e.name, e.at});
    return e;
}

}  // namespace velnor::sql
