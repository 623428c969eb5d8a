// access/sql/accumulators.h - what functions over many values keep while the values come.
//
// Sums of whole numbers are exact as long as they fit; others carry the rounding of each step
// along, so that sums of amounts come out as on paper. All bytes zero is the state of no value.
#pragma once

#include <cmath>
#include <cstdint>

#include "access/value.h"

namespace velnor::sql {

struct Sum {
    std::int64_t count, whole;
    double sum, rest;  // rest: what the additions to `sum` lost
    bool real;

    void addInteger(std::int64_t i)
    {
        ++count;
        if (real)
            return add(static_cast<double>(i));
        std::int64_t next = 0;
        if (!__builtin_add_overflow(whole, i, &next)) {
            whole = next;
            return;
        }
        real = true;
        add(static_cast<double>(whole));
        add(static_cast<double>(i));
    }
    void addReal(double d)
    {
        ++count;
        if (!real) {
            real = true;
            sum = static_cast<double>(whole);
        }
        add(d);
    }
    /// Null of no values.
    ValueView total() const
    {
        if (count == 0)
            return {};
        return real ? ValueView::real(value()) : ValueView::integer(whole);
    }
    ValueView average() const
    {
        if (count == 0)
            return {};
        return ValueView::real((real ? value() : static_cast<double>(whole)) /
                               static_cast<double>(count));
    }

private:
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

struct Spread {
    std::int64_t count;
    double mean, squares;

    void add(double d)
    {
        const double away = d - mean;
        mean += away / static_cast<double>(++count);
        squares += away * (d - mean);
    }
    /// `missing`: 1 for a sample, 0 for all there are. Null of too few values.
    ValueView variance(int missing, bool root) const
    {
        if (count <= missing)
            return {};
        const double variance = squares / static_cast<double>(count - missing);
        return ValueView::real(root ? std::sqrt(variance) : variance);
    }
};

}  // namespace velnor::sql
