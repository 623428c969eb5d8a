#include "access/formats/jet/index_ordinals.h"

#include <algorithm>

namespace velnor::jet {

void IndexOrdinals::collect()
{
    tree_.settle();
    if (known_ && version_ == tree_.version())
        return;
    known_ = false;
    leaves_.clear();
    places_.clear();
    count_ = 0;
    tree_.eachLeaf([this](std::uint32_t page, int entries) {
        places_.emplace(page, leaves_.size());
        leaves_.push_back({page, count_});
        count_ += entries;
    });
    version_ = tree_.version();
    known_ = true;
}

bool IndexOrdinals::moveTo(IndexWalker& walker, std::int64_t n)
{
    collect();
    if (n < 0 || n >= count_)
        return false;
    // The last leaf that begins at n or sooner; empty ones begin where the next one does.
    const auto behind = std::upper_bound(
        leaves_.begin(), leaves_.end(), n,
        [](std::int64_t number, const Leaf& leaf) { return number < leaf.before; });
    const Leaf& leaf = *(behind - 1);
    return walker.standAt(leaf.page, static_cast<int>(n - leaf.before));
}

std::int64_t IndexOrdinals::of(IndexWalker& walker)
{
    collect();
    const auto standing = walker.standing();
    if (!standing)
        return -1;
    const auto place = places_.find(standing->first);
    return place == places_.end() ? -1 : leaves_[place->second].before + standing->second;
}

}  // namespace velnor::jet
