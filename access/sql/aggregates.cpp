// Functions over the records of a group: Sum, Avg, StDev, Var and their kin, First, Last.
//
// Sums of whole numbers are exact as long as they fit; others carry the rounding of each step
// along, so that sums of amounts come out as on paper.
#include <cmath>
#include <new>

#include "access/sql/function_support.h"
#include "access/sql/functions.h"

namespace velnor::sql {
namespace {

struct Sum {
    std::int64_t count, whole;
    double sum, rest;  // rest: what the additions to `sum` lost
    bool real;

    void add(double d)
    {
        const double next = sum + d;
        rest += std::fabs(sum) >= std::fabs(d) ? (sum - next) + d : (d - next) + sum;
        sum = next;
    }
    double value() const
    {
        const double all = sum + rest;
        return std::isnan(all) ? sum : all;
    }
};

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
    ++s->count;
    if (!s->real && sqlite3_value_type(given[0]) == SQLITE_INTEGER) {
        const std::int64_t i = sqlite3_value_int64(given[0]);
        if (!__builtin_add_overflow(s->whole, i, &s->whole))
            return;
        s->real = true;
        s->add(static_cast<double>(s->whole));
        s->add(static_cast<double>(i));
        return;
    }
    if (!s->real) {
        s->real = true;
        s->sum = static_cast<double>(s->whole);
    }
    s->add(sqlite3_value_double(given[0]));
}

void giveSum(Call call)
{
    auto* s = stateOf<Sum>(call);
    if (!s)
        return;
    if (s->count == 0)
        sqlite3_result_null(call);
    else if (s->real)
        sqlite3_result_double(call, s->value());
    else
        sqlite3_result_int64(call, s->whole);
}

void giveAverage(Call call)
{
    auto* s = stateOf<Sum>(call);
    if (!s)
        return;
    if (s->count == 0)
        return sqlite3_result_null(call);
    const double sum = s->real ? s->value() : static_cast<double>(s->whole);
    sqlite3_result_double(call, sum / static_cast<double>(s->count));
}

struct Spread {
    std::int64_t count;
    double mean, squares;
};

void addToSpread(Call call, int, Given given)
{
    if (isNull(given[0]))
        return;
    auto* s = stateOf<Spread>(call);
    if (!s)
        return;
    const double d = sqlite3_value_double(given[0]);
    const double away = d - s->mean;
    s->mean += away / static_cast<double>(++s->count);
    s->squares += away * (d - s->mean);
}

/// `missing`: 1 for a sample, 0 for all there are.
template <int missing, bool root> void giveSpread(Call call)
{
    auto* s = stateOf<Spread>(call);
    if (!s)
        return;
    if (s->count <= missing)
        return sqlite3_result_null(call);
    const double variance = s->squares / static_cast<double>(s->count - missing);
    sqlite3_result_double(call, root ? std::sqrt(variance) : variance);
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
