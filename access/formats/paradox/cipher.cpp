#include "access/formats/paradox/cipher.h"

#include <algorithm>
#include <array>

namespace velnor::paradox {
namespace {

// clang-format off
#include "access/formats/paradox/cipher_tables.inc"
// clang-format on

using Table = std::array<std::uint8_t, 256>;

/// Where each value stands in the permutation B.
constexpr Table kTableC = [] {
    Table inverse{};
    for (unsigned i = 0; i < 256; ++i)
        inverse[kTableB[i]] = static_cast<std::uint8_t>(i);
    return inverse;
}();

std::uint8_t at(const Table& table, unsigned i)
{
    return table[i & 255];
}

std::uint8_t mask(const CipherParameters& by, unsigned x, unsigned y)
{
    return static_cast<std::uint8_t>(at(kTableA, x + by.a) ^ at(kTableB, y + by.b) ^
                                     at(kTableC, y + by.c));
}

/// Where the byte at `x` of the plain chunk stands in the enciphered one.
unsigned placeOf(unsigned x, const CipherParameters& by)
{
    return (at(kTableC, x) - by.d) & 255u;
}

CipherParameters blockParameters(std::uint32_t key, std::size_t chunk, std::uint32_t number)
{
    return {static_cast<std::uint8_t>(key), static_cast<std::uint8_t>(key >> 8),
            static_cast<std::uint8_t>(chunk), static_cast<std::uint8_t>(number)};
}

CipherParameters longValueParameters(std::uint32_t key)
{
    return {static_cast<std::uint8_t>(key), static_cast<std::uint8_t>(key >> 8),
            static_cast<std::uint8_t>(key + 1), static_cast<std::uint8_t>((key >> 8) + 1)};
}

}  // namespace

void encipherChunk(std::span<std::uint8_t> chunk, const CipherParameters& by)
{
    Table made;
    for (unsigned x = 0; x < 256; ++x) {
        const unsigned y = placeOf(x, by);
        made[y] = chunk[x] ^ mask(by, x, y);
    }
    std::copy(made.begin(), made.end(), chunk.begin());
}

void decipherChunk(std::span<std::uint8_t> chunk, const CipherParameters& by)
{
    Table made;
    for (unsigned x = 0; x < 256; ++x) {
        const unsigned y = placeOf(x, by);
        made[x] = chunk[y] ^ mask(by, x, y);
    }
    std::copy(made.begin(), made.end(), chunk.begin());
}

void encipherBlock(std::span<std::uint8_t> block, std::uint32_t key, std::uint32_t number)
{
    for (std::size_t i = 0; i < block.size() / kCipherChunk; ++i)
        encipherChunk(block.subspan(i * kCipherChunk, kCipherChunk),
                      blockParameters(key, i, number));
}

void decipherBlock(std::span<std::uint8_t> block, std::uint32_t key, std::uint32_t number)
{
    for (std::size_t i = 0; i < block.size() / kCipherChunk; ++i)
        decipherChunk(block.subspan(i * kCipherChunk, kCipherChunk),
                      blockParameters(key, i, number));
}

void encipherLongValues(std::span<std::uint8_t> chunks, std::uint32_t key)
{
    for (std::size_t at = 0; at < chunks.size(); at += kCipherChunk)
        encipherChunk(chunks.subspan(at, kCipherChunk), longValueParameters(key));
}

void decipherLongValues(std::span<std::uint8_t> chunks, std::uint32_t key)
{
    for (std::size_t at = 0; at < chunks.size(); at += kCipherChunk)
        decipherChunk(chunks.subspan(at, kCipherChunk), longValueParameters(key));
}

std::uint32_t keyOfPassword(std::string_view password)
{
    if (password.empty())
        return 0;
    password = password.substr(0, 255);
    Table text;
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<std::uint8_t>(password[i % password.size()]);
    encipherChunk(text, {text[0], text[1], text[2], text[3]});
    const std::uint32_t low = text[0] | std::uint32_t{text[1]} << 8;

    std::copy(password.begin(), password.end(), text.begin());
    for (std::size_t i = password.size(); i < text.size(); ++i)
        text[i] = static_cast<std::uint8_t>(kTableA[text[i - password.size()]] ^ i);
    encipherChunk(text, {text[0], text[20], text[40], text[255]});
    std::uint8_t even = 0, odd = 0;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        even ^= text[i];
        odd ^= text[i + 1];
    }
    const std::uint32_t high = even | std::uint32_t{odd} << 8;
    return (high ? high : 1) << 16 | low;
}

}  // namespace velnor::paradox
