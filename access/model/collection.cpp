#include "access/model/collection.h"

namespace velnor {
namespace model {

void throwNotInCollection(std::string_view name)
{
    throw EngineError(EngineErrorNumber::ItemNotFound,
                      "Item not found in this collection: " + std::string(name) + ".");
}

EngineErrorNumber appendedTwice(const Field&)
{
    return EngineErrorNumber::SameFieldNames;
}
EngineErrorNumber appendedTwice(const Index&)
{
    return EngineErrorNumber::ItemExists;
}
EngineErrorNumber appendedTwice(const TableDef&)
{
    return EngineErrorNumber::TableAlreadyExists;
}

}  // namespace model

template class Collection<Field>;
template class Collection<Index>;
template class Collection<TableDef>;

}  // namespace velnor
