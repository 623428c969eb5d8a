// access/formats/xbase/index_tag.h - what an index file says of one of its indexes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

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
    char keyLetter = 'C';     ///< MDX: C, N, F, D, I; NDX: C, N
    std::uint32_t place = 0;  ///< where its header stands
    std::string trouble;      ///< why it can be listed only; empty when it is sound
    bool walkable = true;     ///< its entries can be walked
};

/// What a new index is made with.
struct NewTag {
    std::string name;
    std::string expression;  ///< bytes of the table's code page
    std::string condition;
    bool unique = false;
    bool descending = false;
    bool plainField = false;
    char keyLetter = 'C';
    std::uint8_t languageMark = 0;
    KeyForm form;
};

/// Text of a header up to its first zero byte, without blanks around.
std::string_view headerText(std::string_view bytes);

}  // namespace velnor::xbase
