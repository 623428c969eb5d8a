// access/formats/xbase/cdx_node.h - the 512 bytes of a node of a CDX or compact IDX file.
//
// A leaf packs its keys: of each it keeps neither what the key before it begins with, nor the pad
// bytes at the end. Inner nodes hold whole keys.
#pragma once

#include <cstdint>
#include <span>

#include "access/formats/xbase/index_node.h"

namespace velnor::xbase {

inline constexpr std::size_t kCdxNodeBytes = 512;

/// 3197 when it is not sound. `pad`: the byte that ends keys of this index.
void decodeCdxNode(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint8_t pad,
                   TreeNode& node);
/// Searches a node in its bytes. False when it is not sound.
bool searchCdxNode(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint32_t keyLength,
                   std::uint8_t pad, const Wanted& wanted, NodeHit& hit);
/// False when it does not fit.
bool encodeCdxNode(const TreeNode& node, std::uint8_t pad, bool root,
                   std::span<std::uint8_t, kCdxNodeBytes> bytes);
bool cdxNodeFits(const TreeNode& node, std::uint8_t pad);
/// What stands in front of the entries, but for their number.
void putCdxHead(const TreeNode& node, bool root, std::span<std::uint8_t, kCdxNodeBytes> bytes);
std::size_t cdxMostItems(std::uint32_t keyLength);

}  // namespace velnor::xbase
