// access/formats/xbase/index_tag.h - what an index file says of one of its indexes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/xbase/index_key.h"

namespace velnor::xbase {

struct IndexTag {
    std::string name;           ///< UTF-8
    std::string expression;     ///< UTF-8
    std::string condition;      ///< UTF-8; empty: all records
    bool unique = false;        ///< of records with equal keys only one is entered
    bool refusesEqual = false;  ///< records with equal keys may not be
    bool primary = false;
    bool descending = false;
    bool nullByte = false;
    std::uint32_t keyLength = 0;
    char keyLetter = 'C';           ///< MDX: C, N, F, D, I; NDX: C, N
    std::uint32_t place = 0;        ///< where its header stands
    std::uint8_t options = 0;       ///< the option bits of its header
    std::uint8_t languageMark = 0;  ///< MDX
    std::string trouble;            ///< why it can be listed only; empty when it is sound
    bool walkable = true;           ///< its entries can be walked
};

/// What a new index is made with.
struct NewTag {
    std::string name;
    std::string expression;  ///< bytes of the table's code page
    std::string condition;
    bool unique = false;
    bool refusesEqual = false;
    bool descending = false;
    bool plainField = false;
    std::uint8_t options = 0;  ///< of the header that it is made after: primary and candidate stay
    char keyLetter = 'C';
    std::uint8_t languageMark = 0;
    KeyForm form;
};

/// A file with one index or several.
class IndexFileFormat {
public:
    virtual ~IndexFileFormat() = default;
    /// 3197 when the file is no such index file. `baseName`: the name of a single index.
    virtual std::vector<IndexTag> tags(std::string_view baseName) = 0;
    /// `form`: of its keys, for files that do not compare them as bytes.
    virtual std::unique_ptr<NodeStore> nodes(const IndexTag& tag, std::uint8_t pad,
                                             const KeyForm& form) = 0;
    /// Makes the header and enters the name. The tree has no root yet.
    virtual IndexTag addTag(const NewTag& made) = 0;
    /// The tree is dropped already.
    virtual void removeTag(const IndexTag& tag) = 0;
    /// Counts a change to these indexes, for other programs that have the file open.
    virtual void touch(const std::vector<const IndexTag*>& changed) = 0;
};

/// Text of a header up to its first zero byte, without blanks around.
std::string_view headerText(std::string_view bytes);

}  // namespace velnor::xbase
