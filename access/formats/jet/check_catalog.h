// access/formats/jet/check_catalog.h - the check of what the catalog says: objects, rights,
// relationships, properties, and the definitions against each other.
#pragma once

#include <map>
#include <memory>

#include "access/formats/jet/catalog.h"
#include "access/formats/jet/check_context.h"

namespace velnor::jet {

using CheckedTables = std::map<PageNumber, std::shared_ptr<JetTable>>;  // by definition page

/// One definition by itself: counts, ids, slots, index blocks.
void checkDefinition(CheckContext& context, JetTable& table, const std::string& where);
/// Both ends of every relationship.
void checkRelations(CheckContext& context, const CheckedTables& tables);
/// Parents and names of the objects, their properties, and their rights.
void checkObjects(CheckContext& context, Catalog& catalog, const CheckedTables& tables);

}  // namespace velnor::jet
