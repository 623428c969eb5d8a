#include "access/formats/jet/place_map.h"

namespace velnor::jet {

void PlaceMap::beginPage(PageNumber oldPage)
{
    if (oldPage >= placeOfPage_.size())
        placeOfPage_.resize(oldPage + 1u, kNone);
    placeOfPage_[oldPage] = static_cast<std::uint32_t>(oldPages_.size());
    oldPages_.push_back({{}, records_, static_cast<std::uint32_t>(newPages_.size()), true});
}

void PlaceMap::add(int oldSlot, RowPointer placed)
{
    if (newPages_.empty() || newPages_.back().number != placed.page)
        newPages_.push_back({placed.page, records_});
    OldPage& page = oldPages_.back();
    if (page.slots.none())
        page.newPage = static_cast<std::uint32_t>(newPages_.size() - 1);
    page.slots.set(static_cast<std::size_t>(oldSlot));
    page.dense = page.dense && records_ - page.first == static_cast<std::uint32_t>(oldSlot);
    ++records_;
}

std::optional<RowPointer> PlaceMap::find(RowPointer old) const
{
    if (old.page >= placeOfPage_.size() || placeOfPage_[old.page] == kNone)
        return std::nullopt;
    const OldPage& page = oldPages_[placeOfPage_[old.page]];
    if (!page.slots.test(old.slot))
        return std::nullopt;
    const std::size_t before =
        page.dense ? old.slot : (page.slots << (page.slots.size() - old.slot)).count();
    const std::uint32_t record = page.first + static_cast<std::uint32_t>(before);
    std::size_t at = page.newPage;
    while (at + 1 < newPages_.size() && newPages_[at + 1].first <= record)
        ++at;
    return RowPointer{newPages_[at].number,
                      static_cast<std::uint8_t>(record - newPages_[at].first)};
}

}  // namespace velnor::jet
