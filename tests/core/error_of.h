// tests/core/error_of.h - the number of the error that a step ends with, 0 for none.
#pragma once

#include "core/attempt.h"

namespace velnor::testing {

template <class Step> int errorOf(Step&& step)
{
    return attempt(step).number;
}

}  // namespace velnor::testing
