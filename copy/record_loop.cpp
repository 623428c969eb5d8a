#include "copy/record_loop.h"

#include <algorithm>

#include "copy/conversion.h"
#include "copy/further_sheet.h"
#include "platform/paths.h"

namespace velnor {
namespace {

/// A pair with what its two fields say, looked up once: none of it changes while the loop runs.
struct PlannedPair {
    int from;
    int to;
    int sourceType;
    int targetSize;
    Conversion how;
};

std::vector<PlannedPair> plan(Recordset& source, Recordset& target,
                              std::span<const FieldPair> pairs)
{
    std::vector<PlannedPair> planned;
    planned.reserve(pairs.size());
    for (const FieldPair& pair : pairs) {
        const Field& from = source.Fields().Item(pair.from);
        const Field& to = target.Fields().Item(pair.to);
        planned.push_back(
            {pair.from, pair.to, from.Type(), to.Size(), conversionFor(from.Type(), to.Type())});
    }
    return planned;
}

std::string_view bareName(std::string_view record)
{
    return record.substr(0, record.rfind('.'));
}

/// Of so many records written, how many a commit may leave for the next one.
std::int64_t betweenCommits(std::int64_t written, std::int64_t least)
{
    return std::max(least, written / 8);
}

bool sameTable(const CopyJob::End& a, const CopyJob::End& b)
{
    return paths::sameName(a.database, b.database) &&
           paths::sameName(bareName(a.record), bareName(b.record));
}

/// The records that stand in the table before the copy adds to it: without this bound a table
/// copied into itself would be met again and again by its own records.
std::int64_t recordsAtStart(Recordset& source)
{
    source.MoveLast();
    return source.RecordCount();
}

void addRecord(Recordset& source, Recordset& target, std::span<const PlannedPair> planned,
               std::string& scratch)
{
    ValueView value;
    target.AddNew();
    for (const PlannedPair& pair : planned) {
        if (convert(source.value(pair.from), pair.how, pair.sourceType, pair.targetSize, scratch,
                    value))
            target.setValue(pair.to, value);
    }
    target.Update();
}

}  // namespace

void copyRecords(Recordset& source, Recordset& target, std::span<const FieldPair> pairs,
                 CopyTally& tally, const CopyWatch& watch, std::int64_t limit)
{
    source.MoveFirst();
    const std::vector<PlannedPair> planned = plan(source, target, pairs);
    const std::int64_t every = watch.reached ? watch.every : 0;
    std::string scratch;
    while (!source.Eof() && tally.copied != limit) {
        try {
            addRecord(source, target, planned, scratch);
        } catch (const EngineError& error) {
            if (error.code() != EngineErrorNumber::SpreadsheetFull || !watch.full ||
                !watch.full(target))
                throw;
            addRecord(source, target, planned, scratch);
        }
        ++tally.copied;
        if (every > 0 && tally.copied % every == 0 && !watch.reached(tally.copied)) {
            tally.cancelled = true;
            return;
        }
        source.MoveNext();
    }
}

void runCopy(Workspace& workspace, const CopyJob& job, CopyTally& tally, const CopyWatch& watch)
{
    Database from =
        workspace.OpenDatabase(job.from.database, false, job.from.readOnly, job.from.connect);
    Recordset source = from.OpenRecordset(job.from.record, RecordsetType::Dynaset);
    Database to = workspace.OpenDatabase(job.to.database, false, job.to.readOnly, job.to.connect);
    Recordset target = to.OpenRecordset(job.to.record);

    CopyWatch committed = watch;
    std::int64_t safe = 0;
    if (watch.reached) {
        committed.reached = [&](std::int64_t copied) {
            if (watch.stop && watch.stop())
                return false;
            if (copied - safe < betweenCommits(copied, watch.every))
                return true;
            to.commit();
            safe = copied;
            return watch.reached(copied);
        };
    }
    FurtherSheets further(to, job.to.record);
    committed.full = [&](Recordset& full) {
        if (!further.possible())
            return false;
        full = further.open();
        tally.furtherSheets = further.names();
        return true;
    };
    const std::int64_t limit = sameTable(job.from, job.to) ? recordsAtStart(source) : kAllRecords;
    copyRecords(source, target, job.pairs, tally, committed, limit);
    from.Close();
    to.Close();
}

}  // namespace velnor
