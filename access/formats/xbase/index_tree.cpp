#include "access/formats/xbase/index_tree.h"

#include <algorithm>

#include "access/engine_error.h"

namespace velnor::xbase {
namespace {

std::ptrdiff_t step(std::size_t n)
{
    return static_cast<std::ptrdiff_t>(n);
}

}  // namespace

bool IndexTree::contains(const std::uint8_t* key, std::uint32_t record)
{
    loaded_ = 0;
    return path_.seekEntry(key, record);
}

std::uint32_t IndexTree::find(const std::uint8_t* key)
{
    const std::uint32_t length = store_.keyLength();
    loaded_ = 0;
    const bool there = path_.seek(key, length) && std::memcmp(path_.key(), key, length) == 0;
    return there ? path_.record() : 0;
}

/// 1. Carries the last key of a level to the levels above it that hold it.
void IndexTree::raise(std::size_t from, bool onlyUp)
{
    const TreeNode& low = level(from).node;
    const std::uint8_t* key = low.key(low.count() - 1);
    const std::uint32_t record = low.records.back();
    for (std::size_t n = from; n-- > 0;) {
        Level& above = level(n);
        if (above.index < above.node.count()) {
            const int by = std::memcmp(above.node.key(above.index), key, store_.keyLength());
            const bool less = by < 0 || (by == 0 && above.node.records[above.index] < record);
            if (!onlyUp || less) {
                above.node.setKey(above.index, key, record);
                above.changed = true;
            }
        }
        if (above.index + 1 < above.node.children.size())
            return;
    }
}

/// The node of level n at a place, and of its children the one where an entry belongs.
std::uint32_t IndexTree::childFor(std::size_t n, std::uint32_t at, const std::uint8_t* key,
                                  std::uint32_t record)
{
    if (n >= loaded_ || level(n).node.at != at) {
        store_.load(at, level(n).node);
        loaded_ = n + 1;
        if (level(n).node.leaf || level(n).node.children.empty())
            return kNoNode;
    }
    const TreeNode& node = level(n).node;
    const std::size_t place = TreeWalker::place(node, {key, store_.keyLength(), record, true});
    return node.children[std::min(place, node.children.size() - 1)];
}

/// The usual case, without decoding the leaf: entries that come in order find the levels above it
/// loaded by the one before.
bool IndexTree::insertInLeaf(const std::uint8_t* key, std::uint32_t record)
{
    if (leafDepth_ == 0 || !store_.insertsInLeaves())
        return false;
    std::uint32_t at = store_.root();
    for (std::size_t n = 0; n + 1 < leafDepth_; ++n) {
        at = childFor(n, at, key, record);
        if (at == kNoNode)
            return false;
    }
    return store_.insertInLeaf(at, key, record);
}

void IndexTree::insert(const std::uint8_t* key, std::uint32_t record)
{
    if (insertInLeaf(key, record))
        return;
    loaded_ = 0;
    // Among equal keys without order by record the place behind all of them keeps numbers rising.
    path_.down({key, store_.keyLength(), store_.recordsAreOrdered() ? record : 0, true});
    Level& leaf = level(path_.depth_ - 1);
    if (!store_.recordsAreOrdered())
        leaf.index = TreeWalker::place(leaf.node, {key, store_.keyLength(), record, true});
    leaf.node.insertKey(leaf.index, key, record);
    leaf.changed = true;
    inserted_ = leaf.index;
    if (leaf.index + 1 == leaf.node.count() && store_.lastChildHasKey())
        raise(path_.depth_ - 1, true);
    settle();
    leafDepth_ = path_.depth_;
}

/// Stores what changed, from the leaf up; nodes that got too full are split.
void IndexTree::settle()
{
    for (std::size_t n = path_.depth_; n-- > 0;) {
        if (!level(n).changed)
            continue;
        if (store_.storeIfFits(level(n).node))
            continue;
        if (n == 0) {
            growRoot();
            ++n;
        }
        split(n);
    }
}

/// A new root above the old one, which becomes its only child for the moment.
void IndexTree::growRoot()
{
    if (path_.depth_ >= kDeepestTree)
        throw EngineError(EngineErrorNumber::Corrupt, "The tree of an index is too deep.");
    Level top;
    top.loaded = true;
    const TreeNode& old = level(0).node;
    top.node.at = store_.allocate();
    top.node.leaf = false;
    top.node.keyLength = old.keyLength;
    top.node.children.push_back(old.at);
    if (store_.lastChildHasKey())
        top.node.insertKey(0, old.key(old.count() - 1), old.records.back());
    store_.setRoot(top.node.at);
    path_.levels_.insert(path_.levels_.begin(), std::move(top));
    ++path_.depth_;
}

void IndexTree::addPiece(const TreeNode& full, std::size_t first, std::size_t count,
                         std::vector<TreeNode>& pieces)
{
    TreeNode piece;
    piece.keyLength = full.keyLength;
    piece.takeKeys(full, first, count);
    if (count == 1 || store_.fits(piece)) {
        pieces.push_back(std::move(piece));
        return;
    }
    addPiece(full, first, count / 2, pieces);
    addPiece(full, first + count / 2, count - count / 2, pieces);
}

/// In halves; only when entries come in order, the left one stays full.
void IndexTree::splitLeaf(const TreeNode& full, std::size_t inserted, std::vector<TreeNode>& pieces)
{
    const std::size_t count = full.count();
    const std::size_t left = inserted + 1 == count ? count - 1 : count / 2;
    addPiece(full, 0, left, pieces);
    addPiece(full, left, count - left, pieces);
}

void IndexTree::splitInner(const TreeNode& full, std::vector<TreeNode>& pieces,
                           std::vector<std::uint8_t>& upKey, std::uint32_t& upRecord)
{
    const bool all = store_.lastChildHasKey();
    const std::size_t children = full.children.size(), left = children / 2;
    pieces.resize(2);
    for (TreeNode& piece : pieces) {
        piece.leaf = false;
        piece.keyLength = full.keyLength;
    }
    pieces[0].takeKeys(full, 0, all ? left : left - 1);
    pieces[0].children.assign(full.children.begin(), full.children.begin() + step(left));
    pieces[1].takeKeys(full, left, full.count() - left);
    pieces[1].children.assign(full.children.begin() + step(left), full.children.end());
    upKey.assign(full.key(left - 1), full.key(left));
    upRecord = full.records[left - 1];
}

void IndexTree::linkPieces(std::vector<TreeNode>& pieces)
{
    if (!store_.linksSiblings())
        return;
    const std::uint32_t behind = pieces.front().right;
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        pieces[i - 1].right = pieces[i].at;
        pieces[i].left = pieces[i - 1].at;
    }
    pieces.back().right = behind;
    if (behind == kNoNode)
        return;
    TreeNode neighbour;
    store_.load(behind, neighbour);
    neighbour.left = pieces.back().at;
    store_.store(neighbour);
}

/// Level n goes into pieces; the level above gets a child for each.
void IndexTree::split(std::size_t n)
{
    const TreeNode& full = level(n).node;
    std::vector<TreeNode> pieces;
    std::vector<std::uint8_t> upKey;
    std::uint32_t upRecord = 0;
    if (full.leaf)
        splitLeaf(full, inserted_, pieces);
    else
        splitInner(full, pieces, upKey, upRecord);
    pieces[0].at = full.at;
    pieces[0].marks = full.marks;
    pieces[0].left = full.left;
    pieces[0].right = full.right;
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        pieces[i].at = store_.allocate();
        if (!store_.linksSiblings())
            pieces[i].left = kNoNode;
    }
    linkPieces(pieces);
    Level& above = level(n - 1);
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
        const TreeNode& piece = pieces[i];
        const bool leaf = piece.leaf;
        above.node.insertKey(above.index + i, leaf ? piece.key(piece.count() - 1) : upKey.data(),
                             leaf ? piece.records.back() : upRecord);
        above.node.children.insert(above.node.children.begin() + step(above.index + i + 1),
                                   pieces[i + 1].at);
    }
    above.changed = true;
    for (const TreeNode& piece : pieces)
        store_.store(piece);
}

bool IndexTree::erase(const std::uint8_t* key, std::uint32_t record)
{
    loaded_ = leafDepth_ = 0;
    if (!path_.seekEntry(key, record))
        return false;
    const std::size_t n = path_.depth_ - 1;
    Level& leaf = level(n);
    const bool wasLast = leaf.index + 1 == leaf.node.count();
    leaf.node.eraseKey(leaf.index);
    leaf.changed = true;
    inserted_ = 0;
    if (leaf.node.count() == 0 && n > 0)
        removeChild(n);
    else if (wasLast && leaf.node.count() > 0)
        raise(n, false);
    settle();
    return true;
}

void IndexTree::unlink(const TreeNode& node)
{
    if (!store_.linksSiblings())
        return;
    TreeNode neighbour;
    if (node.left != kNoNode) {
        store_.load(node.left, neighbour);
        neighbour.right = node.right;
        store_.store(neighbour);
    }
    if (node.right != kNoNode) {
        store_.load(node.right, neighbour);
        neighbour.left = node.left;
        store_.store(neighbour);
    }
}

/// Takes the empty node of level n out of the tree, and those above that get empty.
void IndexTree::removeChild(std::size_t n)
{
    const TreeNode gone = level(n).node;
    level(n).changed = false;
    path_.depth_ = n;
    unlink(gone);
    store_.release(gone.at);
    Level& above = level(n - 1);
    TreeNode& node = above.node;
    const std::size_t c = above.index;
    const bool wasLast = c + 1 == node.children.size();
    node.children.erase(node.children.begin() + step(c));
    std::vector<std::uint8_t> lastKey;
    std::uint32_t lastRecord = 0;
    if (c < node.count()) {
        node.eraseKey(c);
    } else if (node.count()) {  // the child in front becomes the one without a key
        lastKey.assign(node.key(c - 1), node.key(c));
        lastRecord = node.records[c - 1];
        node.eraseKey(c - 1);
    }
    above.changed = true;
    if (node.children.empty()) {
        if (n > 1)
            return removeChild(n - 1);
        node.leaf = true;  // an empty tree is an empty leaf
        return;
    }
    above.index = std::min(c, node.children.size() - 1);
    if (wasLast && store_.lastChildHasKey())
        raise(n - 1, false);
    else if (wasLast && !lastKey.empty()) {
        for (std::size_t up = n - 1; up-- > 0;) {
            Level& high = level(up);
            if (high.index < high.node.count()) {
                high.node.setKey(high.index, lastKey.data(), lastRecord);
                high.changed = true;
                break;
            }
        }
    }
    if (!store_.lastChildHasKey() && node.children.size() == 1)
        mendSingle(n - 1);
}

/// 3. Level n has one child left: the root goes, another node joins its neighbour.
void IndexTree::mendSingle(std::size_t n)
{
    TreeNode& single = level(n).node;
    if (n == 0) {
        store_.setRoot(single.children[0]);
        store_.release(single.at);
        level(0).changed = false;
        return;
    }
    Level& above = level(n - 1);
    const std::size_t c = above.index;
    const bool toLeft = c > 0;
    const std::size_t keyAt = toLeft ? c - 1 : 0;
    TreeNode other;
    store_.load(above.node.children[toLeft ? c - 1 : c + 1], other);
    const std::vector<std::uint8_t> between(above.node.key(keyAt), above.node.key(keyAt + 1));
    above.changed = true;
    if (other.children.size() < store_.mostChildren()) {
        other.insertKey(toLeft ? other.count() : 0, between.data(), 0);
        other.children.insert(toLeft ? other.children.end() : other.children.begin(),
                              single.children[0]);
        store_.store(other);
        store_.release(single.at);
        level(n).changed = false;
        path_.depth_ = n;
        above.node.children.erase(above.node.children.begin() + step(c));
        above.node.eraseKey(keyAt);
        above.index = std::min(c, above.node.children.size() - 1);
        if (above.node.children.size() == 1)
            mendSingle(n - 1);
        return;
    }
    // The neighbour is full: it gives one child away.
    const std::size_t given = toLeft ? other.count() - 1 : 0;
    const std::vector<std::uint8_t> up(other.key(given), other.key(given + 1));
    single.insertKey(0, between.data(), 0);
    single.children.insert(toLeft ? single.children.begin() : single.children.end(),
                           toLeft ? other.children.back() : other.children.front());
    other.eraseKey(given);
    other.children.erase(toLeft ? other.children.end() - 1 : other.children.begin());
    above.node.setKey(keyAt, up.data(), 0);
    store_.store(other);
}

void IndexTree::collect(std::uint32_t at, std::size_t depth, std::vector<std::uint32_t>& nodes)
{
    if (depth > kDeepestTree || nodes.size() > store_.mostNodes())
        throw EngineError(EngineErrorNumber::Corrupt, "The tree of an index goes in a circle.");
    TreeNode node;
    store_.load(at, node);
    nodes.push_back(at);
    if (!node.leaf)
        for (const std::uint32_t child : node.children)
            collect(child, depth + 1, nodes);
}

void IndexTree::drop()
{
    std::vector<std::uint32_t> nodes;
    collect(store_.root(), 0, nodes);
    store_.releaseAll(nodes);
}

/// The inner nodes above a level of nodes, which keep their last keys only.
void IndexTree::buildLevel(std::vector<TreeNode>& below)
{
    const bool all = store_.lastChildHasKey();
    const std::size_t most = store_.mostChildren();
    std::vector<TreeNode> made;
    for (std::size_t from = 0; from < below.size();) {
        std::size_t children = std::min(most, below.size() - from);
        if (!all && below.size() - from - children == 1)
            --children;  // 3.
        TreeNode node;
        node.leaf = false;
        node.keyLength = store_.keyLength();
        node.at = store_.allocate();
        const std::size_t keys = all ? children : children - 1;
        for (std::size_t i = 0; i < children; ++i) {
            if (i < keys)
                node.insertKey(i, below[from + i].key(0), below[from + i].records[0]);
            node.children.push_back(below[from + i].at);
        }
        if (!made.empty() && store_.linksSiblings())
            node.left = made.back().at;
        made.push_back(std::move(node));
        from += children;
    }
    for (std::size_t i = 0; i + 1 < made.size() && store_.linksSiblings(); ++i)
        made[i].right = made[i + 1].at;
    if (made.size() == 1)
        store_.setRoot(made[0].at);
    std::size_t from = 0;
    for (TreeNode& node : made) {
        store_.store(node);
        from += node.children.size();
        node.keys.assign(below[from - 1].keys.begin(), below[from - 1].keys.end());
        node.records.assign(1, below[from - 1].records[0]);
    }
    below = std::move(made);
}

void IndexTree::buildEmpty()
{
    const EntryList none(store_.keyLength());
    ListedEntries entries(none);
    build(entries);
}

namespace {

/// So many entries of a source that the next leaf can be filled from them.
class BuildWindow {
public:
    BuildWindow(EntrySource& source, std::uint32_t keyLength) : source_(source), list_(keyLength) {}

    void refill()
    {
        constexpr std::size_t kMostInLeaf = 512, kEntries = 4096;
        if (end_ || list_.count() - from_ >= kMostInLeaf)
            return;
        list_.eraseFront(from_);
        from_ = 0;
        while (!end_ && list_.count() < kEntries)
            end_ = !source_.more(list_);
    }
    SortedEntries entries() const { return list_.sorted(); }
    std::size_t from() const { return from_; }
    void take(std::size_t entries) { from_ += entries; }
    bool isEmpty() const { return from_ == list_.count(); }

private:
    EntrySource& source_;
    EntryList list_;
    std::size_t from_ = 0;
    bool end_ = false;
};

}  // namespace

std::uint64_t IndexTree::build(EntrySource& source)
{
    loaded_ = leafDepth_ = 0;
    if (store_.root() != kNoNode)
        drop();
    BuildWindow window(source, store_.keyLength());
    window.refill();
    std::vector<TreeNode> level;
    TreeNode leaf;
    leaf.keyLength = store_.keyLength();
    leaf.at = store_.allocate();
    store_.setRoot(window.isEmpty() ? leaf.at : kNoNode);
    std::uint32_t before = kNoNode;
    std::uint64_t all = 0;
    do {
        const SortedEntries entries = window.entries();
        const std::size_t from = window.from();
        const std::size_t number = window.isEmpty() ? 0 : store_.fill(entries, from);
        TreeNode last;
        last.at = leaf.at;
        last.keyLength = leaf.keyLength;
        if (number)
            last.insertKey(0, entries.key(from + number - 1), entries.records[from + number - 1]);
        const bool behind = from + number < entries.count;
        const std::uint32_t following = behind ? store_.allocate() : kNoNode;
        if (store_.linksSiblings()) {
            leaf.left = before;
            leaf.right = following;
        }
        if (level.empty() && following == kNoNode)
            store_.setRoot(leaf.at);
        if (number)
            store_.storeFilled(entries, from, number, leaf);
        else
            store_.store(leaf);
        level.push_back(std::move(last));
        before = leaf.at;
        leaf.at = following;
        all += number;
        window.take(number);
        window.refill();
    } while (!window.isEmpty());
    while (level.size() > 1)
        buildLevel(level);
    return all;
}

}  // namespace velnor::xbase
