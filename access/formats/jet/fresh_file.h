// access/formats/jet/fresh_file.h - the first pages of a file that is written anew after another.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "access/formats/jet/jet_file.h"

namespace velnor::jet {

/// Pages 0 to 5: the header as the other file has it, maps in which all else is free, and room for
/// the definitions of the system tables. `key` encodes the pages, 0 leaves them plain; without a
/// password the one of the other file is kept.
std::vector<std::uint8_t> freshPages(JetFile& after, std::uint32_t key,
                                     const std::optional<std::string>& password);

/// A new key for encoded pages.
std::uint32_t newEncodingKey();
/// Encodes the first pages of a file, plain so far, and puts the key into their header.
void encodePages(const JetFormat& format, std::span<std::uint8_t> pages, std::uint32_t key);

}  // namespace velnor::jet
