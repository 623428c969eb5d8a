// access/formats/xbase/plain_node.h - nodes of MDX and NDX files: items of one size, with whole
// keys.
#pragma once

#include <cstdint>
#include <span>

#include "access/formats/xbase/index_key.h"
#include "access/formats/xbase/index_node.h"

namespace velnor::xbase {

/// Where things stand in a node.
struct PlainShape {
    std::uint32_t head = 0;     ///< bytes in front of the items
    std::uint32_t childAt = 0;  ///< in an item
    std::uint32_t recordAt = 0;
    std::uint32_t keyAt = 0;
    std::uint32_t item = 0;  ///< bytes of an item
    std::uint32_t mostKeys = 0;
    bool firstChildTells = false;  ///< inner: its first item has a child; else there is one behind
    KeyForm form;
};

/// 3197 when it is not sound.
void decodePlainNode(std::span<const std::uint8_t> bytes, const PlainShape& shape, TreeNode& node);
/// Everything behind the count and up to the items is left as it is; what is free becomes zero.
void encodePlainNode(const TreeNode& node, const PlainShape& shape, std::span<std::uint8_t> bytes);

}  // namespace velnor::xbase
