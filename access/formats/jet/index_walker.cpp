#include <algorithm>
#include <string>

#include "access/engine_error.h"
#include "access/formats/jet/jet_index.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {

IndexWalker::IndexWalker(IndexTree& tree) : tree_(tree) {}

RowPointer IndexWalker::row() const
{
    return RowPointer::fromWord(loadBE<std::uint32_t>(entry_.data() + entry_.size() - 4));
}

void IndexWalker::park()
{
    page_.release();
    version_ = tree_.version_ - 1;  // looks its place up at the next step
}

bool IndexWalker::standOn(int index)
{
    index_ = index;
    leaf_.entry(index, entry_);
    valid_ = true;
    return true;
}

bool IndexWalker::first()
{
    tree_.settle();
    version_ = tree_.version_;
    valid_ = false;
    passed_ = 0;
    page_ = tree_.descendEdge(false, leaf_);
    return leaf_.count() > 0 ? standOn(0) : stepLeaf(true);
}

bool IndexWalker::last()
{
    tree_.settle();
    version_ = tree_.version_;
    valid_ = false;
    passed_ = 0;
    page_ = tree_.descendEdge(true, leaf_);
    return leaf_.count() > 0 ? standOn(leaf_.count() - 1) : stepLeaf(false);
}

bool IndexWalker::next()
{
    return step(true);
}
bool IndexWalker::previous()
{
    return step(false);
}

bool IndexWalker::step(bool forward)
{
    if (!valid_)
        return false;
    if (version_ != tree_.version_) {
        scratch_ = entry_;
        const bool found = lowerBound(scratch_);
        const bool same = found && std::ranges::equal(entry_, scratch_);
        if (forward && !same)
            return found;  // the entry is gone: the one after it stands here
        if (!forward && !found)
            return last();
    }
    const int index = index_ + (forward ? 1 : -1);
    if (index >= 0 && index < leaf_.count())
        return standOn(index);
    return stepLeaf(forward);
}

/// Goes on to the next leaf that has an entry. Entries must go on in order from leaf to leaf: so
/// most chains that lead back are found out. Leaves are counted as well, since in a damaged leaf
/// the entries themselves need not ascend: one way, there are no more of them than pages.
bool IndexWalker::stepLeaf(bool forward)
{
    const bool wasValid = valid_;
    valid_ = false;
    if (forward != forward_)
        passed_ = 0;
    forward_ = forward;
    while (passed_++ <= tree_.space_.pageCount()) {
        const std::uint32_t number = forward ? leaf_.next() : leaf_.previous();
        if (number == 0)
            return false;
        page_ = tree_.load(number, leaf_);
        if (!leaf_.leaf())
            break;
        if (leaf_.count() == 0)
            continue;
        scratch_.swap(entry_);
        standOn(forward ? 0 : leaf_.count() - 1);
        const int order = wasValid ? compareEntries(scratch_, entry_) : 0;
        if (!wasValid || (forward ? order < 0 : order > 0))
            return true;
        break;
    }
    valid_ = false;
    throw EngineError(EngineErrorNumber::Corrupt,
                      "The index with root page " + std::to_string(tree_.root()) +
                          " is damaged: its leaves do not follow each other.");
}

bool IndexWalker::lowerBound(KeyView wanted)
{
    tree_.settle();
    version_ = tree_.version_;
    valid_ = false;
    passed_ = 0;
    page_ = tree_.descend(wanted, leaf_);
    const int index = leaf_.lowerBound(wanted);
    return index < leaf_.count() ? standOn(index) : stepLeaf(true);
}

bool IndexWalker::standAt(std::uint32_t leaf, int index)
{
    version_ = tree_.version_;
    valid_ = false;
    passed_ = 0;
    page_ = tree_.load(leaf, leaf_);
    return leaf_.leaf() && index >= 0 && index < leaf_.count() && standOn(index);
}

std::optional<std::pair<std::uint32_t, int>> IndexWalker::standing()
{
    if (!valid_)
        return std::nullopt;
    tree_.settle();
    if (version_ != tree_.version_ || !page_) {
        scratch_ = entry_;
        if (!lowerBound(scratch_) || !std::ranges::equal(entry_, scratch_))
            return std::nullopt;
    }
    return std::pair(page_.number(), index_);
}

bool IndexWalker::seek(KeyView key)
{
    return seekEntry(key, RowPointer{});
}

bool IndexWalker::seekPast(KeyView key)
{
    // The least key that is greater than all that begin with this one: its last byte counted up.
    scratch_.assign(key.begin(), key.end());
    while (!scratch_.empty() && scratch_.back() == 0xFF)
        scratch_.pop_back();
    if (scratch_.empty()) {
        valid_ = false;
        return false;
    }
    ++scratch_.back();
    scratch_.resize(scratch_.size() + 4, 0);
    return lowerBound(scratch_);
}

bool IndexWalker::seekBefore(KeyView key)
{
    return seek(key) ? previous() : last();
}

bool IndexWalker::seekLast(KeyView key)
{
    return seekPast(key) ? previous() : last();
}

bool IndexWalker::seekEntry(KeyView key, RowPointer row)
{
    scratch_.assign(key.begin(), key.end());
    scratch_.resize(key.size() + 4);
    storeBE(scratch_.data() + key.size(), row.word());
    return lowerBound(scratch_);
}

}  // namespace velnor::jet
