// access/formats/xbase/live_counts.h - how many records of each stretch of a table are not deleted:
// for record counts, and for the place of a record among those that show. Built by one scan of the
// flags when first asked for.
#pragma once

#include <cstdint>
#include <vector>

namespace velnor::xbase {

class LiveCounts {
public:
    static constexpr std::uint32_t kStretch = 1024;

    bool known() const { return known_; }
    std::int64_t live() const { return live_; }
    std::uint32_t liveIn(std::size_t stretch) const { return counts_[stretch]; }
    std::size_t stretches() const { return counts_.size(); }

    void forget()
    {
        counts_.clear();
        live_ = 0;
        known_ = false;
    }
    void becomeKnown() { known_ = true; }
    /// Counts one more record at the end (while scanning, and for each new record).
    void add(std::uint32_t recordNumber, bool live)
    {
        const std::size_t stretch = (recordNumber - 1) / kStretch;
        if (stretch >= counts_.size())
            counts_.resize(stretch + 1);
        counts_[stretch] = static_cast<std::uint16_t>(counts_[stretch] + live);
        live_ += live;
    }
    void remove(std::uint32_t recordNumber)
    {
        --counts_[(recordNumber - 1) / kStretch];
        --live_;
    }

private:
    std::vector<std::uint16_t> counts_;
    std::int64_t live_ = 0;
    bool known_ = false;
};

}  // namespace velnor::xbase
