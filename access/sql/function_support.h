// access/sql/function_support.h - what the functions of statements are written with.
#pragma once

#include <sqlite3.h>

#include <string>
#include <string_view>

#include "access/engine_error.h"
#include "access/sql/plain_value.h"

namespace velnor::sql {

using Call = sqlite3_context*;
using Given = sqlite3_value**;

inline constexpr std::size_t kLongestText = 16u << 20;  ///< bytes that a function makes at most

void failCall(Call call, EngineErrorNumber number, const std::string& words);
inline bool isNull(sqlite3_value* v)
{
    return sqlite3_value_type(v) == SQLITE_NULL;
}
std::string_view textOf(sqlite3_value* v);
void giveText(Call call, std::string_view text);

struct Function {
    const char* name;
    int arguments;  ///< -1: any number
    void (*run)(Call, int, Given);
    bool changes = false;  ///< gives another value at another time
};
template <std::size_t N> void addAll(sqlite3* db, const Function (&functions)[N])
{
    for (const Function& f : functions)
        sqlite3_create_function_v2(db, f.name, f.arguments,
                                   SQLITE_UTF8 | (f.changes ? 0 : SQLITE_DETERMINISTIC), nullptr,
                                   f.run, nullptr, nullptr, nullptr);
}

/// Null when any argument is Null, else what `run` gives.
template <void (*run)(Call, int, Given)> void unlessNull(Call call, int count, Given given)
{
    for (int i = 0; i < count; ++i)
        if (isNull(given[i]))
            return sqlite3_result_null(call);
    try {
        run(call, count, given);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(call);
    } catch (const EngineError& error) {
        failCall(call, error.code(), error.what());
    }
}

}  // namespace velnor::sql
