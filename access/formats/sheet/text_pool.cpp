#include "access/formats/sheet/text_pool.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace velnor::sheet {
namespace {

constexpr std::size_t kBlock = 256u << 10;

}  // namespace

char* TextPool::room(std::size_t bytes)
{
    if (bytes > left_) {
        if (bytes > kBlock / 4) {  // a block of its own; the current one is not wasted
            blocks_.push_back(std::make_unique_for_overwrite<char[]>(bytes));
            return blocks_.back().get();
        }
        blocks_.push_back(std::make_unique_for_overwrite<char[]>(kBlock));
        free_ = blocks_.back().get();
        left_ = kBlock;
    }
    char* const start = free_;
    free_ += bytes;
    left_ -= bytes;
    return start;
}

std::uint32_t TextPool::add(std::string_view utf8)
{
    char* const copy = room(utf8.size());
    if (!utf8.empty())
        std::memcpy(copy, utf8.data(), utf8.size());
    texts_.emplace_back(copy, utf8.size());
    return static_cast<std::uint32_t>(texts_.size() - 1);
}

/// The place of an equal text, or the free one where it belongs.
std::size_t TextPool::slotOf(std::string_view utf8) const
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = std::hash<std::string_view>{}(utf8)&mask;
    while (slots_[at] != kFree && texts_[slots_[at]] != utf8)
        at = (at + 1) & mask;
    return at;
}

void TextPool::grow()
{
    if (taken_ * 2 < slots_.size())
        return;
    std::vector<std::uint32_t> old(std::max<std::size_t>(64, slots_.size() * 2), kFree);
    old.swap(slots_);
    for (const std::uint32_t id : old)
        if (id != kFree)
            slots_[slotOf(texts_[id])] = id;
}

void TextPool::index(std::uint32_t id)
{
    grow();
    std::uint32_t& slot = slots_[slotOf(texts_[id])];
    if (slot != kFree)
        return;
    slot = id;
    ++taken_;
}

std::uint32_t TextPool::intern(std::string_view utf8)
{
    grow();
    std::uint32_t& slot = slots_[slotOf(utf8)];
    if (slot == kFree) {
        slot = add(utf8);
        ++taken_;
    }
    return slot;
}

}  // namespace velnor::sheet
