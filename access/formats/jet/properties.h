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
    std::string name;          ///< UTF-8
    std::uint16_t nameAt = 0;  ///< its place in the block's list of names
    std::uint8_t ddl = 0;      ///< 1: part of the definition
    std::uint8_t type = 0;     ///< PropertyType, or what the file says
    std::string data;          ///< as stored
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
    /// The owners that have properties.
    std::vector<std::string> owners() const;
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
    struct Name {
        std::string utf8, stored;
    };
    struct Chunk {
        std::uint16_t kind = 0;
        Name owner;
        std::vector<Property> entries;
        std::string raw;  // of a kind that we don't know
    };
    void parseNames(std::span<const std::uint8_t> body);
    Chunk parseOwner(std::uint16_t kind, std::span<const std::uint8_t> body) const;
    std::string namesBody() const;
    std::string ownerBody(const Chunk& chunk) const;
    Chunk* findOwner(std::string_view name);
    const Chunk* findOwner(std::string_view name) const;
    Chunk& ownerFor(std::string_view name);
    Property& entryFor(std::string_view owner, std::string_view name);
    std::uint16_t nameIndex(std::string_view name);

    PropertyText text_;
    std::vector<Name> names_;    // in file order; new ones at the end
    std::vector<Chunk> chunks_;  // in file order, the list of names among them
};

}  // namespace velnor::jet
