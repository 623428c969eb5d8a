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

TreeWalker::TreeWalker(NodeStore& store) : store_(store) {}

TreeWalker::Level& TreeWalker::push(std::uint32_t at)
{
    if (depth_ >= kDeepestTree)
        damaged("it is too deep");
    if (levels_.size() <= depth_)
        levels_.emplace_back();
    Level& level = levels_[depth_];
    store_.load(at, level.node);
    if (!level.node.leaf && level.node.children.empty())
        damaged("a node has no children");
    level.index = 0;
    level.changed = false;
    ++depth_;
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
        while (up > 0 && levels_[up - 1].index + 1 >= levels_[up - 1].node.children.size())
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
        Level& level = leaf();
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
    if (++leaf().index < leaf().node.count())
        return true;
    return nextLeaf();
}

bool TreeWalker::previous()
{
    if (leaf().index > 0) {
        --leaf().index;
        return on_ = true;
    }
    return previousLeaf();
}

int TreeWalker::compare(const TreeNode& node, std::size_t i, const std::uint8_t* key,
                        std::size_t length, std::uint32_t record) const
{
    const int by = std::memcmp(node.key(i), key, length);
    if (by || record == 0)
        return by;
    return (node.records[i] > record) - (node.records[i] < record);
}

/// The first key that is not before the wanted one (or that is behind it). Record 0: keys alone.
std::size_t TreeWalker::place(const TreeNode& node, const std::uint8_t* key, std::size_t length,
                              std::uint32_t record, bool behind) const
{
    std::size_t low = 0, high = node.count();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        const int by = compare(node, middle, key, length, record);
        if (behind ? by <= 0 : by < 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

void TreeWalker::down(const std::uint8_t* key, std::size_t length, std::uint32_t record,
                      bool behind)
{
    depth_ = 0;
    steps_ = 0;
    push(store_.root());
    const std::uint32_t inInner = store_.recordsAreOrdered() ? record : 0;
    while (!leaf().node.leaf) {
        Level& level = leaf();
        level.index = std::min(place(level.node, key, length, inInner, behind),
                               level.node.children.size() - 1);
        push(level.node.children[level.index]);
    }
    leaf().index = place(leaf().node, key, length, record, behind);
}

bool TreeWalker::seek(const std::uint8_t* key, std::size_t length, bool behind)
{
    down(key, length, 0, behind);
    if (leaf().index < leaf().node.count())
        return on_ = true;
    return nextLeaf();
}

bool TreeWalker::seekEntry(const std::uint8_t* key, std::uint32_t record)
{
    const std::uint32_t length = store_.keyLength();
    if (store_.recordsAreOrdered()) {
        down(key, length, record, false);
        on_ = leaf().index < leaf().node.count();
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
