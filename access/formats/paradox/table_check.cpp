#include "access/formats/paradox/table_check.h"

namespace velnor::paradox {

void checkTable(DbTable& table, const ProblemSink& report)
{
    if (const std::string& damage = table.chain().damage(); !damage.empty())
        report({table.path(), damage, false});
}

}  // namespace velnor::paradox
