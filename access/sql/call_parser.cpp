// Calls of functions in a statement.
#include "access/sql/conversion_rules.h"
#include "access/sql/statement_parser.h"
#include "access/statement_errors.h"

namespace velnor::sql {
namespace {

SqlType resultType(ResultRule rule, const std::vector<Expression>& arguments)
{
    switch (rule) {
    case ResultRule::Boolean:
        return SqlType::Boolean;
    case ResultRule::Integer:
        return SqlType::Integer;
    case ResultRule::Real:
        return SqlType::Real;
    case ResultRule::Currency:
        return SqlType::Currency;
    case ResultRule::Date:
        return SqlType::Date;
    case ResultRule::Text:
        return SqlType::Text;
    case ResultRule::OfNumber:
        if (!arguments.empty() && arguments[0].type != SqlType::Boolean)
            return arguments[0].type;
        return SqlType::Integer;
    case ResultRule::OfFirst:
        break;
    }
    return arguments.empty() ? SqlType::Unknown : arguments[0].type;
}

/// What several values have in common.
SqlType commonType(SqlType a, SqlType b)
{
    if (a == b || b == SqlType::Null)
        return a;
    if (a == SqlType::Null)
        return b;
    return isNumber(a) && isNumber(b) ? SqlType::Real : SqlType::Unknown;
}

}  // namespace

void StatementParser::wrongCount(std::string_view name, std::size_t at) const
{
    fail(EngineErrorNumber::SyntaxError, "Wrong number of arguments of " + std::string(name) + "()",
         statement_, at);
}

std::vector<Expression> StatementParser::takeArguments()
{
    std::vector<Expression> arguments;
    enter();
    needSign("(");
    if (!atSign(")"))
        do {
            arguments.push_back(parseExpression());
        } while (takeSign(","));
    needSign(")");
    leave();
    return arguments;
}

Expression StatementParser::parseCall(const std::string& written, std::size_t at)
{
    const std::string name = capitals(written);
    if (name == "EXISTS") {
        enter();
        needSign("(");
        if (!atSelect())
            syntax("a subquery is missing");
        Expression e;
        e.sql = "EXISTS (" + parseQuery(select_ ? &select_->scope : nullptr).sql + ")";
        e.type = SqlType::Boolean;
        e.condition = true;
        e.at = at;
        needSign(")");
        leave();
        return e;
    }
    if (name == "IIF" || name == "SWITCH" || name == "CHOOSE")
        return chooseOf(name, takeArguments(), at);
    const FunctionDef* function = findFunction(name);
    if (!function) {
        if (isReservedWord(name))
            syntaxAt("a value is missing", at);
        fail(kUnknownFunction, "Unknown function '" + written + "'", statement_, at);
    }
    return function->aggregate ? aggregateOf(*function, at)
                               : callOf(*function, takeArguments(), at);
}

Expression StatementParser::callOf(const FunctionDef& function, std::vector<Expression> arguments,
                                   std::size_t at)
{
    if (arguments.size() < static_cast<std::size_t>(function.least) ||
        arguments.size() > function.arguments.size())
        wrongCount(function.name, at);
    std::string list;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        Expression& e = arguments[i];
        const char kind = function.arguments[i];
        if (kind == 'n')
            needNumber(e);
        else if (kind == 'd' && !toDate(e))
            mismatch("a date is expected", e.at);
        list += i ? ", " : "";
        list += kind == 't' ? asText(e) : asValue(e).sql;
    }
    Expression e;
    e.sql = std::string(function.runs) + "(" + list + ")";
    e.type = resultType(function.result, arguments);
    if (function.name == "NZ" && arguments.size() == 2)
        e.type = commonType(arguments[0].type, arguments[1].type);
    e.at = at;
    return e;
}

Expression StatementParser::aggregateOf(const FunctionDef& function, std::size_t at)
{
    if (!aggregatesAllowed_ || inAggregate_ > 0)
        fail(inAggregate_ > 0 ? EngineErrorNumber::SyntaxError : kAggregateInWhere,
             inAggregate_ > 0 ? "Syntax error: a function over records inside of another one"
                              : "Functions over records like " + std::string(function.name) +
                                    "() have no place in WHERE, ON or GROUP BY",
             statement_, at);
    select_->aggregated = true;
    enter();
    needSign("(");
    Expression e;
    e.at = at;
    e.type = SqlType::Integer;
    const std::string call = std::string(function.runs) + "(";
    if (function.name == "COUNT" && takeSign("*")) {
        e.sql = "COUNT(*)";
        noteFunction(function, nullptr, e.sql);
    } else {
        ++inAggregate_;
        const bool distinct = takeWord("DISTINCT");
        std::vector<Expression> argument{asValue(parseExpression())};
        --inAggregate_;
        if (function.arguments == "n")
            needNumber(argument[0]);
        const bool plain =
            function.arguments == "n" || function.name == "FIRST" || function.name == "LAST";
        e.type = resultType(function.result, argument);
        e.sql = call + (distinct ? "DISTINCT " : "") +
                (plain ? argument[0].sql : sortKey(argument[0])) + ")";
        if (distinct)
            select_->otherFunctions = true;
        else
            noteFunction(function, &argument[0], e.sql);
    }
    needSign(")");
    leave();
    return e;
}

/// IIf, Switch and Choose look at one of their values only.
Expression StatementParser::chooseOf(const std::string& name, std::vector<Expression> arguments,
                                     std::size_t at)
{
    const std::size_t count = arguments.size();
    const bool fits = name == "IIF"      ? count == 3
                      : name == "SWITCH" ? count >= 2 && count % 2 == 0
                                         : count >= 2;
    if (!fits)
        wrongCount(name, at);
    Expression e;
    e.at = at;
    e.type = SqlType::Null;
    const auto value = [&](std::size_t i) {
        const Expression v = asValue(arguments[i]);
        e.type = commonType(e.type, v.type);
        return v.sql;
    };
    e.sql = "CASE";
    if (name == "CHOOSE") {
        needNumber(arguments[0]);
        e.sql += " CAST(" + arguments[0].sql + " AS INTEGER)";
        for (std::size_t i = 1; i < count; ++i)
            e.sql += " WHEN " + std::to_string(i) + " THEN " + value(i);
    } else {
        for (std::size_t i = 0; i + 1 < count; i += 2) {
            needTruth(arguments[i]);
            e.sql += " WHEN " + asCondition(arguments[i]) + " THEN " + value(i + 1);
        }
        if (name == "IIF")
            e.sql += " ELSE " + value(2);
    }
    e.sql = "(" + e.sql + " END)";
    return e;
}

}  // namespace velnor::sql
