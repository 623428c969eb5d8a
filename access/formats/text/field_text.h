// access/formats/text/field_text.h - fields and records as lines of a text file, in UTF-8.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "access/formats/text/text_form.h"
#include "access/value.h"

namespace velnor::text {

/// A delimited field. A text is put in quotes when it would not be read back as the same text
/// without: it is empty, has a delimiter, a quote, a line end or blanks at an end, or reads as a
/// number, a date or a Boolean. 3421 when it needs quotes and the file has none.
void appendField(std::string& out, const FieldDef& field, ValueView value, const TextForm& form);

/// A field of fixed width, filled up with blanks. 3163 when the value is longer, 3421 for a line
/// end in it.
void appendFixedField(std::string& out, const FieldDef& field, int width, ValueView value,
                      const TextForm& form);

/// The names of the fields as the first line of a file.
std::string headerLine(const std::vector<FieldDef>& fields, const TextForm& form);

}  // namespace velnor::text
