// access/model/structure_checks.h - what every format asks of new tables, fields and indexes, made
// once.
#pragma once

#include <string_view>
#include <vector>

#include "access/formats/driver.h"
#include "access/layout.h"

namespace velnor::model {

/// The size that a field of this type has when it was made with `size`: the width of fixed types, 0
/// for memos.
std::int32_t effectiveSize(FieldType type, std::int32_t size, const FormatTraits& traits);

/// 3125 for a table's name that is empty, too long, or holds control characters.
void checkTableName(std::string_view name, const FormatTraits& traits);
/// 3008 for such a field name, 3001 for a size or a type that is none. Cuts the name and fills in
/// the size as the format wants them.
void settleField(FieldDef& field, const FormatTraits& traits);
/// settleField on each; 3190 too many, 3191 two of one name.
void settleFields(std::vector<FieldDef>& fields, const FormatTraits& traits);
/// 3018 for an index without fields, on a field that is not there, twice on one, or on a long
/// value.
void checkIndex(const IndexDef& index, const std::vector<FieldDef>& fields);

}  // namespace velnor::model
