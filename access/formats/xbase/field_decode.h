// access/formats/xbase/field_decode.h - the value of one field of a record. Memo fields give their
// block number; see memo_file.h.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "access/formats/xbase/dbf_header.h"
#include "access/value.h"

namespace velnor::xbase {

/// How many bytes are left without the blanks and zero bytes at the end.
std::size_t lengthWithoutPadding(const std::uint8_t* bytes, std::size_t length);
/// Text of the code page; a view of the bytes when they are plain ASCII, else of `scratch`.
ValueView decodeText(std::span<const std::uint8_t> bytes, const CodePage& page,
                     std::string& scratch);

/// `record`: header.recordLength bytes. Not for memo fields.
ValueView decodeField(const DbfHeader& header, const DbfField& field, const std::uint8_t* record,
                      std::string& scratch);

bool isNullByFlag(const DbfHeader& header, const DbfField& field, const std::uint8_t* record);

/// The block number of a memo field: 0 when there is no memo, kBadPointer when it is no number.
inline constexpr std::uint64_t kBadPointer = ~std::uint64_t{0};
std::uint64_t memoBlock(const DbfHeader& header, const DbfField& field, const std::uint8_t* record);

}  // namespace velnor::xbase
