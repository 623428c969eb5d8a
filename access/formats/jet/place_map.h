// access/formats/jet/place_map.h - where the records of a table stand after it was copied.
//
// Both tables have their records in the same order, and the pages of the copy are filled one after
// the other without holes. So a page needs a few words only, however many records are on it: the
// places are asked for in the order of each index, all over the map, which should stay in the
// processor's cache.
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <vector>

#include "access/formats/jet/jet_format.h"

namespace velnor::jet {

class PlaceMap {
public:
    /// `pages`: how many pages the old file has.
    explicit PlaceMap(PageNumber pages) : placeOfPage_(pages, kNone) {}

    /// The records added from now on come from this page; each page once.
    void beginPage(PageNumber oldPage);
    /// The record in a slot of that page was placed; slots ascend, and so do the new places.
    void add(int oldSlot, RowPointer placed);
    /// Where an old record is now; nothing when it was not copied.
    std::optional<RowPointer> find(RowPointer old) const;
    std::uint32_t records() const { return records_; }

private:
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;
    using Slots = std::bitset<256>;
    struct OldPage {
        std::uint32_t first = 0;       // number of its first record in the copy
        std::uint32_t newPage = 0;     // that record's place in newPages_
        std::uint32_t sparse = kNone;  // in sparse_, when a slot in front of a record is empty
        std::uint32_t records = 0;
    };
    struct NewPage {
        PageNumber number = 0;
        std::uint32_t first = 0;  // number of its first record
    };
    std::vector<std::uint32_t> placeOfPage_;  // in oldPages_, by page number
    std::vector<OldPage> oldPages_;
    std::vector<Slots> sparse_;  // the slots that have a record
    std::vector<NewPage> newPages_;
    std::uint32_t records_ = 0;
};

}  // namespace velnor::jet
