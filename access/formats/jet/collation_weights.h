// access/formats/jet/collation_weights.h - what one character adds to a key in the General sort
// order.
#pragma once

#include <array>
#include <cstdint>

namespace velnor::jet {

/// Jet 4: of one UTF-16 unit.
struct UnitWeight {
    enum class Kind : std::uint8_t {
        None,    ///< adds nothing
        Weight,  ///< primary bytes; an expansion such as ß has several weights
        Inline,  ///< no primary: a record behind the weights (hyphen, apostrophe)
        Mark,    ///< no primary: adds to the secondary of the weight before
        Kana,    ///< a weight of the Japanese syllables
    };
    Kind kind = Kind::None;
    std::uint8_t primaryBytes = 0;
    std::uint8_t weights = 0;
    std::array<std::uint8_t, 4> primary{};
    std::array<std::uint8_t, 3>
        secondary{};  ///< one a weight; of Inline and Mark the first is its value
};
UnitWeight unitWeight(char16_t unit);

/// Jet 3: of one byte of code page 1252.
struct ByteWeight {
    std::uint8_t primaryBytes;
    std::uint8_t accents;
    std::array<std::uint8_t, 2> primary;
    std::array<std::uint8_t, 2> accent;  ///< nibbles
};
const ByteWeight& byteWeight(std::uint8_t byte);

}  // namespace velnor::jet
