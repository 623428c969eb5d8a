#include "access/formats/jet/jet_index.h"

#include <algorithm>
#include <string>

#include "access/engine_error.h"
#include "access/formats/jet/entry_run.h"
#include "access/formats/jet/index_builder.h"
#include "access/formats/jet/index_keys.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

constexpr std::size_t kMaxDepth = 12;
constexpr std::size_t kPlaceBytes = 4;

}  // namespace

IndexTree::IndexTree(PageSpace& space, PageMap* map, std::uint32_t root, std::uint32_t owner)
    : space_(space), map_(map), root_(root), owner_(owner), format_(space.format())
{
}

IndexTree::~IndexTree() = default;

void IndexTree::damaged(const char* how) const
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      "The index with root page " + std::to_string(root_) + " is damaged: " + how);
}

void IndexTree::clearRoot()
{
    PageRef page = space_.page(root_);
    initIndexPage(format_, page.edit(), page_type::kIndexLeaf, 0, owner_);
    nodesChanged();
}

PageRef IndexTree::load(std::uint32_t number, IndexPageView& view)
{
    if (number == 0)
        damaged("a pointer to a page is missing.");
    PageRef page = space_.page(number);
    view.open(format_, page.data(), number, owner_);
    return page;
}

PageRef IndexTree::descend(KeyView entry, IndexPageView& leaf)
{
    path_.clear();
    std::uint32_t number = root_;
    for (;;) {
        if (number == 0)
            damaged("a pointer to a page is missing.");
        PageRef page = space_.page(number);
        if (page.data()[0] != page_type::kIndexNode) {
            leaf.open(format_, page.data(), number, owner_);
            return page;
        }
        if (path_.size() == kMaxDepth)
            damaged("it is too deep.");
        const IndexPageView& view = node(number, page);
        const int child = view.lowerBound(entry);
        path_.push_back({number, child});
        number = view.child(child);
    }
}

const IndexPageView& IndexTree::node(std::uint32_t number, const PageRef& page)
{
    constexpr std::size_t kKnown = 16;
    if (nodes_.empty())
        nodes_.resize(kKnown);
    KnownNode& known = nodes_[number % kKnown];
    if (known.page == number && known.version == nodeVersion_) {
        known.view.moveTo(page.data());
    } else {
        known.version = 0;
        known.view.open(format_, page.data(), number, owner_);
        known.page = number;
        known.version = nodeVersion_;
    }
    return known.view;
}

PageRef IndexTree::descendEdge(bool toLast, IndexPageView& leaf)
{
    settle();
    std::uint32_t number = root_;
    for (std::size_t depth = 0; depth <= kMaxDepth; ++depth) {
        PageRef page = load(number, leaf);
        if (leaf.leaf())
            return page;
        number = leaf.child(toLast ? leaf.count() : 0);
    }
    damaged("it is too deep.");
}

void IndexTree::requireKeySize(KeyView key)
{
    if (key.empty() || key.size() > kLongestKey)
        throw EngineError(EngineErrorNumber::InvalidArgument, "An index key is empty or too long.");
}

KeyView IndexTree::makeEntry(KeyView key, RowPointer row)
{
    requireKeySize(key);
    entry_.assign(key.begin(), key.end());
    entry_.resize(key.size() + kPlaceBytes);
    storeBE(entry_.data() + key.size(), row.word());
    return entry_;
}

std::optional<RowPointer> IndexTree::find(KeyView key)
{
    return otherWithKey(key, RowPointer{});
}

std::optional<RowPointer> IndexTree::otherWithKey(KeyView key, RowPointer self)
{
    if (!probe_)
        probe_ = std::make_unique<IndexWalker>(*this);
    std::optional<RowPointer> found;
    for (bool there = probe_->seek(key); there && std::ranges::equal(probe_->key(), key);
         there = probe_->next()) {
        if (probe_->row() == self)
            continue;
        found = probe_->row();
        break;
    }
    probe_->park();
    return found;
}

bool IndexTree::insert(KeyView key, RowPointer row)
{
    settle();
    const KeyView entry = makeEntry(key, row);
    IndexPageView leaf;
    PageRef page = descend(entry, leaf);
    const int index = leaf.lowerBound(entry);
    if (index < leaf.count() && leaf.equals(index, entry))
        return false;
    newKeys_ += !((index > 0 && leaf.hasKey(index - 1, key)) ||
                  (index < leaf.count() && leaf.hasKey(index, key)));
    if (leaf.room() < entry.size() - std::min<std::size_t>(entry.size(), leaf.prefix()) ||
        !insertInPlace(format_, page.edit(), leaf, index, entry))
        insertRebuilding(page, leaf, index);
    raiseTop(key);
    ++version_;
    return true;
}

bool IndexTree::erase(KeyView key, RowPointer row)
{
    settle();
    const KeyView entry = makeEntry(key, row);
    IndexPageView leaf;
    PageRef page = descend(entry, leaf);
    const int index = leaf.lowerBound(entry);
    if (index == leaf.count() || !leaf.equals(index, entry))
        return false;
    ++version_;
    if (leaf.count() == 1 && !path_.empty()) {
        const std::uint32_t number = page.number();
        page.release();
        removePage(path_.size(), number);
        return true;
    }
    eraseInPlace(format_, page.edit(), leaf, index);
    return true;
}

std::uint64_t IndexTree::build(const EntrySource& entries)
{
    std::vector<std::uint32_t> old = pages();
    old.erase(old.begin());  // the root is kept
    top_.reset();
    IndexBuilder builder(*this);
    while (const auto entry = entries())
        builder.add(entry->key, entry->row);
    builder.finish();
    for (const std::uint32_t page : old)
        freePage(page);
    return builder.count();
}

std::uint64_t IndexTree::roughCount()
{
    std::uint64_t count = 1;
    std::uint32_t number = root_;
    for (std::size_t depth = 0; depth <= kMaxDepth; ++depth) {
        IndexPageView view;
        const PageRef page = load(number, view);
        if (view.leaf())
            return count * static_cast<std::uint64_t>(view.count());
        count *= static_cast<std::uint64_t>(view.count()) + 1;
        number = view.child(0);
    }
    return count;
}

void IndexTree::clear()
{
    const std::vector<std::uint32_t> all = pages();
    top_.reset();
    clearRoot();
    for (std::size_t i = 1; i < all.size(); ++i)
        freePage(all[i]);
}

void IndexTree::release()
{
    const std::vector<std::uint32_t> all = pages();
    nodesChanged();
    for (const std::uint32_t page : all)
        freePage(page);
}

void IndexTree::eachLeaf(const std::function<void(std::uint32_t page, int entries)>& visit)
{
    IndexPageView leaf;
    PageRef page = descendEdge(false, leaf);
    for (std::uint32_t seen = 0; seen <= space_.pageCount(); ++seen) {
        visit(page.number(), leaf.count());
        if (leaf.next() == 0)
            return;
        page = load(leaf.next(), leaf);
        if (!leaf.leaf())
            break;
    }
    damaged("its leaves do not follow each other.");
}

std::vector<std::uint32_t> IndexTree::pages()
{
    settle();
    std::vector<std::uint32_t> found{root_};
    std::vector<std::size_t> depths{0};
    const std::uint32_t most = space_.pageCount();
    for (std::size_t i = 0; i < found.size(); ++i) {
        IndexPageView view;
        const PageRef page = load(found[i], view);
        if (view.leaf())
            continue;
        if (depths[i] == kMaxDepth)
            damaged("it is too deep.");
        for (int child = 0; child <= view.count(); ++child) {
            found.push_back(view.child(child));
            depths.push_back(depths[i] + 1);
        }
        if (found.size() > most)
            damaged("it goes round in a circle.");
    }
    return found;
}

}  // namespace velnor::jet
