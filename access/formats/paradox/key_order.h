// access/formats/paradox/key_order.h - in which order a file's keys stand, and upper case for
// indexes that are blind to case.
//
// Numbers, dates and logicals always compare by their bytes. Texts do so under the orders "ascii"
// and "DBWINUS0" and in files of level 3; the weights of the national orders are not known, so keys
// with texts under one of them are not searched and nothing is put among them.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "access/formats/paradox/file_header.h"
#include "access/formats/paradox/record_chain.h"

namespace velnor::paradox {

/// Whether texts compare by their bytes under the sort order of a table.
bool textsSortByBytes(const FileHeader& table);
/// The order of a keyed table, or of an index with these fields.
KeyOrder keyOrderOf(const FileHeader& table, std::span<const StoredField> keyFields,
                    bool descending);
/// The sort order in words for people.
std::string sortOrderWords(const FileHeader& table);

/// Upper case of texts in a code page: the letters whose capital is in it.
class UpperCase {
public:
    explicit UpperCase(const CodePage& page);
    /// A text up to its zero byte; what follows becomes zeros.
    void apply(std::span<std::uint8_t> text) const;

private:
    const CodePage& page_;
    std::array<std::uint8_t, 256> table_;
};

}  // namespace velnor::paradox
