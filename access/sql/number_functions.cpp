// Functions of numbers, and of values of any type.
#include <cmath>
#include <limits>

#include "access/sql/function_support.h"
#include "access/sql/functions.h"
#include "access/value_text.h"

namespace velnor::sql {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

[[noreturn]] void overflow()
{
    throw EngineError(EngineErrorNumber::TypeConversion,
                      "A number in the statement is too large for its type.");
}

bool isWhole(sqlite3_value* v)
{
    return sqlite3_value_type(v) == SQLITE_INTEGER;
}

/// A whole result as an Integer, as far as one holds it.
void giveWhole(Call call, double d)
{
    if (std::fabs(d) < kTwoTo63)
        sqlite3_result_int64(call, static_cast<std::int64_t>(d));
    else
        sqlite3_result_double(call, d);
}

std::int64_t wholeOf(sqlite3_value* v)
{
    if (isWhole(v))
        return sqlite3_value_int64(v);
    const double d = std::nearbyint(sqlite3_value_double(v));
    if (!(std::fabs(d) < kTwoTo63))
        overflow();
    return static_cast<std::int64_t>(d);
}

/// A text that is to count as a number.
void number(Call call, int, Given given)
{
    if (sqlite3_value_type(given[0]) != SQLITE_TEXT)
        return setResult(call, plainOf(given[0]), true);
    const auto read = parseReal(textOf(given[0]));
    if (!read)
        throw EngineError(EngineErrorNumber::TypeMismatch,
                          "The text '" + std::string(textOf(given[0])) + "' is no number.");
    sqlite3_result_double(call, *read);
}

template <double (*function)(double)> void applied(Call call, int, Given given)
{
    const double result = function(sqlite3_value_double(given[0]));
    if (std::isnan(result) || std::isinf(result))
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "A function in the statement has no value for its argument.");
    sqlite3_result_double(call, result);
}

void absolute(Call call, int, Given given)
{
    if (isWhole(given[0]) &&
        sqlite3_value_int64(given[0]) != std::numeric_limits<std::int64_t>::min())
        sqlite3_result_int64(call, std::abs(sqlite3_value_int64(given[0])));
    else
        sqlite3_result_double(call, std::fabs(sqlite3_value_double(given[0])));
}

void sign(Call call, int, Given given)
{
    const double d = sqlite3_value_double(given[0]);
    sqlite3_result_int(call, d < 0 ? -1 : d > 0);
}

template <double (*function)(double)> void cut(Call call, int, Given given)
{
    if (isWhole(given[0]))
        return sqlite3_result_int64(call, sqlite3_value_int64(given[0]));
    giveWhole(call, function(sqlite3_value_double(given[0])));
}

/// Half goes to the even neighbour.
void rounded(Call call, int count, Given given)
{
    const std::int64_t places = count > 1 ? wholeOf(given[1]) : 0;
    if (places < 0 || places > 22)
        throw EngineError(EngineErrorNumber::InvalidArgument, "Round() keeps 0 to 22 digits.");
    if (isWhole(given[0]))
        return sqlite3_result_int64(call, sqlite3_value_int64(given[0]));
    const double d = sqlite3_value_double(given[0]);
    if (places == 0)
        return giveWhole(call, std::nearbyint(d));
    const double power = std::pow(10.0, static_cast<double>(places));
    const double scaled = d * power;
    sqlite3_result_double(call, std::fabs(scaled) < 1e15 ? std::nearbyint(scaled) / power : d);
}

template <std::int64_t least, std::int64_t most> void whole(Call call, int, Given given)
{
    const std::int64_t i = wholeOf(given[0]);
    if (i < least || i > most)
        overflow();
    sqlite3_result_int64(call, i);
}

void toReal(Call call, int, Given given)
{
    sqlite3_result_double(call, sqlite3_value_double(given[0]));
}

void toSingle(Call call, int, Given given)
{
    sqlite3_result_double(call,
                          static_cast<double>(static_cast<float>(sqlite3_value_double(given[0]))));
}

void toCurrency(Call call, int, Given given)
{
    const double units = std::nearbyint(sqlite3_value_double(given[0]) * 10000);
    if (!(std::fabs(units) < kTwoTo63))
        overflow();
    sqlite3_result_double(call, units / 10000);
}

void toTruth(Call call, int, Given given)
{
    sqlite3_result_int(call, sqlite3_value_double(given[0]) != 0 ? -1 : 0);
}

void modulo(Call call, int, Given given)
{
    const std::int64_t a = wholeOf(given[0]), b = wholeOf(given[1]);
    if (b == 0)
        return sqlite3_result_null(call);
    sqlite3_result_int64(call, b == -1 ? 0 : a % b);
}

void wholeDivision(Call call, int, Given given)
{
    const std::int64_t a = wholeOf(given[0]), b = wholeOf(given[1]);
    if (b == 0)
        return sqlite3_result_null(call);
    if (b == -1 && a == std::numeric_limits<std::int64_t>::min())
        overflow();
    sqlite3_result_int64(call, a / b);
}

void power(Call call, int, Given given)
{
    const double result = std::pow(sqlite3_value_double(given[0]), sqlite3_value_double(given[1]));
    if (std::isnan(result) || std::isinf(result))
        overflow();
    sqlite3_result_double(call, result);
}

void isNumeric(Call call, int, Given given)
{
    const int type = sqlite3_value_type(given[0]);
    const bool number = type == SQLITE_INTEGER || type == SQLITE_FLOAT ||
                        (type == SQLITE_TEXT && parseReal(textOf(given[0])));
    sqlite3_result_int(call, number ? -1 : 0);
}

void isNullValue(Call call, int, Given given)
{
    sqlite3_result_int(call, isNull(given[0]) ? -1 : 0);
}

/// The value, or for Null the other one; without another an empty text.
void notNull(Call call, int count, Given given)
{
    if (!isNull(given[0]))
        setResult(call, plainOf(given[0]), true);
    else if (count > 1)
        setResult(call, plainOf(given[1]), true);
    else
        giveText(call, "");
}

}  // namespace

void addNumberFunctions(sqlite3* db)
{
    static constexpr Function kAll[] = {
        {"v_number", 1, unlessNull<number>},
        {"v_abs", 1, unlessNull<absolute>},
        {"v_sgn", 1, unlessNull<sign>},
        {"v_int", 1, unlessNull<cut<std::floor>>},
        {"v_fix", 1, unlessNull<cut<std::trunc>>},
        {"v_round", -1, unlessNull<rounded>},
        {"v_cint", 1, unlessNull<whole<-32768, 32767>>},
        {"v_cbyte", 1, unlessNull<whole<0, 255>>},
        {"v_clng", 1, unlessNull<whole<-2147483648, 2147483647>>},
        {"v_cdbl", 1, unlessNull<toReal>},
        {"v_csng", 1, unlessNull<toSingle>},
        {"v_ccur", 1, unlessNull<toCurrency>},
        {"v_cbool", 1, unlessNull<toTruth>},
        {"v_sqr", 1, unlessNull<applied<std::sqrt>>},
        {"v_exp", 1, unlessNull<applied<std::exp>>},
        {"v_log", 1, unlessNull<applied<std::log>>},
        {"v_sin", 1, unlessNull<applied<std::sin>>},
        {"v_cos", 1, unlessNull<applied<std::cos>>},
        {"v_tan", 1, unlessNull<applied<std::tan>>},
        {"v_atn", 1, unlessNull<applied<std::atan>>},
        {"v_mod", 2, unlessNull<modulo>},
        {"v_wholediv", 2, unlessNull<wholeDivision>},
        {"v_power", 2, unlessNull<power>},
        {"v_isnumeric", 1, isNumeric},
        {"v_isnull", 1, isNullValue},
        {"v_nz", -1, notNull},
    };
    addAll(db, kAll);
}

}  // namespace velnor::sql
