// access/formats/jet/definition_gaps.h - the gaps that dropped columns leave in a definition.
//
// A column's number is used once in the life of a table, and so is its slot. Old records still have
// the bytes of dropped columns. Only a table that is written anew can give both back.
#pragma once

#include "access/formats/jet/jet_table.h"
#include "access/formats/jet/table_def.h"

namespace velnor::jet {

/// Whether numbers, slots or fixed bytes are lost to columns that are gone.
bool hasGaps(const TableDef& def);

/// The same definition with numbers, slots and offsets given anew, in their old order. Records must
/// be laid out by it.
TableDef withoutGaps(TableDef def);

/// Whether every record is small enough in that layout: those written before a fixed column was
/// added have no bytes for it, and would get them.
bool fitsWithoutGaps(JetTable& table);

}  // namespace velnor::jet
