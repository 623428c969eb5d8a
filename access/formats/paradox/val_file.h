// access/formats/paradox/val_file.h - the checks of a table: which fields are required, which have
// a default. Lookups, limits and relations are known to be there, no more.
//
// Files of level 3 have another layout and are not read.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velnor::paradox {

struct FieldCheck {
    std::uint8_t field = 0;  ///< position in the table, from 0
    bool required = false;
    std::vector<std::uint8_t>
        defaultValue;                  ///< in the form of the record; empty when there is none
    std::vector<std::uint8_t> stored;  ///< the whole record of the check
};

struct ValFile {
    std::uint8_t structureStamp = 0;  ///< of the table that it was made for
    std::uint8_t version = 0;
    bool relations = false;  ///< rules that tie it to other tables
    std::vector<FieldCheck> checks;
    std::vector<std::uint16_t> fieldIds;
};

/// Nothing when the file is of level 3, or does not hold together. `fieldLengths`: bytes of each
/// field of the table in its records.
std::optional<ValFile> readValFile(std::span<const std::uint8_t> bytes,
                                   std::span<const std::uint16_t> fieldLengths);

}  // namespace velnor::paradox
