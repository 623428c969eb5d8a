// core/attempt.h - where a failure stops: the edge of a window's procedure.
#pragma once

#include <exception>
#include <functional>
#include <new>

#include <QString>

#include "access/engine_error.h"
#include "platform/run_error.h"

namespace velnor {

/// How an attempt ended: number 0 is success.
struct Outcome {
    int number = 0;
    QString description;
    explicit operator bool() const { return number == 0; }
};

/// Number and words of the exception in hand; memory is 7, anything unknown 3000.
Outcome outcomeOfCurrentException();

/// Runs a step. A failure ends the step, not the procedure: "resume at the next statement" is one attempt
/// a statement.
template <class Step> Outcome attempt(Step&& step)
{
    try {
        step();
        return {};
    } catch (...) {
        return outcomeOfCurrentException();
    }
}

/// Wraps a slot, so that no exception reaches the event loop. What escapes is told under the program title as
/// "Error - number - description".
void tellUnexpected(const Outcome& outcome);

template <class Object, class Result, class... Parameters, class... Bound>
auto edge(Object* object, Result (Object::*procedure)(Parameters...), Bound... bound)
{
    return [=]() {
        const Outcome outcome = attempt([&] { (object->*procedure)(bound...); });
        if (!outcome)
            tellUnexpected(outcome);
    };
}

}  // namespace velnor
