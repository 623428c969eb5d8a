// access/formats/paradox/record_names.h - names for records that stay while records move.
//
// Records of a keyed table move with every insert and delete; what stays is the key. So a name is
// made of the key: of all its bytes when they are few, else of a hash of them and of the block that
// held the record, which is where it is looked for first. Nothing has to be remembered for that.
// Only a record that was given another key, or took over the key of one that was, has its name kept
// here. Records of a table without a key do not move: their names are their places.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "access/formats/driver.h"

namespace velnor::paradox {

class RecordNames {
public:
    /// `exact`: the key can be searched for, so short keys need no block.
    RecordNames(std::size_t keyLength, bool exact)
        : keyLength_(keyLength), whole_(exact && keyLength <= 7)
    {
    }

    /// What a name says about where its record is.
    struct Hint {
        std::string key;  ///< the whole key; empty when only its hash is known
        std::uint64_t hash = 0;
        std::uint32_t block = 0;
    };

    RowId nameOf(const std::uint8_t* key, std::uint32_t block) const;
    Hint hintOf(RowId name) const;
    /// Whether a key has this hash.
    bool hashFits(const std::uint8_t* key, std::uint64_t hash) const { return hashOf(key) == hash; }

    /// A new record with this key.
    RowId added(const std::uint8_t* key, std::uint32_t block);
    void removed(const std::uint8_t* key);
    /// The record with the name got another key.
    void renamed(RowId name, const std::uint8_t* from, const std::uint8_t* to, std::uint32_t block);
    /// True when the record with this key has this name.
    bool isNamed(const std::uint8_t* key, RowId name) const;
    void forget();

private:
    RowId natural(const std::uint8_t* key, std::uint32_t block) const;
    std::uint64_t hashOf(const std::uint8_t* key) const;
    std::string text(const std::uint8_t* key) const
    {
        return {reinterpret_cast<const char*>(key), keyLength_};
    }

    std::size_t keyLength_;
    bool whole_;
    std::unordered_map<RowId, std::string> keyOf_;
    std::unordered_map<std::string, RowId> nameOf_;
    std::uint64_t given_ = 0;
};

}  // namespace velnor::paradox
