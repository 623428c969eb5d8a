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

    /// The same page, unchanged since it was opened, at another place in memory.
    void moveTo(const std::uint8_t* page)
    {
        page_ = page;
        entries_ = page + layout_->entries;
    }

    bool leaf() const { return page_[0] == page_type::kIndexLeaf; }
    std::uint8_t level() const { return page_[layout_->level]; }
    std::uint32_t previous() const { return word(layout_->previous); }
    std::uint32_t next() const { return word(layout_->next); }
    std::uint32_t tail() const { return word(layout_->tail); }
    std::uint32_t prefix() const { return prefix_; }
    int count() const { return count_; }
    /// Bytes of the entry area in use, and those left.
    std::uint32_t used() const { return startOf(count_); }
    std::uint32_t room() const { return static_cast<std::uint32_t>(layout_->entryBytes) - used(); }

    /// Bytes of an entry as stored: the first whole, every further one without the prefix.
    std::span<const std::uint8_t> stored(int index) const
    {
        const std::uint32_t start = startOf(index);
        return {entries_ + start, ends_[static_cast<std::size_t>(index)] - start};
    }
    /// Length of the whole entry.
    std::size_t length(int index) const
    {
        return stored(index).size() + (index > 0 ? prefix_ : 0u);
    }
    /// Replaces what `out` held by the whole entry.
    void entry(int index, std::vector<std::uint8_t>& out) const;
    bool equals(int index, std::span<const std::uint8_t> entry) const;
    /// Of a leaf: whether an entry stands under exactly this key.
    bool hasKey(int index, std::span<const std::uint8_t> key) const;
    /// Child page of an entry of a node; index == count() is the tail.
    std::uint32_t child(int index) const;

    /// The first entry that is >= `wanted` (key and place); count() when all are smaller. In a node
    /// the child page at the end of each entry does not take part.
    int lowerBound(std::span<const std::uint8_t> wanted) const;

private:
    friend bool insertInPlace(const JetFormat&, std::uint8_t*, const IndexPageView&, int,
                              std::span<const std::uint8_t>);
    friend void eraseInPlace(const JetFormat&, std::uint8_t*, const IndexPageView&, int);

    int compare(int index, std::span<const std::uint8_t> wanted) const;
    std::uint32_t word(int at) const;
    std::uint32_t startOf(int index) const
    {
        return index > 0 ? ends_[static_cast<std::size_t>(index) - 1] : 0u;
    }
    void readMask(std::uint32_t number);

    static constexpr std::size_t kMostEntries = 3648;  // bits of a mask, in whole words
    const IndexPageLayout* layout_ = nullptr;
    const std::uint8_t* page_ = nullptr;
    const std::uint8_t* entries_ = nullptr;
    std::uint32_t prefix_ = 0;
    int count_ = 0;
    std::array<std::uint16_t, kMostEntries> ends_;
};

/// The entries of a page in memory, whole, to be changed and written back.
class IndexPageContent {
public:
    void clear();
    void load(const IndexPageView& view);
    int count() const { return static_cast<int>(ends_.size()); }
    bool empty() const { return ends_.empty(); }
    std::span<const std::uint8_t> entry(int index) const
    {
        const std::uint32_t start = startOf(index);
        return std::span(bytes_).subspan(start, ends_[static_cast<std::size_t>(index)] - start);
    }
    /// The first entry from `from` on that is not before a whole entry; count() when there is none.
    int lowerBound(int from, std::span<const std::uint8_t> entry) const;
    void insert(int index, std::span<const std::uint8_t> entry);
    void append(std::span<const std::uint8_t> entry);
    /// Of a node: a separator with its child page behind it.
    void insertChild(int index, std::span<const std::uint8_t> separator, std::uint32_t page);
    void erase(int index);
    /// The child page of an entry of a node; index == count() is the tail.
    std::uint32_t child(int index) const;
    void setChild(int index, std::uint32_t page);
    /// Entries [from, count) go to `right`, which is emptied first; so does the tail.
    void moveTail(int from, IndexPageContent& right);

    std::size_t plainSize() const { return bytes_.size(); }
    std::size_t longest() const;
    /// What entries [from, to) have in common at their beginning.
    std::uint32_t commonPrefix(const JetFormat& format, int from, int to) const;
    std::uint32_t commonPrefix(const JetFormat& format) const
    {
        return commonPrefix(format, 0, count());
    }
    /// Bytes of entries [from, to) on a leaf of their own.
    std::size_t packedSize(const JetFormat& format, int from, int to) const;
    std::size_t sizeWith(std::uint32_t prefix) const
    {
        return bytes_.size() - (empty() ? 0 : prefix * (ends_.size() - 1));
    }
    bool fits(const JetFormat& format, bool leaf) const;
    /// The first entry of the right half when the page is cut in the middle of its bytes; both
    /// halves have an entry.
    int middle(const JetFormat& format) const;

    std::uint32_t tail = 0;

private:
    std::uint32_t startOf(int index) const
    {
        return index > 0 ? ends_[static_cast<std::size_t>(index) - 1] : 0u;
    }

    std::vector<std::uint8_t> bytes_;
    std::vector<std::uint32_t> ends_;
};

/// The order of the index: keys as bytes, the shorter first, then the places of the records. Both
/// are whole.
int compareEntries(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b);
/// How many bytes two entries have in common at their beginning.
std::uint32_t sharedBytes(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b);

/// Lays a new, empty index page.
void initIndexPage(const JetFormat& format, std::uint8_t* page, std::uint8_t type,
                   std::uint8_t level, std::uint32_t owner);
/// Writes entries, mask, free count, prefix and tail; links and level stay. The content must fit:
/// without prefix when it can, else (leaves only) with the longest common one.
void writeIndexPage(const JetFormat& format, std::uint8_t* page, const IndexPageContent& content);
/// Puts one entry on a page that has room for it as it is; false when the page must be rebuilt.
/// `view` is of this page and ends with the call.
bool insertInPlace(const JetFormat& format, std::uint8_t* page, const IndexPageView& view,
                   int index, std::span<const std::uint8_t> entry);
void eraseInPlace(const JetFormat& format, std::uint8_t* page, const IndexPageView& view,
                  int index);
void setPrevious(const JetFormat& format, std::uint8_t* page, std::uint32_t number);
void setNext(const JetFormat& format, std::uint8_t* page, std::uint32_t number);

}  // namespace velnor::jet
