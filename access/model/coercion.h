// access/model/coercion.h - assigned values turned into the kind and the bounds of their field.
#pragma once

#include <string>

#include "access/layout.h"
#include "access/value.h"

namespace velnor::model {

/// The value in the kind of the field (see `valueKindOf`), checked against its range and size: 3421
/// when it cannot be one, 3163 for a text or bytes too long. Texts that are made lie in `scratch`.
ValueView coerce(const FieldDef& field, ValueView v, std::string& scratch);

/// The same for a key of Seek: the kind only, since a key beyond the bounds just finds nothing.
ValueView coerceKey(const FieldDef& field, ValueView v, std::string& scratch);

/// The value of a field's default when that is a plain constant (number, quoted text, True, Yes
/// ...), in the kind of the field; Null for other expressions.
Value defaultOf(const FieldDef& field);

}  // namespace velnor::model
