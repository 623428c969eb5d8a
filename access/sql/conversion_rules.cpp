#include "access/sql/conversion_rules.h"

#include <cmath>

#include "access/sql/functions.h"
#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::sql {
namespace {

bool isOpen(SqlType t)
{
    return t == SqlType::Unknown || t == SqlType::Null;
}

std::string_view withoutBlanks(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool truthConstant(Expression& constant)
{
    const std::string_view word = withoutBlanks(constant.constant);
    for (const char* yes : {"True", "Yes", "On"})
        if (paths::sameName(word, yes)) {
            constant.sql = "-1";
            return true;
        }
    for (const char* no : {"False", "No", "Off"})
        if (paths::sameName(word, no)) {
            constant.sql = "0";
            return true;
        }
    return false;
}

bool numberConstant(Expression& constant)
{
    const auto number = parseReal(constant.constant);
    if (!number || !std::isfinite(*number))
        return false;
    const auto whole = integerOf(ValueView::text(constant.constant));
    if (whole && static_cast<double>(*whole) == *number && std::fabs(*number) < 9e15)
        constant.sql = std::to_string(*whole);
    else
        constant.sql = numberSql(*number);
    if (constant.sql.front() == '-')
        constant.sql = "(" + constant.sql + ")";
    return true;
}

bool dateConstant(Expression& constant)
{
    const auto date = parseDate(constant.constant);
    if (!date)
        return false;
    constant.sql = numberSql(straightDate(*date));
    return true;
}

}  // namespace

std::string quoted(std::string_view text)
{
    std::string made = "'";
    for (const char c : text) {
        made += c;
        if (c == '\'')
            made += c;
    }
    return made + "'";
}

std::string numberSql(double d)
{
    std::string made;
    appendReal(made, d);
    if (made.find_first_of(".e") == made.npos)
        made += ".0";
    return made.front() == '-' ? "(" + made + ")" : made;
}

Expression asValue(Expression e)
{
    if (!e.condition)
        return e;
    e.sql = "(-(" + e.sql + "))";
    e.condition = false;
    e.type = SqlType::Boolean;
    return e;
}

std::string asCondition(const Expression& e)
{
    return e.sql;
}

std::string asText(const Expression& given)
{
    const Expression e = asValue(given);
    switch (e.type) {
    case SqlType::Text:
        return e.sql;
    case SqlType::Boolean:
        return "v_truthtext(" + e.sql + ")";
    case SqlType::Date:
        return "v_datetext(" + e.sql + ")";
    default:
        return "v_text(" + e.sql + ")";
    }
}

bool convertConstant(Expression& constant, SqlType type)
{
    bool done = false;
    switch (type) {
    case SqlType::Boolean:
        done = truthConstant(constant) || numberConstant(constant);
        break;
    case SqlType::Integer:
    case SqlType::Real:
    case SqlType::Currency:
        done = numberConstant(constant);
        break;
    case SqlType::Date:
        done = dateConstant(constant);
        break;
    default:
        return true;
    }
    if (done) {
        constant.type = type;
        constant.textConstant = false;
    }
    return done;
}

bool comparable(SqlType a, SqlType b)
{
    if (isOpen(a) || isOpen(b) || a == b)
        return true;
    const auto counts = [](SqlType t) { return isNumber(t) || t == SqlType::Date; };
    return counts(a) && counts(b);
}

bool meet(Expression& a, Expression& b)
{
    if (a.textConstant && !b.textConstant && !convertConstant(a, b.type))
        return false;
    if (b.textConstant && !a.textConstant && !convertConstant(b, a.type))
        return false;
    return comparable(a.type, b.type);
}

std::string comparison(const Expression& a, std::string_view op, const Expression& b)
{
    std::string made = a.sql;
    const bool texts = !isNumber(a.type) && a.type != SqlType::Date && !isNumber(b.type) &&
                       b.type != SqlType::Date;
    if (texts && !a.ordered && !b.ordered)
        made += std::string(" COLLATE ") + kTextOrder;
    return made + " " + std::string(op) + " " + b.sql;
}

std::string sortKey(const Expression& e)
{
    const bool number = isNumber(e.type) || e.type == SqlType::Date;
    return number || e.ordered ? e.sql : e.sql + " COLLATE " + kTextOrder;
}

bool toNumber(Expression& e)
{
    e = asValue(std::move(e));
    if (e.textConstant)
        return convertConstant(e, SqlType::Real);
    if (e.type == SqlType::Bytes)
        return false;
    if (e.type == SqlType::Text || e.type == SqlType::Unknown) {
        e.sql = "v_number(" + e.sql + ")";
        e.type = SqlType::Real;
        e.ordered = false;
    }
    return true;
}

bool toDate(Expression& e)
{
    e = asValue(std::move(e));
    if (e.textConstant)
        return convertConstant(e, SqlType::Date);
    if (e.type == SqlType::Bytes)
        return false;
    if (e.type == SqlType::Text || e.type == SqlType::Unknown) {
        e.sql = "v_datevalue(" + e.sql + ")";
        e.ordered = false;
    }
    e.type = SqlType::Date;
    return true;
}

const char* typeWord(SqlType type)
{
    switch (type) {
    case SqlType::Boolean:
        return "True or False";
    case SqlType::Integer:
    case SqlType::Real:
        return "a number";
    case SqlType::Currency:
        return "an amount";
    case SqlType::Date:
        return "a date";
    case SqlType::Text:
        return "a text";
    case SqlType::Bytes:
        return "binary data";
    default:
        return "a value";
    }
}

}  // namespace velnor::sql
