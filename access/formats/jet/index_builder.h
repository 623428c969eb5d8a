// access/formats/jet/index_builder.h - builds a tree from ascending entries, left to right, every
// page full.
//
// New pages are taken for all but the root, which is written last: until finish() the old tree
// stands, and abandon() gives the new pages back.
#pragma once

#include <cstdint>
#include <vector>

#include "access/formats/jet/jet_index.h"

namespace velnor::jet {

class IndexBuilder {
public:
    explicit IndexBuilder(IndexTree& tree);
    ~IndexBuilder();
    IndexBuilder(const IndexBuilder&) = delete;
    IndexBuilder& operator=(const IndexBuilder&) = delete;

    /// 3001 when the entry is not greater than the one before.
    void add(KeyView key, RowPointer row);
    std::uint64_t count() const { return count_; }
    /// Writes the root. The pages of the tree that stood there before are the caller's to free.
    void finish();

private:
    struct Level {
        IndexPageContent open;       // entries of the page being filled
        std::uint32_t page = 0;      // its number, 0 until a second page is needed
        std::uint32_t previous = 0;  // the page before it
        std::uint32_t shared = 0;    // bytes that its entries have in common
    };
    void put(std::size_t level, KeyView entry);
    bool hasRoom(Level& level, bool leaf, KeyView entry) const;
    void closePage(std::size_t level);
    void write(Level& level, std::size_t number, std::uint32_t page, std::uint32_t next);
    std::uint32_t takePage();

    IndexTree& tree_;
    std::vector<Level> levels_;
    std::vector<std::uint32_t> taken_;
    std::vector<std::uint8_t> last_;
    std::vector<std::uint8_t> entry_;
    std::uint64_t count_ = 0;
    bool finished_ = false;
};

}  // namespace velnor::jet
