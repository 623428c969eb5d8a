#include "core/globals.h"

namespace velnor {

Globals& globals()
{
    static Globals state;
    return state;
}

void resetGlobals()
{
    globals() = Globals{};
}

}  // namespace velnor
