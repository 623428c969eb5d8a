// access/formats/text/record_places.h - where some of the records of a file begin: every n-th one,
// n growing with the file, so that the list stays short.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace velnor::text {

class RecordPlaces {
public:
    struct Place {
        std::int64_t ordinal = 0;
        std::uint64_t offset = 0;
    };

    /// The next record begins here.
    void add(std::uint64_t offset)
    {
        if (count_++ % step_ != 0)
            return;
        if (offsets_.size() == kMost)
            thinOut();
        if ((count_ - 1) % step_ == 0)
            offsets_.push_back(offset);
    }
    /// Records from this number on are gone.
    void cutTo(std::int64_t count)
    {
        count_ = count;
        offsets_.resize(static_cast<std::size_t>((count + step_ - 1) / step_));
    }
    std::int64_t count() const { return count_; }
    bool empty() const { return count_ == 0; }

    /// The last known place at or in front of a record. There must be records.
    Place atOrdinal(std::int64_t ordinal) const
    {
        const auto i = static_cast<std::size_t>(ordinal / step_);
        return {static_cast<std::int64_t>(i) * step_, offsets_[i]};
    }
    Place atOffset(std::uint64_t offset) const
    {
        auto behind = std::upper_bound(offsets_.begin(), offsets_.end(), offset);
        if (behind != offsets_.begin())
            --behind;
        return {(behind - offsets_.begin()) * step_, *behind};
    }

private:
    static constexpr std::size_t kMost = 8192;

    void thinOut()
    {
        for (std::size_t i = 0; 2 * i < offsets_.size(); ++i)
            offsets_[i] = offsets_[2 * i];
        offsets_.resize((offsets_.size() + 1) / 2);
        step_ *= 2;
    }

    std::vector<std::uint64_t> offsets_;
    std::int64_t count_ = 0;
    std::int64_t step_ = 32;
};

}  // namespace velnor::text
