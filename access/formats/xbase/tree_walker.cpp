#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/xbase/index_tree.h"

namespace velnor::xbase {
namespace {

[[noreturn]] void damaged(const char* how)
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      std::string("The tree of an index is damaged: ") + how + ".");
}

}  // namespace

TreeWalker::TreeWalker(NodeStore& store, bool whole) : store_(store), whole_(whole) {}

TreeWalker::Level& TreeWalker::enter(std::uint32_t at)
{
    if (depth_ >= kDeepestTree)
        damaged("it is too deep");
    if (levels_.size() <= depth_)
        levels_.emplace_back();
    Level& level = levels_[depth_];
    level.node.at = at;
    level.index = 0;
    level.changed = level.loaded = false;
    ++depth_;
    return level;
}

TreeWalker::Level& TreeWalker::load(Level& level)
{
    if (level.loaded)
        return level;
    store_.load(level.node.at, level.node);
    if (!level.node.leaf && level.node.children.empty())
        damaged("a node has no children");
    level.loaded = true;
    return level;
}

/// Down from the last level to a leaf, at its first or last entry.
bool TreeWalker::fall(bool toEnd)
{
    while (!leaf().node.leaf) {
        Level& level = leaf();
        if (toEnd)
            level.index = level.node.children.size() - 1;
        push(level.node.children[level.index]);
    }
    const std::size_t count = leaf().node.count();
    leaf().index = toEnd && count ? count - 1 : 0;
    return count > 0;
}

void TreeWalker::countStep(bool forward)
{
    if (forward != forward_)
        steps_ = 0;
    forward_ = forward;
    if (++steps_ > store_.mostNodes())
        damaged("it goes in a circle");
}

bool TreeWalker::nextLeaf()
{
    for (;;) {
        countStep(true);
        std::size_t up = depth_ - 1;
        while (up > 0 && levels_[up - 1].index + 1 >= load(levels_[up - 1]).node.children.size())
            --up;
        if (up == 0)
            return on_ = false;
        depth_ = up;
        Level& level = leaf();
        ++level.index;
        push(level.node.children[level.index]);
        if (fall(false))
            return on_ = true;
    }
}

bool TreeWalker::previousLeaf()
{
    for (;;) {
        countStep(false);
        std::size_t up = depth_ - 1;
        while (up > 0 && levels_[up - 1].index == 0)
            --up;
        if (up == 0)
            return on_ = false;
        depth_ = up;
        Level& level = load(leaf());
        --level.index;
        push(level.node.children[level.index]);
        if (fall(true))
            return on_ = true;
    }
}

bool TreeWalker::first()
{
    depth_ = 0;
    steps_ = 0;
    push(store_.root());
    on_ = true;
    return fall(false) || nextLeaf();
}

bool TreeWalker::last()
{
    depth_ = 0;
    steps_ = 0;
    push(store_.root());
    on_ = true;
    return fall(true) || previousLeaf();
}

bool TreeWalker::next()
{
    Level& level = load(leaf());
    if (++level.index < level.node.count())
        return true;
    return nextLeaf();
}

bool TreeWalker::previous()
{
    if (leaf().index > 0) {
        --load(leaf()).index;
        return on_ = true;
    }
    return previousLeaf();
}

/// The first key that is not in front of what is wanted.
std::size_t TreeWalker::place(const TreeNode& node, const Wanted& wanted)
{
    std::size_t low = 0, high = node.count();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (wanted.isBehind(node.key(middle), node.records[middle]))
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

void TreeWalker::down(const Wanted& wanted)
{
    depth_ = 0;
    steps_ = 0;
    Wanted inInner = wanted;
    if (!store_.recordsAreOrdered())
        inInner.record = 0;
    std::uint32_t at = store_.root();
    for (;;) {
        Level& level = enter(at);
        if (!whole_ && store_.recordsAreOrdered() && store_.search(at, wanted, hit_)) {
            level.index = hit_.index;
            if (hit_.leaf)
                return;
            at = hit_.child;
            continue;
        }
        if (load(level).node.leaf)
            break;
        level.index = std::min(place(level.node, inInner), level.node.children.size() - 1);
        at = level.node.children[level.index];
    }
    leaf().index = place(leaf().node, wanted);
}

bool TreeWalker::seek(const std::uint8_t* key, std::size_t length, bool behind)
{
    down({key, length, 0, behind});
    if (onEntry())
        return on_ = true;
    return nextLeaf();
}

bool TreeWalker::seekEntry(const std::uint8_t* key, std::uint32_t record)
{
    const std::uint32_t length = store_.keyLength();
    if (store_.recordsAreOrdered()) {
        down({key, length, record, false});
        on_ = onEntry();
        if (!on_)
            nextLeaf();
        return on_ && this->record() == record && std::memcmp(this->key(), key, length) == 0;
    }
    bool there = seek(key, length);
    while (there && std::memcmp(this->key(), key, length) == 0) {
        if (this->record() == record)
            return true;
        there = next();
    }
    return false;
}

}  // namespace velnor::xbase
