// access/formats/jet/new_table.h - the definition of a table that is about to be made.
#pragma once

#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/properties.h"
#include "access/formats/jet/table_def.h"
#include "access/layout.h"

namespace velnor::jet {

/// What new columns take from their file.
struct ColumnDefaults {
    const JetFormat& format;
    SortOrder order;
    std::uint16_t codePage = 0;    // Jet 3
    std::uint16_t columnWord = 0;  // Jet 3
};

/// Columns without indexes and pages: maps are still to be given. Ids and fixed offsets in the
/// order of the fields; plain variable columns get the first slots, long values the last. 3190 too
/// many fields, 3251 a type that the version does not have.
TableDef newTableDef(const ColumnDefaults& defaults, const TableLayout& layout);

/// Whether Access takes a name for a table, a field or an index: none of . ! [ ] ` and no blank in
/// front.
bool allowedName(std::string_view name);

/// A column of a field; 3008 for a name that is not allowed; ids, slots and offsets are still to be
/// given.
Column newColumn(const ColumnDefaults& defaults, const FieldDef& field);

/// The real index of a definition: columns and flags; map and root are still to be given. 3018 when
/// it has no fields or too many, names one that is not there or cannot be indexed.
RealIndex newRealIndex(const TableDef& table, const IndexDef& index, const JetFormat& format);

/// Adds an index on the definition's last real index under its name. Names stand in the order of
/// the file. 3018 when the table has 32 indexes already.
void addLogicalIndex(const JetFile& file, TableDef& table, const IndexDef& index);

/// What the property block keeps of a field.
void setFieldProperties(PropertyBlock& block, const FieldDef& field);

/// What the property block keeps of a table: required fields, default values, descriptions, rules.
PropertyBlock newProperties(const TableLayout& layout, PropertyText text);

}  // namespace velnor::jet
