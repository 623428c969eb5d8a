// access/formats/xbase/cdx_leaf.h - the packed leaf of a CDX or compact IDX file, and entries that
// come into it while it stays packed.
//
// Entry i tells how many bytes of its key are those of the key before it, and how many pad bytes
// end it; what is between is kept. The entries stand behind the head, one after the other; the kept
// bytes fill the node from its end downward.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "access/formats/xbase/cdx_node.h"

namespace velnor::xbase {

using CdxBytes = std::span<std::uint8_t, kCdxNodeBytes>;

/// The leaf as rising full keys; 3197 when it is not sound.
void decodeCdxLeaf(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint8_t pad,
                   TreeNode& node);

/// Searches the leaf for the first entry that is not in front of what is wanted, and looks at no
/// other behind it. False when it is not sound as far as that.
bool searchCdxLeaf(std::span<const std::uint8_t, kCdxNodeBytes> bytes, std::uint32_t keyLength,
                   std::uint8_t pad, const Wanted& wanted, NodeHit& hit);

/// Packs keys one after the other, as many as a leaf takes.
class CdxLeafPacker {
public:
    CdxLeafPacker(std::uint32_t keyLength, std::uint8_t pad) : keyLength_(keyLength), pad_(pad) {}

    /// Starts an empty leaf.
    void begin();
    /// False when the leaf has no room; the first entry always has.
    bool add(const std::uint8_t* key, const std::uint8_t* before, std::uint32_t record);
    std::size_t count() const { return shares_.size(); }
    /// Writes what was added; the keys are those that add() was given. All of the leaf but the
    /// first twelve bytes.
    void write(const std::uint8_t* keys, const std::uint32_t* records, CdxBytes bytes) const;

private:
    struct Shares {
        std::uint16_t before, pads;
    };
    std::uint32_t keyLength_;
    std::uint8_t pad_;
    std::uint32_t largest_ = 0;
    std::size_t keyBytes_ = 0;
    std::vector<Shares> shares_;
};

/// Enters a key in front of others of the leaf. False, and nothing is changed, when the leaf has no
/// room for it, the entry would be the last one, or the leaf is not of the usual form.
bool insertIntoCdxLeaf(CdxBytes bytes, std::uint32_t keyLength, std::uint8_t pad,
                       const std::uint8_t* key, std::uint32_t record);

}  // namespace velnor::xbase
