// access/formats/jet/table_layout.h - a table's definition and properties as the engine's
// TableLayout.
#pragma once

#include "access/formats/jet/jet_table.h"
#include "access/formats/jet/properties.h"
#include "access/layout.h"

namespace velnor::jet {

/// The engine's type of a column, and the column's type code of a field; 0 for a type that Access
/// files of this version don't have.
FieldType fieldTypeOf(std::uint8_t columnType);
std::uint8_t columnTypeOf(FieldType type);

/// Fields and indexes, the ends of relationships among them (`foreign`).
void describe(JetTable& table, const PropertyBlock& properties, TableLayout& layout);

}  // namespace velnor::jet
