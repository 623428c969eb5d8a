// access/formats/jet/page_codec.h - the masked header, the database password and encoded pages.
//
// Page 0 keeps its fields under a fixed mask and is never encoded. All functions on a header take
// page 0 with the mask taken off, at least kHeaderBytes of it, and tell the version by its version
// byte.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "access/storage/page_file.h"

namespace velnor::jet {

inline constexpr std::size_t kHeaderBytes = 0x98;

/// Puts the mask on or takes it off: the same step both ways.
void maskHeader(std::span<std::uint8_t> page0);

/// The key of encoded pages; 0 when the file is not encoded.
std::uint32_t encodingKey(std::span<const std::uint8_t> header);

/// The database password as UTF-8, empty when there is none. Jet 3 text through the code page.
std::string databasePassword(std::span<const std::uint8_t> header);
/// Compares by case, as the stored bytes do. Anything opens a file without password.
bool passwordMatches(std::span<const std::uint8_t> header, std::string_view utf8);
/// Writes the password; at most 20 characters (3001 when it is longer or cannot be encoded).
/// The creation date must stand in the header already: Jet 4 mixes it into the password.
void setDatabasePassword(std::span<std::uint8_t> header, std::string_view utf8);

/// RC4 over the whole of every page but page 0; each page has a state of its own, keyed by
/// the file's key and its number.
class Rc4PageCodec final : public PageCodec {
public:
    explicit Rc4PageCodec(std::uint32_t key) : key_(key) {}
    void decode(std::uint32_t page, std::span<std::uint8_t> bytes) const override;
    void encode(std::uint32_t page, std::span<std::uint8_t> bytes) const override;

private:
    std::uint32_t key_;
};

}  // namespace velnor::jet
