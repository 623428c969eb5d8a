// access/sql/plan_run.h - carries a plan out with the values that have come: gives the road to the
// records.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "access/sql/group_values.h"
#include "access/sql/grouped_rows.h"
#include "access/sql/kept_rows.h"
#include "access/sql/table_module.h"

struct sqlite3_value;

namespace velnor::sql {

/// One use of a table while a statement runs; it may be gone through many times.
class PlanRun {
public:
    explicit PlanRun(TableModule& module) : module_(module) {}
    /// Stands on the first record, or the first group; null when there is none.
    RowRoad* begin(const AccessPlan& plan, std::span<sqlite3_value* const> values);

private:
    RowRoad* beginRecords(const AccessPlan& plan, std::span<sqlite3_value* const> values);
    bool readTests(const AccessPlan& plan, std::span<sqlite3_value* const> values);
    ValueView termValue(int term) const;
    std::shared_ptr<RowCursor> cursorOn(const std::string& index, int number = 0);
    std::unique_ptr<RowRoad> roadOf(const AccessPlan& plan);
    std::unique_ptr<RowRoad> indexRoad(const AccessPlan& plan);
    std::unique_ptr<RowRoad> spellingRoad(const AccessPlan& plan);
    std::unique_ptr<RowRoad> keptRoad(const AccessPlan& plan);
    std::unique_ptr<RowRoad> groupedRoad(const AccessPlan& plan);
    bool keep(const AccessPlan& plan, std::vector<int> keyFields);
    std::unique_ptr<RowRoad> scanRoad(bool backwards = false);
    Tests tests() const;

    struct Kept {
        std::string index;
        int number;
        std::shared_ptr<RowCursor> cursor;
    };

    TableModule& module_;
    std::vector<Kept> cursors_;
    std::vector<Value> values_;                     // by term; for lists Null
    std::vector<std::unique_ptr<ScanTest>> tests_;  // by term; null when it decides nothing
    std::unique_ptr<RowRoad> road_;
    const AccessPlan* closed_ = nullptr;  // its road was tried and cannot be taken

    std::unique_ptr<GroupValues> groups_;
    std::unique_ptr<RowRoad> groupRoad_;
    std::unique_ptr<GroupedRows> grouped_;
    std::unique_ptr<KeptTable> kept_;
    const AccessPlan* keptFor_ = nullptr;
    bool keptTooLarge_ = false;
};

}  // namespace velnor::sql
