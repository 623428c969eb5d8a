// access/storage/journal_owner.h - which process wrote a journal, and whether it still runs.
#pragma once

#include <cstdint>
#include <string>

namespace velnor {

/// A process number alone is used again after a while: with its start time and the boot it is one
/// process.
struct JournalOwner {
    std::uint32_t process = 0;
    std::uint64_t startTime = 0;  ///< clock ticks since the boot
    std::string bootId;

    bool operator==(const JournalOwner&) const = default;

    static const JournalOwner& thisProcess();
    /// The start of a process that runs now; 0 when there is none.
    static std::uint64_t startTimeOf(std::uint32_t process);
    /// True for another process that runs now. Whether a set of this process still uses the files
    /// is for the lock to say.
    bool livesElsewhere() const;
};

}  // namespace velnor
