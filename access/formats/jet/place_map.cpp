#include "access/formats/jet/place_map.h"

namespace velnor::jet {

void PlaceMap::beginPage(PageNumber oldPage)
{
    if (oldPage >= placeOfPage_.size())
        placeOfPage_.resize(oldPage + 1u, kNone);
    placeOfPage_[oldPage] = static_cast<std::uint32_t>(oldPages_.size());
    oldPages_.push_back({records_, static_cast<std::uint32_t>(newPages_.size()), kNone, 0});
}

void PlaceMap::add(int oldSlot, RowPointer placed)
{
    if (newPages_.empty() || newPages_.back().number != placed.page)
        newPages_.push_back({placed.page, records_});
    OldPage& page = oldPages_.back();
    if (page.records == 0)
        page.newPage = static_cast<std::uint32_t>(newPages_.size() - 1);
    const auto slot = static_cast<std::uint32_t>(oldSlot);
    if (page.sparse == kNone && slot != page.records) {
        page.sparse = static_cast<std::uint32_t>(sparse_.size());
        sparse_.emplace_back();
        for (std::uint32_t full = 0; full < page.records; ++full)
            sparse_.back().set(full);
    }
    if (page.sparse != kNone)
        sparse_.back().set(slot);
    ++page.records;
    ++records_;
}

std::optional<RowPointer> PlaceMap::find(RowPointer old) const
{
    if (old.page >= placeOfPage_.size() || placeOfPage_[old.page] == kNone)
        return std::nullopt;
    const OldPage& page = oldPages_[placeOfPage_[old.page]];
    std::size_t before = old.slot;
    if (page.sparse != kNone) {
        const Slots& slots = sparse_[page.sparse];
        if (!slots.test(old.slot))
            return std::nullopt;
        before = (slots << (slots.size() - old.slot)).count();
    } else if (old.slot >= page.records) {
        return std::nullopt;
    }
    const std::uint32_t record = page.first + static_cast<std::uint32_t>(before);
    std::size_t at = page.newPage;
    while (at + 1 < newPages_.size() && newPages_[at + 1].first <= record)
        ++at;
    return RowPointer{newPages_[at].number,
                      static_cast<std::uint8_t>(record - newPages_[at].first)};
}

}  // namespace velnor::jet
