#include "access/sql/plain_walk.h"

#include <sqlite3.h>

#include <algorithm>
#include <memory>

namespace velnor::sql {
namespace {

struct Step {
    std::string name;
    std::int64_t p1, p2, p3;
};

struct CloseRun {
    void operator()(sqlite3_stmt* run) const { sqlite3_finalize(run); }
};

std::vector<Step> programOf(sqlite3* db, const std::string& sql)
{
    const std::string explain = "EXPLAIN " + sql;
    sqlite3_stmt* made = nullptr;
    sqlite3_prepare_v2(db, explain.data(), static_cast<int>(explain.size()), &made, nullptr);
    const std::unique_ptr<sqlite3_stmt, CloseRun> run(made);
    std::vector<Step> steps;
    while (made && sqlite3_step(made) == SQLITE_ROW)
        steps.push_back({reinterpret_cast<const char*>(sqlite3_column_text(made, 1)),
                         sqlite3_column_int64(made, 2), sqlite3_column_int64(made, 3),
                         sqlite3_column_int64(made, 4)});
    return steps;
}

/// The steps of the loop: give columns, hand the record out, count, go on, end.
class LoopReader {
public:
    LoopReader(const std::vector<Step>& steps, std::size_t begin) : steps_(steps), at_(begin) {}

    std::optional<PlainWalk> read()
    {
        const auto begin = static_cast<std::int64_t>(at_);
        std::vector<std::pair<std::int64_t, int>> columns;  // by register
        for (; is("VColumn") || is("Rowid"); ++at_)
            columns.emplace_back(is("Rowid") ? steps_[at_].p2 : steps_[at_].p3,
                                 is("Rowid") ? PlainWalk::kRecordName
                                             : static_cast<int>(steps_[at_].p2));
        if (!is("ResultRow"))
            return std::nullopt;
        const Step& row = steps_[at_++];
        std::sort(columns.begin(), columns.end());
        PlainWalk walk;
        for (const auto& [number, column] : columns) {
            if (number != row.p1 + static_cast<std::int64_t>(walk.columns.size()))
                return std::nullopt;
            walk.columns.push_back(column);
        }
        if (static_cast<std::int64_t>(columns.size()) != row.p2 || !readCount(walk))
            return std::nullopt;
        if (!is("VNext") || steps_[at_].p2 != begin || ++at_ >= steps_.size() || !is("Halt"))
            return std::nullopt;
        return walk;
    }

private:
    bool is(const char* name) const { return at_ < steps_.size() && steps_[at_].name == name; }

    /// A bound that is a plain number.
    bool readCount(PlainWalk& walk)
    {
        if (!is("DecrJumpZero"))
            return true;
        const std::int64_t counter = steps_[at_++].p1;
        for (const Step& step : steps_)
            if (step.name == "Integer" && step.p2 == counter) {
                if (walk.most >= 0)
                    return false;
                walk.most = step.p1;
            }
        return walk.most > 0;
    }

    const std::vector<Step>& steps_;
    std::size_t at_;
};

}  // namespace

std::optional<PlainWalk> plainWalkOf(sqlite3* db, const std::string& sql)
{
    const std::vector<Step> steps = programOf(db, sql);
    const auto filters = [](const Step& step) { return step.name == "VFilter"; };
    if (std::count_if(steps.begin(), steps.end(), filters) != 1)
        return std::nullopt;
    const auto filter = std::find_if(steps.begin(), steps.end(), filters);
    return LoopReader(steps, static_cast<std::size_t>(filter - steps.begin()) + 1).read();
}

bool asksColumnsBelow(sqlite3* db, const std::string& sql, int bound)
{
    const std::vector<Step> steps = programOf(db, sql);
    return std::any_of(steps.begin(), steps.end(),
                       [&](const Step& step) { return step.name == "VColumn" && step.p2 < bound; });
}

}  // namespace velnor::sql
