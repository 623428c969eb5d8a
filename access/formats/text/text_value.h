// access/formats/text/text_value.h - the text of a field as a value, and back.
//
// Unquoted and empty is Null; so is a text that does not read as the type of its column, which only
// a column with a type told by schema.ini can have.
#pragma once

#include <string>
#include <string_view>

#include "access/formats/text/text_form.h"
#include "access/value.h"

namespace velnor::text {

/// Bits: what a text reads as without losing anything. "007", "+49 30", 16 digits and more are
/// texts.
inline constexpr unsigned kLong = 1, kDouble = 2, kDate = 4, kBoolean = 8;
inline constexpr unsigned kAnyKind = kLong | kDouble | kDate | kBoolean;
unsigned kindsOf(std::string_view text, const TextForm& form);

/// `text` is UTF-8, or ASCII for all types but texts; the value may show it.
ValueView readValue(FieldType type, std::string_view text, const TextForm& form,
                    std::string& scratch);

/// Appends the text of a value without quotes, in UTF-8; nothing for Null.
void appendValue(std::string& out, FieldType type, ValueView value, const TextForm& form);

/// A date by a form such as "dd.mm.yyyy hh:nn:ss": d m y h n s are read in their order, "mmm" is
/// the English name of a month, "m" behind "h" means minutes. Nothing when it is no such date.
bool parseDateAs(std::string_view form, std::string_view text, double& date);
void appendDateAs(std::string& out, std::string_view form, double date);

}  // namespace velnor::text
