// access/formats/paradox/cipher.h - the cipher of tables with a password.
//
// It works on chunks of 256 bytes under four parameters, each a byte. A table is deciphered with a
// key of 32 bits that stands in its header: a password is right when its key is that one.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace velnor::paradox {

inline constexpr std::size_t kCipherChunk = 256;

struct CipherParameters {
    std::uint8_t a = 0, b = 0, c = 0, d = 0;
};

/// In place; `chunk` has 256 bytes.
void encipherChunk(std::span<std::uint8_t> chunk, const CipherParameters& by);
void decipherChunk(std::span<std::uint8_t> chunk, const CipherParameters& by);

/// A data block of a table or index, its header included: the parameters are the two low bytes of
/// the key, the number of the chunk and the number of the block.
void encipherBlock(std::span<std::uint8_t> block, std::uint32_t key, std::uint32_t number);
void decipherBlock(std::span<std::uint8_t> block, std::uint32_t key, std::uint32_t number);

/// Whole chunks of an MB file: all of them are under the same parameters.
void encipherLongValues(std::span<std::uint8_t> chunks, std::uint32_t key);
void decipherLongValues(std::span<std::uint8_t> chunks, std::uint32_t key);

/// The key of a password, given in the code page of the table.
std::uint32_t keyOfPassword(std::string_view password);

}  // namespace velnor::paradox
