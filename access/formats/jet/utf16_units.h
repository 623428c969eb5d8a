// access/formats/jet/utf16_units.h - UTF-8 to UTF-16 units, one at a time: what sizes, compression
// and weights count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velnor::jet {

/// One character of UTF-8 at `at`, which moves behind it. What is no UTF-8 gives U+FFFD, one byte a
/// time.
inline std::uint32_t takeCharacter(std::string_view utf8, std::size_t& at)
{
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(utf8[i]); };
    const std::uint32_t lead = byte(at++);
    if (lead < 0x80)
        return lead;
    const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    static constexpr std::uint32_t kLowest[] = {0, 0x80, 0x800, 0x10000};
    if (lead < 0xC2 || lead > 0xF4 || utf8.size() - at < static_cast<std::size_t>(more))
        return 0xFFFD;
    std::uint32_t c = lead & (0x3Fu >> more);
    for (int i = 0; i < more; ++i) {
        const std::uint32_t next = byte(at + static_cast<std::size_t>(i));
        if ((next & 0xC0) != 0x80)
            return 0xFFFD;
        c = c << 6 | (next & 0x3F);
    }
    if (c < kLowest[more] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))
        return 0xFFFD;
    at += static_cast<std::size_t>(more);
    return c;
}

/// Calls `unit(char16_t)` for each UTF-16 unit; a character outside the first plane gives two. Ends
/// early when it returns false.
template <class F> void forEachUnit(std::string_view utf8, F&& unit)
{
    for (std::size_t at = 0; at < utf8.size();) {
        const std::uint32_t c = takeCharacter(utf8, at);
        if (c < 0x10000) {
            if (!unit(static_cast<char16_t>(c)))
                return;
            continue;
        }
        if (!unit(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10))) ||
            !unit(static_cast<char16_t>(0xDC00 + (c & 0x3FF))))
            return;
    }
}

}  // namespace velnor::jet
