#include "core/attempt.h"

#include "core/prompt.h"

namespace velnor {

Outcome outcomeOfCurrentException()
{
    try {
        throw;
    } catch (const EngineError& error) {
        return {error.number(), QString::fromUtf8(error.what())};
    } catch (const RunError& error) {
        return {error.number(), QString::fromUtf8(error.what())};
    } catch (const std::bad_alloc&) {
        return {static_cast<int>(RunErrorNumber::OutOfMemory), "Out of memory"};
    } catch (const std::exception& error) {
        return {static_cast<int>(EngineErrorNumber::Unexpected), QString::fromUtf8(error.what())};
    } catch (...) {
        return {static_cast<int>(EngineErrorNumber::Unexpected), "Unexpected error"};
    }
}

void tellUnexpected(const Outcome& outcome)
{
    prompt().tell(nullptr,
                  "Error - " + QString::number(outcome.number) + " - " + outcome.description);
}

}  // namespace velnor
