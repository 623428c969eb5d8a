#include "copy/query_members.h"

namespace velnor {

QueryMembers& queryMembers()
{
    static QueryMembers members;
    return members;
}

}  // namespace velnor
