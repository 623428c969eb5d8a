// Functions over the records of a group: Sum, Avg, StDev, Var and their kin, First, Last.
#include "access/sql/accumulators.h"
#include "access/sql/function_support.h"
#include "access/sql/functions.h"

namespace velnor::sql {
namespace {

/// Null in the first call: no memory.
template <class State> State* stateOf(Call call)
{
    auto* state = static_cast<State*>(sqlite3_aggregate_context(call, sizeof(State)));
    if (!state)
        sqlite3_result_error_nomem(call);
    return state;
}

void addToSum(Call call, int, Given given)
{
    if (isNull(given[0]))
        return;
    auto* s = stateOf<Sum>(call);
    if (!s)
        return;
    if (sqlite3_value_type(given[0]) == SQLITE_INTEGER)
        s->addInteger(sqlite3_value_int64(given[0]));
    else
        s->addReal(sqlite3_value_double(given[0]));
}

void giveSum(Call call)
{
    if (const auto* s = stateOf<Sum>(call))
        setResult(call, s->total(), false);
}

void giveAverage(Call call)
{
    if (const auto* s = stateOf<Sum>(call))
        setResult(call, s->average(), false);
}

void addToSpread(Call call, int, Given given)
{
    if (isNull(given[0]))
        return;
    if (auto* s = stateOf<Spread>(call))
        s->add(sqlite3_value_double(given[0]));
}

template <int missing, bool root> void giveSpread(Call call)
{
    if (const auto* s = stateOf<Spread>(call))
        setResult(call, s->variance(missing, root), false);
}

struct Kept {
    sqlite3_value* value;
};

template <bool last> void keep(Call call, int, Given given)
{
    auto* kept = stateOf<Kept>(call);
    if (!kept || (kept->value && !last))
        return;
    sqlite3_value_free(kept->value);
    kept->value = sqlite3_value_dup(given[0]);
    if (!kept->value)
        sqlite3_result_error_nomem(call);
}

void giveKept(Call call)
{
    auto* kept = static_cast<Kept*>(sqlite3_aggregate_context(call, 0));
    if (!kept || !kept->value)
        return sqlite3_result_null(call);
    sqlite3_result_value(call, kept->value);
    sqlite3_value_free(kept->value);
    kept->value = nullptr;
}

}  // namespace

void addAggregates(sqlite3* db)
{
    struct Aggregate {
        const char* name;
        void (*step)(Call, int, Given);
        void (*give)(Call);
    };
    static constexpr Aggregate kAll[] = {
        {"v_sum", addToSum, giveSum},
        {"v_avg", addToSum, giveAverage},
        {"v_stdev", addToSpread, giveSpread<1, true>},
        {"v_stdevp", addToSpread, giveSpread<0, true>},
        {"v_var", addToSpread, giveSpread<1, false>},
        {"v_varp", addToSpread, giveSpread<0, false>},
        {"v_first", keep<false>, giveKept},
        {"v_last", keep<true>, giveKept},
    };
    for (const Aggregate& a : kAll)
        sqlite3_create_function_v2(db, a.name, 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
                                   nullptr, a.step, a.give, nullptr);
}

}  // namespace velnor::sql
