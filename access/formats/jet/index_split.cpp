// Pages of a tree that come and go: a full one is cut in two, an empty one taken out.
#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/jet/jet_index.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

constexpr std::size_t kChildBytes = 4;

}  // namespace

std::uint8_t IndexTree::levelAt(std::size_t depth) const
{
    return static_cast<std::uint8_t>(path_.size() - depth);
}

void IndexTree::insertRebuilding(PageRef& page, const IndexPageView& leaf, int index)
{
    content_.load(leaf);
    content_.insert(index, entry_);
    if (content_.fits(format_, true)) {
        writeIndexPage(format_, page.edit(), content_);
        return;
    }
    struct Returning {
        IndexTree& tree;
        ~Returning() { tree.returnReserve(); }
    } const returning{*this};
    const std::uint32_t number = page.number();
    page.release();
    reservePages(leaf.next(), content_.longest());
    split(path_.size(), number, content_, index);
}

/// Where an overfull page is cut: the first entry of its right half. A load in key order leaves
/// full pages behind it: the new last entry of the last page goes on a page of its own.
int IndexTree::cutAt(const IndexPageContent& content, bool leaf, bool rightmost, int added) const
{
    const int count = content.count();
    if (rightmost && added == count - 1)
        return count - 1;
    if (!leaf)
        return content.middle(format_);
    const int middle = content.middle(format_);
    const auto area = static_cast<std::size_t>(format_.indexPage.entryBytes);
    if (content.packedSize(format_, 0, middle) <= area &&
        content.packedSize(format_, middle, count) <= area)
        return middle;
    // The new entry does not share what packs all others: it stands at an end, and alone.
    return added == 0 ? 1 : count - 1;
}

/// Cuts the page at `depth` of the path, whose content no longer fits, in two.
void IndexTree::split(std::size_t depth, std::uint32_t number, IndexPageContent& content, int added)
{
    nodesChanged();
    const bool leaf = depth == path_.size();
    PageRef page = space_.page(number);
    const std::uint32_t next =
        neighbour(loadLE<std::uint32_t>(page.data() + format_.indexPage.next), leaf);
    const int cut = cutAt(content, leaf, next == 0, added);
    IndexPageContent right;
    content.moveTail(cut, right);
    const KeyView last = content.entry(content.count() - 1);
    std::vector<std::uint8_t> separator(last.begin(), last.end());
    if (!leaf) {  // the last child goes into the tail, its separator one level up
        separator.resize(separator.size() - kChildBytes);
        content.tail = content.child(content.count() - 1);
        content.erase(content.count() - 1);
    }
    if (depth == 0) {
        page.release();
        return growRoot(content, right, separator);
    }
    const std::uint32_t made = takePage();
    {
        PageRef fresh = space_.page(made);
        std::uint8_t* bytes = fresh.edit();
        initIndexPage(format_, bytes, page.data()[0], levelAt(depth), owner_);
        setPrevious(format_, bytes, number);
        setNext(format_, bytes, next);
        writeIndexPage(format_, bytes, right);
    }
    writeIndexPage(format_, page.edit(), content);
    setNext(format_, page.edit(), made);
    page.release();
    if (next != 0)
        setPrevious(format_, space_.page(next).edit(), made);
    addToParent(depth - 1, number, made, separator);
}

/// The root keeps its page: both halves move to new pages, and the root becomes a node over them.
void IndexTree::growRoot(IndexPageContent& left, IndexPageContent& right, KeyView separator)
{
    const std::uint32_t first = takePage();
    const std::uint32_t second = takePage();
    PageRef root = space_.page(root_);
    const std::uint8_t type = root.data()[0];
    const auto lay = [&](std::uint32_t number, const IndexPageContent& content,
                         std::uint32_t previous, std::uint32_t next) {
        PageRef page = space_.page(number);
        std::uint8_t* bytes = page.edit();
        initIndexPage(format_, bytes, type, levelAt(0), owner_);
        setPrevious(format_, bytes, previous);
        setNext(format_, bytes, next);
        writeIndexPage(format_, bytes, content);
    };
    lay(first, left, 0, second);
    lay(second, right, first, 0);
    IndexPageContent top;
    top.insertChild(0, separator, first);
    top.tail = second;
    initIndexPage(format_, root.edit(), page_type::kIndexNode,
                  static_cast<std::uint8_t>(levelAt(0) + 1), owner_);
    writeIndexPage(format_, root.edit(), top);
}

/// `left` was cut: what pointed to it now points to `right`, and a separator for it goes before.
void IndexTree::addToParent(std::size_t depth, std::uint32_t left, std::uint32_t right,
                            KeyView separator)
{
    const Step step = path_[depth];
    IndexPageContent content;
    IndexPageView view;
    PageRef page = load(step.page, view);
    content.load(view);
    content.setChild(step.child, right);
    content.insertChild(step.child, separator, left);
    if (content.fits(format_, false)) {
        writeIndexPage(format_, page.edit(), content);
        return;
    }
    page.release();
    split(depth, step.page, content, step.child);
}

/// A page linked beside another, checked to be one of this tree. Of nodes, whose links nobody
/// reads, others leave all sorts of numbers: those are taken for none.
std::uint32_t IndexTree::neighbour(std::uint32_t number, bool leaf)
{
    if (number == 0)
        return 0;
    try {
        IndexPageView view;
        const PageRef page = load(number, view);
        if (view.leaf() == leaf)
            return number;
    } catch (const EngineError&) {
        if (leaf)
            throw;
    }
    if (leaf)
        damaged("its leaves do not follow each other.");
    return 0;
}

/// Takes every page that the coming split may need, and looks at every page that it will touch,
/// before anything is changed.
void IndexTree::reservePages(std::uint32_t nextLeaf, std::size_t longestEntry)
{
    neighbour(nextLeaf, true);
    std::size_t wanted = 1;
    std::size_t depth = path_.size();
    for (; depth > 0; --depth, ++wanted) {
        IndexPageView view;
        const PageRef page = load(path_[depth - 1].page, view);
        if (view.room() >= longestEntry + kChildBytes)
            break;
        for (int i = 0; i < view.count(); ++i)
            longestEntry = std::max(longestEntry, view.length(i));
    }
    if (depth == 0)
        ++wanted;  // the root moves both halves
    while (reserve_.size() < wanted)
        reserve_.push_back(reservePage());
}

std::uint32_t IndexTree::reservePage()
{
    reserve_.reserve(reserve_.size() + 1);
    const std::uint32_t page = space_.allocate();
    try {
        if (map_)
            map_->add(page);
    } catch (const std::exception&) {
        space_.release(page, page_type::kFreed);
        throw;
    }
    return page;
}

void IndexTree::returnReserve() noexcept
{
    for (const std::uint32_t page : reserve_) {
        try {
            freePage(page);
        } catch (const std::exception&) {
            continue;  // the page is lost until the file is compacted; the tree is right
        }
    }
    reserve_.clear();
}

std::uint32_t IndexTree::takePage()
{
    if (reserve_.empty())
        return reservePage();
    const std::uint32_t page = reserve_.front();
    reserve_.erase(reserve_.begin());
    return page;
}

void IndexTree::freePage(std::uint32_t page)
{
    if (map_)
        map_->remove(page);
    space_.release(page, page_type::kFreed);
}

/// Takes a page that has become empty out of its chain and its parent, and frees it.
void IndexTree::removePage(std::size_t depth, std::uint32_t number)
{
    if (depth == 0)
        return clearRoot();
    nodesChanged();
    const Step step = path_[depth - 1];
    IndexPageContent content;
    IndexPageView view;
    {
        PageRef parent = load(step.page, view);
        content.load(view);
    }
    PageRef page = load(number, view);
    const std::uint32_t previous = neighbour(view.previous(), view.leaf());
    const std::uint32_t next = neighbour(view.next(), view.leaf());
    page.release();
    if (previous != 0)
        setNext(format_, space_.page(previous).edit(), next);
    if (next != 0)
        setPrevious(format_, space_.page(next).edit(), previous);
    if (content.empty()) {  // it was the tail and the only child
        removePage(depth - 1, step.page);
    } else {
        if (step.child >= content.count()) {
            content.tail = content.child(content.count() - 1);
            content.erase(content.count() - 1);
        } else {
            content.erase(step.child);
        }
        writeIndexPage(format_, space_.page(step.page).edit(), content);
    }
    freePage(number);
}

}  // namespace velnor::jet
