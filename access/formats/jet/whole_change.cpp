#include "access/formats/jet/whole_change.h"

namespace velnor::jet {

WholeChange::WholeChange(std::vector<JetTable*> tables)
    : file_(tables.front()->file()), tables_(settled(tables)), savepoint_(file_.savepoint())
{
}

/// Entries that wait belong to records of before: they are entered before the savepoint.
std::vector<WholeChange::Included> WholeChange::settled(const std::vector<JetTable*>& tables)
{
    std::vector<Included> all;
    for (JetTable* table : tables) {
        table->settle();
        all.push_back({table, table->numbers()});
    }
    return all;
}

void WholeChange::undo()
{
    const bool changed = savepoint_.goBack();
    for (const Included& included : tables_)
        included.table->takeBack(included.numbers, changed);
    if (changed)
        file_.forgetFreePages();
}

}  // namespace velnor::jet
