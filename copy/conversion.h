// copy/conversion.h - what a value becomes on its way from one field type into another.
//
// The whole table of rules is here; what has no rule is not written, and the target field stays as
// AddNew made it. No heap a value: texts are views into the source or into the caller's scratch,
// whose capacity is kept from record to record.
#pragma once

#include <string>
#include <string_view>

#include "access/value.h"

namespace velnor {

/// What is done for a pair of field types (the engine's Field.Type numbers).
enum class Conversion : unsigned char {
    NotWritten,
    AsItIs,
    CutText,  ///< Text to Text: the first characters that the target holds; Null stays Null
    ToText,   ///< any other type to Text: never cut, so that a longer text fails at the target
    LeadingNumber,  ///< Text to Double, Long, Integer: "12abc" is 12, "abc" is 0; Null is error 94
};

Conversion conversionFor(int sourceType, int targetType);

/// Puts into `out` what `how` makes of the source value; false when nothing is to be written.
/// `out` lives as long as the source view and until `scratch` is used again.
bool convert(ValueView source, Conversion how, int sourceType, int targetSize, std::string& scratch,
             ValueView& out);

/// The same in one step, for a single value.
inline bool convert(ValueView source, int sourceType, int targetType, int targetSize,
                    std::string& scratch, ValueView& out)
{
    return convert(source, conversionFor(sourceType, targetType), sourceType, targetSize, scratch,
                   out);
}

/// The leading number of a UTF-8 text, as text::val reads it; without heap for plain numbers.
double leadingNumber(std::string_view text);

}  // namespace velnor
