// access/formats/jet/definition_repair.h - what is left of a damaged definition when the impossible
// is taken out of it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "access/formats/jet/table_def.h"

namespace velnor::jet {

/// Takes out columns that cannot be, gives lost numbers and slots back where only one is missing,
/// and names to columns without. Returns the names of columns that went.
std::vector<std::string> mendColumns(TableDef& def);

/// Takes out indexes that have no tree, no fields, or fields that are not there, and trees that
/// belong to no index. Returns the names of indexes that went.
std::vector<std::string> dropImpossibleIndexes(TableDef& def);

/// The definition that starts on a page; null when there is none.
using DefinitionByPage = std::function<const TableDef*(PageNumber)>;

/// Ends of relationships that their other table does not know of, by place in the definition.
std::vector<std::size_t> brokenRelations(const TableDef& def, const DefinitionByPage& others);
/// Makes these ends ordinary indexes, or takes them out where another index has the same tree.
void dropRelations(TableDef& def, const std::vector<std::size_t>& ends);

/// Takes a real index out, with all its names; those behind it move up.
void dropRealIndex(TableDef& def, std::uint32_t real);

}  // namespace velnor::jet
