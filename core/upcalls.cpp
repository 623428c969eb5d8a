#include "core/upcalls.h"

namespace velnor {

Upcalls& upcalls()
{
    static Upcalls calls;
    return calls;
}

void resetUpcalls()
{
    upcalls() = Upcalls{};
}

}  // namespace velnor
