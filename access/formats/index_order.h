// access/formats/index_order.h - what a search may count on in the keys of an index.
#pragma once

#include <cstdint>
#include <string_view>

#include "access/layout.h"

namespace velnor {

enum class TextKeys : std::uint8_t {
    Unknown,  ///< texts are never looked for
    Blind,    ///< texts that are equal but for the case of ASCII letters are one key
    Bytes,    ///< by character code: capitals stand before small letters
};

struct IndexOrder {
    TextKeys texts = TextKeys::Unknown;
    bool nullsFirst = false;      ///< Null is the smallest key: the index gives an order
    bool leavesEqualOut = false;  ///< of records with equal keys it holds one
};

/// A Store that knows; of the others nothing is counted on.
class IndexOrders {
public:
    virtual ~IndexOrders() = default;
    virtual IndexOrder indexOrder(std::string_view table, const IndexDef& index) = 0;
};

}  // namespace velnor
