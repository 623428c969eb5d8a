// cli/record_loop.h - what every writing loop of the shell does between records: commit now and
// then, tell the records that are safe on the disk, stop at Ctrl-C.
#pragma once

#include <cstdint>

#include "access/engine.h"
#include "cli/output.h"

namespace velnor::cli {

class RecordLoop {
public:
    explicit RecordLoop(Database& database, bool alwaysTell,
                        std::int64_t betweenCommits = kBetweenCommits)
        : database_(database), progress_("Records written", alwaysTell),
          betweenCommits_(betweenCommits)
    {
    }
    /// After each record; throws "cancelled" at Ctrl-C, with everything before it written.
    void recordDone()
    {
        if (++done_ % betweenCommits_ == 0)
            stretchDone(done_);
    }
    /// Commits, and tells how many records are safe.
    void stretchDone(std::int64_t records)
    {
        done_ = records;
        database_.commit();
        progress_.show(done_);
        stopIfInterrupted();
    }
    /// After the target was closed: the last records are safe, too.
    void finish() { progress_.show(done_); }

    static constexpr std::int64_t kBetweenCommits = 20000;
    /// Where each commit writes the whole file again.
    static constexpr std::int64_t kBetweenRewrites = 100000;

private:
    Database& database_;
    Progress progress_;
    std::int64_t betweenCommits_;
    std::int64_t done_ = 0;
};

}  // namespace velnor::cli
