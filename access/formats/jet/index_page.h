// access/formats/jet/index_page.h - one page of an index: a view of its entries, and its
// rebuilding.
//
// An entry of a leaf is key and place (4 bytes, big-endian); of a node it is the last entry of a
// child, then the child's page (4 bytes, big-endian). The last child of a node stands in the tail
// field only. With a prefix length p all entries but the first lack their first p bytes, which are
// those of the first.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "access/formats/jet/jet_format.h"

namespace velnor::jet {

/// The entries of a page that is held elsewhere: good while the page is held and unchanged.
class IndexPageView {
public:
    /// 3197 when the page is not an index page of this owner or its entries are damaged.
    void open(const JetFormat& format, const std::uint8_t* page, std::uint32_t number,
              std::uint32_t owner);

    bool leaf() const { return page_[0] == page_type::kIndexLeaf; }
    std::uint8_t level() const { return page_[format_->indexPage.level]; }
    std::uint32_t previous() const;
    std::uint32_t next() const;
    std::uint32_t tail() const;
    std::uint32_t prefix() const { return prefix_; }
    int count() const { return count_; }
    std::uint32_t used() const { return count_ ? ends_[count_ - 1] : 0u; }

    /// Bytes of an entry as stored: the first whole, every further one without the prefix.
    std::span<const std::uint8_t> stored(int index) const;
    /// Length of the whole entry.
    std::size_t length(int index) const;
    /// Replaces what `out` held by the whole entry.
    void entry(int index, std::vector<std::uint8_t>& out) const;
    /// Child page of an entry of a node; index == count() is the tail.
    std::uint32_t child(int index) const;

    /// The first entry that is >= `wanted`; count() when all are smaller. In a node the child page
    /// at the end of each entry does not take part.
    int lowerBound(std::span<const std::uint8_t> wanted) const;

private:
    int compare(int index, std::span<const std::uint8_t> wanted, std::size_t ignored) const;

    const JetFormat* format_ = nullptr;
    const std::uint8_t* page_ = nullptr;
    std::uint32_t prefix_ = 0;
    int count_ = 0;
    std::array<std::uint16_t, 3616> ends_;
};

/// The entries of a page in memory, whole, to be changed and written back.
class IndexPageContent {
public:
    void clear();
    void load(const IndexPageView& view);
    int count() const { return static_cast<int>(ends_.size()); }
    std::span<const std::uint8_t> entry(int index) const;
    void insert(int index, std::span<const std::uint8_t> entry);
    void append(std::span<const std::uint8_t> entry) { insert(count(), entry); }
    void erase(int index);
    void setChild(int index, std::uint32_t page);
    /// Entries [from, count) go to `right`, which is emptied first.
    void moveTail(int from, IndexPageContent& right);
    std::size_t plainSize() const { return bytes_.size(); }
    /// What all entries have in common at their beginning.
    std::uint32_t commonPrefix(const JetFormat& format) const;
    std::size_t sizeWith(std::uint32_t prefix) const;
    /// The entry after which about half of the bytes stand, so that both sides have one.
    int middle() const;

    std::uint32_t tail = 0;

private:
    std::vector<std::uint8_t> bytes_;
    std::vector<std::uint32_t> ends_;
};

/// Lays a new, empty index page.
void initIndexPage(const JetFormat& format, std::uint8_t* page, std::uint8_t type,
                   std::uint8_t level, std::uint32_t owner);
/// Writes entries, mask, free count, prefix and tail; links and level stay. The content must fit:
/// without prefix when it can, else (leaves only) with the longest common one. False when it does
/// not fit.
bool writeIndexPage(const JetFormat& format, std::uint8_t* page, const IndexPageContent& content);
void setPrevious(const JetFormat& format, std::uint8_t* page, std::uint32_t number);
void setNext(const JetFormat& format, std::uint8_t* page, std::uint32_t number);

}  // namespace velnor::jet
