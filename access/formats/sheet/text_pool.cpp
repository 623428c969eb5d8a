#include "access/formats/sheet/text_pool.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace velnor::sheet {
namespace {

constexpr std::size_t kBlock = 256u << 10;

std::uint32_t hashOf(std::string_view utf8)
{
    return static_cast<std::uint32_t>(std::hash<std::string_view>{}(utf8));
}

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

/// The slot of an equal text, or the free one where it belongs.
TextPool::Slot& TextPool::slotOf(std::string_view utf8, std::uint32_t hash)
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].id != kFree && (slots_[at].hash != hash || texts_[slots_[at].id] != utf8))
        at = (at + 1) & mask;
    return slots_[at];
}

/// Texts in the slots are all different, so that growing needs no look at them.
void TextPool::grow()
{
    if (taken_ * 2 < slots_.size())
        return;
    std::vector<Slot> old(std::max<std::size_t>(64, slots_.size() * 2));
    old.swap(slots_);
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
        if (slot.id == kFree)
            continue;
        std::size_t at = slot.hash & mask;
        while (slots_[at].id != kFree)
            at = (at + 1) & mask;
        slots_[at] = slot;
    }
}

void TextPool::index(std::uint32_t id)
{
    grow();
    const std::uint32_t hash = hashOf(texts_[id]);
    Slot& slot = slotOf(texts_[id], hash);
    if (slot.id != kFree)
        return;
    slot = {hash, id};
    ++taken_;
}

std::uint32_t TextPool::intern(std::string_view utf8)
{
    grow();
    const std::uint32_t hash = hashOf(utf8);
    Slot& slot = slotOf(utf8, hash);
    if (slot.id == kFree) {
        slot = {hash, add(utf8)};
        ++taken_;
    }
    return slot.id;
}

}  // namespace velnor::sheet
