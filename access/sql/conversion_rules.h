// access/sql/conversion_rules.h - how values of different types meet in a statement.
#pragma once

#include <string>
#include <string_view>

#include "access/sql/expression.h"

namespace velnor::sql {

/// A text constant of the statement machine.
std::string quoted(std::string_view text);
/// A number constant that reads back as the same double.
std::string numberSql(double d);

/// True -1, False 0: a condition as a value.
Expression asValue(Expression e);
/// A value as a condition.
std::string asCondition(const Expression& e);
std::string asText(const Expression& e);

/// Turns a text constant into one of `type` when it reads wholly as such a value. False when it
/// does not.
bool convertConstant(Expression& constant, SqlType type);
/// Whether values of these types compare.
bool comparable(SqlType a, SqlType b);
/// Makes both sides comparable; false when they are not.
bool meet(Expression& a, Expression& b);
/// "a op b" with the order of texts where it does not come by itself.
std::string comparison(const Expression& a, std::string_view op, const Expression& b);
/// The expression as a key of ORDER BY, GROUP BY, DISTINCT.
std::string sortKey(const Expression& e);

/// An operand of arithmetic; false when it can be none (a text constant that is no number).
bool toNumber(Expression& e);
bool toDate(Expression& e);

/// "text", "number" ... for messages.
const char* typeWord(SqlType type);

}  // namespace velnor::sql
