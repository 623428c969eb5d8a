// copy/record_loop.h - the loop that appends records, shared by the copy tab and the command line.
//
// There is no transaction: what was written before a failure stays, and is committed when the
// target is closed. Failures are thrown as they come; the tally says how far the loop had come.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "access/engine.h"
#include "copy/field_pair.h"

namespace velnor {

/// Filled while a copy runs, so that it is right also after a throw.
struct CopyTally {
    std::int64_t copied = 0;  ///< records that the target has taken
    bool cancelled = false;
    std::vector<std::string> furtherSheets;  ///< made because a sheet was full
};

/// Called on the way. Without a callback the loop doesn't pause.
struct CopyWatch {
    std::int64_t every = 0;  ///< records between two calls; 0: never
    /// Takes the records copied so far; false ends the copy after this record.
    std::function<bool(std::int64_t copied)> reached;
    /// Called when the target's sheet has no further row: puts another one in its place, and gives
    /// false when there is none. May be empty.
    std::function<bool(Recordset& target)> full = {};
    /// Of runCopy(): asked each `every` records, also where nothing is committed; true ends the copy.
    std::function<bool()> stop = {};
};

/// No bound on the number of records.
inline constexpr std::int64_t kAllRecords = -1;

/// Appends every record of the source to the target, at most `limit`. 3021 for an empty source;
/// 3265 for a position outside the fields.
void copyRecords(Recordset& source, Recordset& target, std::span<const FieldPair> pairs,
                 CopyTally& tally, const CopyWatch& watch = {}, std::int64_t limit = kAllRecords);

/// A copy from one record source to another, by names as the engine takes them.
struct CopyJob {
    struct End {
        std::string database;  ///< folder or file, "C:\..."
        std::string connect;
        std::string record;  ///< a table or sheet; on the From side also a SELECT
        bool readOnly = false;
    };
    End from;
    End to;
    std::vector<FieldPair> pairs;
};

/// Opens both ends, copies, closes. Where a sheet is full the records go on in a further one.
/// `watch.reached` is called after a commit: the records it is told of are safe on the disk. The
/// more there are, the more lie between two commits, since each goes through all indexes. A table
/// copied into itself gets the records that it had at the start.
void runCopy(Workspace& workspace, const CopyJob& job, CopyTally& tally,
             const CopyWatch& watch = {});

}  // namespace velnor
