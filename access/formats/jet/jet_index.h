// access/formats/jet/jet_index.h - one index tree: search, walk, insert, erase, build.
//
// Entries are key bytes and the place of the record; they stand in the order of their bytes, key
// first. The same key may stand several times with different places. A tree keeps its root page for
// life. Wrong pages, loops and broken chains give 3197, never a hang: every walk is counted by the
// file's pages.
//
// An index has one IndexTree object while its file is open; all cursors and writers share it, so
// that a walker knows when the tree changed under it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "access/formats/jet/index_page.h"
#include "access/formats/jet/page_space.h"

namespace velnor::jet {

using KeyView = std::span<const std::uint8_t>;

/// One entry; the key lies in the walker or the source that gave it and dies with its next step.
struct IndexEntry {
    KeyView key;
    RowPointer row;
};

/// Gives entries in ascending order, one a call; nothing at the end.
using EntrySource = std::function<std::optional<IndexEntry>()>;

class EntryRun;
class IndexWalker;

class IndexTree {
public:
    /// `map` owns the pages of the tree; it may be null for a tree that is only read.
    IndexTree(PageSpace& space, PageMap* map, std::uint32_t root, std::uint32_t owner);
    ~IndexTree();
    IndexTree(const IndexTree&) = delete;
    IndexTree& operator=(const IndexTree&) = delete;

    std::uint32_t root() const { return root_; }
    std::uint32_t owner() const { return owner_; }

    /// Makes the root page, which is allocated and in the map already, an empty leaf.
    void clearRoot();

    /// The first record under exactly this key; nothing when there is none.
    std::optional<RowPointer> find(KeyView key);
    /// A record other than `self` under exactly this key: what makes a unique index refuse.
    /// (The caller leaves keys of which all columns are Null alone: they may repeat.)
    std::optional<RowPointer> otherWithKey(KeyView key, RowPointer self);

    /// Adds an entry; false when this very entry stands there already. All or nothing: pages that a
    /// split needs are taken before anything is changed.
    bool insert(KeyView key, RowPointer row);
    /// Removes an entry; false when it is not there.
    bool erase(KeyView key, RowPointer row);
    /// Adds an entry when somebody looks at the tree, or at settle(): for long appends. The same
    /// entry must not stand or wait already.
    void insertLater(KeyView key, RowPointer row);
    /// Whether a key is greater than every other that stands or waits. False is no answer: it may
    /// have been compared with one that is gone.
    bool beyondAll(KeyView key);
    /// Adds the entries that wait, to be called before a commit. What fails can be tried again:
    /// they go on waiting.
    void settle()
    {
        if (waiting_)
            addWaiting();
    }
    /// What the entries that wait take, in memory or not.
    std::size_t waitingBytes() const;
    /// How many keys that were not there before came with the entries added since this was asked
    /// last. A key that goes on over several leaves may be counted again.
    std::uint32_t takeNewKeys() { return std::exchange(newKeys_, 0); }

    /// Replaces the whole tree by these entries, filling its pages left to right. Returns how many
    /// entries there were. 3001 when they do not ascend.
    std::uint64_t build(const EntrySource& entries);
    /// Adds many sorted entries: by a build of all when they are more than those that stand, else
    /// leaf by leaf. Returns how many were new.
    std::uint64_t merge(std::uint64_t count, const EntrySource& entries);

    /// Gives all pages but the root back and makes the root an empty leaf.
    void clear();
    /// Gives every page back, the root too (an index or its table is dropped).
    void release();

    /// Counts changes: a walker that saw another number looks its place up again.
    std::uint64_t version() const { return version_; }
    /// To be called when pages were changed behind the tree's back.
    void pagesWentBack();
    /// The same after a rollback: entries that wait are dropped.
    void invalidate();

    /// Every page of the tree, parents before children. 3197 when it is damaged.
    std::vector<std::uint32_t> pages();
    /// Every leaf in the order of the index, with its number of entries. 3197 when it is damaged.
    void eachLeaf(const std::function<void(std::uint32_t page, int entries)>& visit);

private:
    friend class IndexWalker;
    friend class IndexBuilder;
    /// A node on the way down, and the child taken there (its number of entries: the tail).
    struct Step {
        std::uint32_t page;
        int child;
    };

    /// A node whose entries were found before, for as long as no node changes.
    struct KnownNode {
        std::uint32_t page = 0;
        std::uint64_t version = 0;
        IndexPageView view;
    };

    [[noreturn]] void damaged(const char* how) const;
    PageRef load(std::uint32_t number, IndexPageView& view);
    const IndexPageView& node(std::uint32_t number, const PageRef& page);
    void nodesChanged()
    {
        ++version_;
        ++nodeVersion_;
    }
    /// Goes down to the leaf where an entry stands or would stand; fills path_.
    PageRef descend(KeyView entry, IndexPageView& leaf);
    /// Goes down to the first or the last leaf.
    PageRef descendEdge(bool toLast, IndexPageView& leaf);
    static void requireKeySize(KeyView key);
    KeyView makeEntry(KeyView key, RowPointer row);
    std::uint8_t levelAt(std::size_t depth) const;

    void insertRebuilding(PageRef& page, const IndexPageView& leaf, int index);
    void split(std::size_t depth, std::uint32_t page, IndexPageContent& content, int added);
    void growRoot(IndexPageContent& left, IndexPageContent& right, KeyView separator);
    void addToParent(std::size_t depth, std::uint32_t left, std::uint32_t right, KeyView separator);
    int cutAt(const IndexPageContent& content, bool leaf, bool rightmost, int added) const;
    void removePage(std::size_t depth, std::uint32_t page);

    std::uint32_t neighbour(std::uint32_t number, bool leaf);
    void reservePages(std::uint32_t nextLeaf, std::size_t longestEntry);
    void returnReserve() noexcept;
    std::uint32_t reservePage();
    std::uint32_t takePage();
    void freePage(std::uint32_t page);
    std::uint64_t roughCount();
    void addWaiting();
    void raiseTop(KeyView key);
    bool behindAll(const IndexEntry& entry);
    std::uint64_t mergeBuilding(const EntrySource& entries);
    std::uint64_t mergeByLeaf(const EntrySource& entries);
    void leafBound(std::vector<std::uint8_t>& bound);

    PageSpace& space_;
    PageMap* map_;
    std::uint32_t root_;
    std::uint32_t owner_;
    const JetFormat& format_;
    std::uint64_t version_ = 0;
    std::uint64_t nodeVersion_ = 1;
    std::vector<KnownNode> nodes_;  // by page number, a few
    std::vector<Step> path_;
    std::vector<std::uint32_t> reserve_;
    std::vector<std::uint8_t> entry_;  // key and place of the entry in hand
    IndexPageContent content_;         // the leaf being rebuilt
    std::unique_ptr<IndexWalker> probe_;
    std::unique_ptr<EntryRun> aside_;
    bool waiting_ = false;                          // there are entries aside
    std::optional<std::vector<std::uint8_t>> top_;  // no key is greater; nothing when not known
    std::uint32_t newKeys_ = 0;
};

/// A place in an index. Stays right when the tree changes: the next step looks its place up again.
class IndexWalker {
public:
    explicit IndexWalker(IndexTree& tree);

    // Each returns whether it stands on an entry now. After false, start again with first, last or
    // a search.
    bool first();
    bool last();
    bool next();
    bool previous();
    /// The first entry whose key is `key`, begins with it, or comes after it.
    bool seek(KeyView key);
    /// The first entry after all whose keys are or begin with `key`.
    bool seekPast(KeyView key);
    /// The last entry before the first whose key is, begins with, or comes after `key`.
    bool seekBefore(KeyView key);
    /// The last entry whose key is or begins with `key`, or comes before it.
    bool seekLast(KeyView key);
    /// The entry of this key and place, or the first after it.
    bool seekEntry(KeyView key, RowPointer row);

    bool valid() const { return valid_; }
    /// The whole key and the place of the current entry; good until the walker moves.
    KeyView key() const { return KeyView(entry_).first(entry_.size() - 4); }
    /// Key and place, as they stand in the tree.
    KeyView whole() const { return entry_; }
    RowPointer row() const;
    IndexEntry entry() const { return {key(), row()}; }
    /// Lets go of the page in hand; the walker stays where it is.
    void park();
    /// Stands on an entry by its leaf and its place there, as the tree is now.
    bool standAt(std::uint32_t leaf, int index);
    /// Leaf and place of the current entry, as the tree is now; nothing when the entry is gone.
    std::optional<std::pair<std::uint32_t, int>> standing();

private:
    bool lowerBound(KeyView wanted);
    bool standOn(int index);
    bool stepLeaf(bool forward);
    bool step(bool forward);

    IndexTree& tree_;
    PageRef page_;
    IndexPageView leaf_;
    int index_ = 0;
    bool valid_ = false;
    std::uint64_t version_ = 0;
    bool forward_ = true;                // the way of the last step to another leaf
    std::uint32_t passed_ = 0;           // leaves passed that way since the last search
    std::vector<std::uint8_t> entry_;    // key and place, whole
    std::vector<std::uint8_t> scratch_;  // what is being looked for
};

}  // namespace velnor::jet
