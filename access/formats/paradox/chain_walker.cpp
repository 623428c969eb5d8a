#include "access/formats/paradox/chain_walker.h"

#include <algorithm>
#include <cstring>

namespace velnor::paradox {
namespace {

constexpr std::size_t kLargestWindow = 128u << 10;

}  // namespace

void ChainWalker::refresh(RecordChain& chain, std::uint64_t generation)
{
    if (chain_ == &chain && generation_ == generation)
        return;
    chain_ = &chain;
    generation_ = generation;
    windowBlocks_ = 0;
    nextWindow_ = 1;
    if (stand_ == Stand::On)
        findAgain();
}

/// Others have changed the chain: the record is looked for by its key, or, where keys cannot be
/// searched, where it was.
void ChainWalker::findAgain()
{
    record_ = nullptr;
    if (chain_->keyLength() == 0)
        return;  // without keys records do not move
    if (chain_->ordered()) {
        place_ = chain_->lowerBound(key_.data(), key_.size());
        Place there = place_;
        exact_ = chain_->settle(there) &&
                 std::memcmp(chain_->record(there), key_.data(), key_.size()) == 0;
        place_ = exact_ ? there : place_;
        return;
    }
    if (const auto at = chain_->positionOf(block_))
        if (const auto found = chain_->findInBlock(*at, key_.data(), key_.size())) {
            place_ = *found;
            exact_ = true;
            return;
        }
    const auto found = chain_->find(key_.data(), key_.size());
    exact_ = found.has_value();
    if (found)
        place_ = *found;
    else if (place_.at >= chain_->blocks())
        place_ = {static_cast<std::uint32_t>(chain_->blocks()), 0};
}

/// Reads the block at a position, and as many behind it as lie behind it in the file: more each
/// time the walk goes on.
void ChainWalker::readWindow(std::size_t at)
{
    const std::uint32_t block = chain_->blockAt(at), size = chain_->file().header().blockBytes;
    const bool ahead = windowBlocks_ && block == windowFirst_ + windowBlocks_;
    const auto most = static_cast<std::uint32_t>(std::max<std::size_t>(kLargestWindow / size, 1));
    nextWindow_ = ahead ? std::min(nextWindow_ * 4, most) : 1;
    std::uint32_t count = 1;
    while (count < nextWindow_ && at + count < chain_->blocks() &&
           chain_->blockAt(at + count) == block + count)
        ++count;
    if (window_.size() < std::size_t{count} * size)
        window_.resize(std::size_t{count} * size);
    windowBlocks_ = 0;
    chain_->file().readRun(block, count, window_);
    windowFirst_ = block;
    windowBlocks_ = count;
}

const std::uint8_t* ChainWalker::bytesOf(Place place)
{
    const std::uint32_t block = chain_->blockAt(place.at);
    if (block - windowFirst_ >= windowBlocks_)
        readWindow(place.at);
    const std::size_t size = chain_->file().header().blockBytes;
    return window_.data() + (block - windowFirst_) * size + kBlockHead +
           place.slot * chain_->recordSize();
}

void ChainWalker::leave(bool behind)
{
    stand_ = behind ? Stand::Behind : Stand::Before;
    record_ = nullptr;
}

bool ChainWalker::settle(Place place)
{
    if (!chain_->settle(place)) {
        leave(true);
        return false;
    }
    place_ = place;
    record_ = bytesOf(place);
    if (const std::size_t length = chain_->keyLength()) {
        key_.resize(length);
        std::memcpy(key_.data(), record_, length);
    }
    block_ = chain_->blockAt(place.at);
    exact_ = true;
    stand_ = Stand::On;
    return true;
}

/// The record in front of a place.
bool ChainWalker::settleBack(Place place)
{
    while (place.slot == 0 && place.at > 0) {
        --place.at;
        place.slot = chain_->recordsAt(place.at);
    }
    if (place.slot == 0) {
        leave(false);
        return false;
    }
    --place.slot;
    return settle(place);
}

bool ChainWalker::last()
{
    return settleBack({static_cast<std::uint32_t>(chain_->blocks()), 0});
}

bool ChainWalker::next()
{
    if (stand_ == Stand::Before)
        return first();
    if (stand_ == Stand::Behind)
        return false;
    return settle(exact_ ? Place{place_.at, place_.slot + 1} : place_);
}

bool ChainWalker::previous()
{
    if (stand_ == Stand::Behind)
        return last();
    if (stand_ == Stand::Before)
        return false;
    return settleBack(place_);
}

bool ChainWalker::seek(Comparison comparison, const std::uint8_t* key, std::size_t length)
{
    switch (comparison) {
    case Comparison::Equal:
        if (settle(chain_->lowerBound(key, length)) && std::memcmp(record_, key, length) == 0)
            return true;
        leave(true);
        return false;
    case Comparison::GreaterEqual:
        return settle(chain_->lowerBound(key, length));
    case Comparison::Greater:
        return settle(chain_->lowerBound(key, length, true));
    case Comparison::LessEqual:
        return settleBack(chain_->lowerBound(key, length, true));
    case Comparison::Less:
        return settleBack(chain_->lowerBound(key, length));
    }
    return false;
}

}  // namespace velnor::paradox
