// access/sql/plain_value.h - values as they travel through statements: Null, Integer, Real, Text
// and Bytes alone.
//
// True is -1 and False 0. Money and decimals are the nearest Real (whole decimals an Integer).
// Dates are days as a Real on a straight line, rounded to the millisecond, so that they compare,
// add and equal as moments do: the engine's own form counts the time of day forwards also before
// day 0.
#pragma once

#include <cstdint>
#include <string>

#include "access/layout.h"
#include "access/value.h"

struct sqlite3_context;
struct sqlite3_value;

namespace velnor::sql {

/// What the values of an expression are.
enum class SqlType : std::uint8_t {
    Unknown,  ///< told by each value
    Null,
    Boolean,
    Integer,
    Real,
    Currency,
    Date,
    Text,
    Bytes,
};

SqlType sqlTypeOf(FieldType type);
inline bool isNumber(SqlType t)
{
    return t == SqlType::Boolean || t == SqlType::Integer || t == SqlType::Real ||
           t == SqlType::Currency;
}

double straightDate(double date);    ///< the engine's form to the straight line
double dateOfStraight(double days);  ///< and back

/// A value of a field in its plain form; texts stay where they are.
ValueView plainValue(ValueView v);
/// The exact form that results are read from: Currency in ten-thousandths, Dates untouched, long
/// decimals as text in `scratch`.
ValueView exactValue(ValueView v, std::string& scratch);

/// Order of plain values: Null, numbers, texts, bytes.
int comparePlain(ValueView a, ValueView b);
std::uint64_t hashPlain(ValueView v);

/// Between plain values and SQLite. A text lies in SQLite's memory, as long as the value itself.
ValueView plainOf(sqlite3_value* value);
/// `copied`: the text does not stay until the next step.
void setResult(sqlite3_context* context, ValueView plain, bool copied);

/// A key for a search in an index on the field; false when the plain value has no exact form there.
bool keyOfPlain(const FieldDef& field, ValueView plain, ValueView& key);

}  // namespace velnor::sql
