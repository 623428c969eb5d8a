// access/formats/xbase/field_encode.h - a value into one field of a record.
//
// Null is what the kind has for it: blanks, zeros, the null flag where the field has one.
// EngineError 3163 when the value is too large for the field, 3421 when it is of another type; the
// record is then unchanged.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "access/formats/xbase/dbf_header.h"
#include "access/value.h"

namespace velnor::xbase {

/// Puts what a record has where nothing was ever set.
void blankRecord(const DbfHeader& header, std::span<std::uint8_t> record);

/// Not for memo fields. `scratch` holds encoded text.
void encodeField(const DbfHeader& header, const DbfField& field, ValueView value,
                 std::uint8_t* record, std::string& scratch);

/// Points a memo field to its block; 0 is no memo.
void putMemoBlock(const DbfHeader& header, const DbfField& field, std::uint32_t block,
                  std::uint8_t* record);

/// Bytes of a text in the table's code page, '?' for what it lacks; in `scratch` unless it is
/// ASCII.
std::span<const std::uint8_t> encodeText(std::string_view utf8, const CodePage& page,
                                         std::string& scratch);

}  // namespace velnor::xbase
