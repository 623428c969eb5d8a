// access/formats/jet/properties.h - the property block of an object: names and values for the table
// and each of its fields. What we do not know is kept byte for byte: parse and build give the same
// bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "access/storage/code_page.h"

namespace velnor::jet {

/// How text is stored in a block: UTF-16LE in Jet 4, a code page in Jet 3.
struct PropertyText {
    bool jet3 = false;
    const CodePage* codePage = nullptr;  ///< Jet 3 only
};

enum class PropertyType : std::uint8_t {
    Boolean = 1,
    Byte = 2,
    Integer = 3,
    Long = 4,
    Binary = 9,
    Text = 10,
    Memo = 12,
};

struct Property {
    std::string name;       ///< UTF-8
    std::uint8_t ddl = 0;   ///< 1: part of the definition
    std::uint8_t type = 0;  ///< PropertyType, or what the file says
    std::string data;       ///< as stored
};

class PropertyBlock {
public:
    /// An empty block.
    explicit PropertyBlock(PropertyText text) : text_(text) {}
    /// 3274 when the block is damaged. No bytes at all is an empty block.
    static PropertyBlock parse(std::span<const std::uint8_t> bytes, PropertyText text);
    /// The stored form; empty when nothing is in it (the catalog then holds Null).
    std::string build() const;

    /// Owner "" is the table itself, any other the field of that name; names are blind to case.
    const Property* find(std::string_view owner, std::string_view name) const;
    std::string text(std::string_view owner, std::string_view name) const;
    std::optional<bool> flag(std::string_view owner, std::string_view name) const;

    // What layouts ask for.
    bool required(std::string_view field) const { return flag(field, "Required").value_or(false); }
    /// True when the block does not say: nothing is enforced then.
    bool allowZeroLength(std::string_view field) const
    {
        return flag(field, "AllowZeroLength").value_or(true);
    }
    std::string defaultValue(std::string_view field) const { return text(field, "DefaultValue"); }
    std::string description(std::string_view owner) const { return text(owner, "Description"); }
    std::string validationRule(std::string_view owner) const
    {
        return text(owner, "ValidationRule");
    }
    std::string validationText(std::string_view owner) const
    {
        return text(owner, "ValidationText");
    }

    void setFlag(std::string_view owner, std::string_view name, bool value);
    /// An empty value removes the property.
    void setText(std::string_view owner, std::string_view name, PropertyType type,
                 std::string_view utf8);
    void remove(std::string_view owner, std::string_view name);
    /// A field was renamed, or dropped with all its properties.
    void renameOwner(std::string_view from, std::string_view to);
    void dropOwner(std::string_view owner);

private:
    struct Owner {
        std::uint16_t kind = 0;  // chunk type: 0 table, 1 field
        std::string name;        // UTF-8
        std::vector<Property> entries;
    };
    struct Chunk {  // in file order: an owner (its place in owners_), or a kind we don't know
        int owner = -1;
        std::uint16_t kind = 0;
        std::string bytes;
    };
    Owner* findOwner(std::string_view name);
    Owner& ownerFor(std::string_view name);
    Property& entryFor(std::string_view owner, std::string_view name);

    PropertyText text_;
    std::vector<std::string> names_;  // in file order; new ones at the end
    std::vector<Owner> owners_;
    std::vector<Chunk> chunks_;
};

}  // namespace velnor::jet
