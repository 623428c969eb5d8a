// access/formats/jet/column_width.h - how many bytes a value of a column takes.
#pragma once

#include <cstdint>

#include "access/formats/jet/jet_format.h"

namespace velnor::jet {

/// Bytes of every value of a type; 0 for Boolean, which lies in the mask of the row alone, and for
/// types whose values differ in length.
constexpr int fixedWidth(std::uint8_t type)
{
    switch (type) {
    case column_type::kByte:
        return 1;
    case column_type::kInteger:
        return 2;
    case column_type::kLong:
    case column_type::kSingle:
        return 4;
    case column_type::kCurrency:
    case column_type::kDouble:
    case column_type::kDate:
        return 8;
    case column_type::kGuid:
        return 16;
    case column_type::kDecimal:
        return 17;
    default:
        return 0;
    }
}

/// What the descriptor of such a column says of its length: Boolean counts for one there.
constexpr int describedWidth(std::uint8_t type)
{
    return type == column_type::kBoolean ? 1 : fixedWidth(type);
}

}  // namespace velnor::jet
