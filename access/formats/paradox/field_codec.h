// access/formats/paradox/field_codec.h - the values of fields in a record, and back.
//
// Values are stored so that their bytes compare in their order: big-endian with the sign bit
// turned. A field of zeros is Null (a BCD by its first byte alone).
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "access/formats/paradox/field_type.h"
#include "access/storage/code_page.h"
#include "access/value.h"

namespace velnor::paradox {

/// The value of a field that is not a long one. `bytes`: its `length` bytes. Text is a view of them
/// or of `scratch`.
ValueView decodeField(const StoredField& field, const std::uint8_t* bytes, const CodePage& page,
                      std::string& scratch);

/// A text of the code page as UTF-8, a view of the bytes when they are plain ASCII.
ValueView decodeText(std::string_view bytes, const CodePage& page, std::string& scratch);

/// How a value that does not fit is met: refused with 3421 or 3163, or, for a search, turned into
/// the nearest one that can be stored.
enum class Fit { Refuse, Nearest };

/// Writes a value that is not long into its `length` bytes. False when, under Fit::Nearest, it is
/// another value that was written.
bool encodeField(const StoredField& field, ValueView value, const CodePage& page,
                 std::uint8_t* bytes, std::string& scratch, Fit fit = Fit::Refuse);

/// The autonumber or whole number of an I or + field; nothing for Null.
std::int64_t integerAt(const std::uint8_t* bytes, std::size_t length);

}  // namespace velnor::paradox
