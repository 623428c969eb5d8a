// access/formats/jet/index_ordinals.h - the n-th entry of an index, and the number of an entry.
//
// The numbers of entries on all leaves are collected when they are first asked for, and again after
// the tree changed: a step a leaf, not an entry.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "access/formats/jet/jet_index.h"

namespace velnor::jet {

class IndexOrdinals {
public:
    explicit IndexOrdinals(IndexTree& tree) : tree_(tree) {}

    /// Puts a walker on the n-th entry, from 0; false when there are fewer.
    bool moveTo(IndexWalker& walker, std::int64_t n);
    /// The number of the entry on which a walker stands; -1 when it stands on none.
    std::int64_t of(IndexWalker& walker);

private:
    struct Leaf {
        std::uint32_t page;
        std::int64_t before;  // entries on the leaves in front of it
    };
    void collect();

    IndexTree& tree_;
    std::vector<Leaf> leaves_;
    std::unordered_map<std::uint32_t, std::size_t> places_;  // in leaves_, by page
    std::int64_t count_ = 0;
    bool known_ = false;
    std::uint64_t version_ = 0;
};

}  // namespace velnor::jet
