// access/sql/table_module.h - a table as the statement machine sees it: its columns are c0, c1 ...
// in their plain form, and behind them, hidden, e0, e1 ... in the exact form of plain_value.h.
#pragma once

#include <deque>
#include <memory>
#include <string>

#include "access/sql/access_plan.h"
#include "access/sql/row_road.h"
#include "access/sql/run_context.h"
#include "access/sql/source_table.h"

struct sqlite3;

namespace velnor::sql {

class TableModule {
public:
    /// Registers the table under `name` with a machine that is closed before this object goes.
    TableModule(sqlite3* db, const std::string& name, std::shared_ptr<SourceTable> table,
                RunContext& context);
    TableModule(const TableModule&) = delete;
    TableModule& operator=(const TableModule&) = delete;

    SourceTable& table() { return *table_; }
    RunContext& context() { return context_; }
    std::string declaration() const;
    int fields() const { return static_cast<int>(table_->layout().fields.size()); }

    /// Settles a plan and gives its number.
    int addPlan(sqlite3_index_info& info);
    const AccessPlan& plan(int number) const { return plans_[static_cast<std::size_t>(number)]; }

    /// Where the machine stands in this table now, if it is used once; null when it does not.
    RowRoad* road() const { return road_; }
    void standsOn(RowRoad* road) { road_ = road; }

private:
    std::int64_t records();
    std::string furtherColumns() const;

    std::shared_ptr<SourceTable> table_;
    RunContext& context_;
    std::deque<AccessPlan> plans_;
    std::int64_t records_ = -1;
    RowRoad* road_ = nullptr;
};

}  // namespace velnor::sql
