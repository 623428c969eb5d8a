// copy/field_match.h - automatic matching: first by name, then by type and size. Lists in, pairs
// out.
#pragma once

#include <vector>

#include "copy/field_list.h"
#include "copy/field_pair.h"

namespace velnor {

/// Appends a pair for each From line that finds a To line, in the order of the From lines.
///
/// By name: the first To line whose name is equal to the letter, also one that was taken before.
/// Else by type and size: the first free To line that agrees, where the arrays are read with the
/// number of the line (see FieldList). So a first From line without a namesake takes the first To
/// line, if it is free.
///
/// The marks of taken lines reach to line 200: the 202nd To line is error 9. The pairs found so far
/// stay.
void matchFields(const FieldList& from, const FieldList& to, std::vector<FieldPair>& pairs);

}  // namespace velnor
