// access/field_type_names.h - the engine's field types by name, for people and for stored lines.
#pragma once

#include <array>

#include <QString>

namespace velnor {

/// The name of a Field.Type code, empty for a code without one. 9 and 17 are both "Binary".
QString FieldTypeName(short code);
/// The code of a name, exact in case; 0 for an unknown one. "Binary" is 9: required, so a field
/// read as 17 is written back as 9.
short FieldTypeCode(const QString& name);

/// The names in the order in which a type is chosen from a list. "Binary" stands twice.
extern const std::array<const char*, 21> kFieldTypeChoices;

}  // namespace velnor
