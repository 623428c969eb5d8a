// access/sql/functions.h - the functions that statements may call.
#pragma once

#include <cstdint>
#include <string_view>

#include "access/sql/plain_value.h"

struct sqlite3;

namespace velnor::sql {

/// The type of what a function gives.
enum class ResultRule : std::uint8_t {
    Boolean,
    Integer,
    Real,
    Currency,
    Date,
    Text,
    OfFirst,   ///< that of the first argument
    OfNumber,  ///< that of the first argument, a number
};

struct FunctionDef {
    std::string_view name;       ///< in capitals
    std::string_view arguments;  ///< a letter each: t text, n number, d date, a any
    std::int8_t least;           ///< arguments; the most is the length of `arguments`
    ResultRule result;
    std::string_view runs;  ///< the function of the statement machine
    bool aggregate = false;
};

/// Null when there is no such function; `name` in capitals.
const FunctionDef* findFunction(std::string_view name);

/// Adds the functions and the text order to a statement machine.
void addFunctions(sqlite3* db);
void addTextFunctions(sqlite3* db);
void addNumberFunctions(sqlite3* db);
void addDateFunctions(sqlite3* db);
void addAggregates(sqlite3* db);

/// The name of the order of texts in text_order.h.
inline constexpr const char* kTextOrder = "VTEXT";

}  // namespace velnor::sql
