// access/storage/utf8.h - single characters of UTF-8, and quick steps over ASCII. For this room's
// files.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace velnor::utf8 {

inline constexpr char32_t kReplacement = 0xFFFD;
/// What next() gives for bytes that are no character.
inline constexpr char32_t kInvalid = 0xFFFFFFFF;
inline constexpr std::uint64_t kHighBits = 0x8080808080808080u;

/// How many bytes at the start are ASCII.
inline std::size_t asciiLength(const char* text, std::size_t length)
{
    std::size_t at = 0;
    for (; at + 8 <= length; at += 8) {
        std::uint64_t word;
        std::memcpy(&word, text + at, 8);
        if ((word & kHighBits) != 0)
            return at + static_cast<std::size_t>(std::countr_zero(word & kHighBits)) / 8;
    }
    while (at < length && static_cast<unsigned char>(text[at]) < 0x80)
        ++at;
    return at;
}

/// Writes one character (at most 4 bytes); returns the place behind it.
inline char* put(char* out, char32_t c)
{
    const auto tail = [](char32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (c < 0x80) {
        *out++ = static_cast<char>(c);
    } else if (c < 0x800) {
        *out++ = static_cast<char>(0xC0 | c >> 6);
        *out++ = tail(c);
    } else if (c < 0x10000) {
        *out++ = static_cast<char>(0xE0 | c >> 12);
        *out++ = tail(c >> 6);
        *out++ = tail(c);
    } else {
        *out++ = static_cast<char>(0xF0 | c >> 18);
        *out++ = tail(c >> 12);
        *out++ = tail(c >> 6);
        *out++ = tail(c);
    }
    return out;
}

/// The character at `at`, which moves behind it. Too long forms, surrogates and broken bytes are
/// kInvalid: one for each longest start of a character, as people's other programs count them.
inline char32_t next(std::string_view text, std::size_t& at)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(at++);
    if (first < 0x80)
        return first;
    if (first < 0xC2 || first > 0xF4)
        return kInvalid;
    const int more = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    char32_t c = first & (0x3Fu >> more);
    unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    for (int i = 0; i < more; ++i) {
        if (at >= text.size() || byte(at) < low || byte(at) > high)
            return kInvalid;
        c = c << 6 | (byte(at++) & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return c;
}

}  // namespace velnor::utf8
