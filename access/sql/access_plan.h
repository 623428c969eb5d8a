// access/sql/access_plan.h - how one use of a table in a statement reaches its records, settled
// before the statement runs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "access/sql/scan_test.h"
#include "access/sql/source_table.h"

struct sqlite3_index_info;

namespace velnor::sql {

enum class Road : std::uint8_t {
    Scan,
    Index,     ///< between two keys
    Spelling,  ///< every spelling of a text in an index by character codes
    Kept,      ///< through a table in memory, by the values of some fields
    Grouped,   ///< all records, equal values of some fields together, from memory
};

struct PlanTerm {
    int field;
    TestOp op;
    int argument;           ///< which of the values that come when it runs; -1: none
    bool list = false;      ///< the value is a list
    bool constant = false;  ///< the same all the time that the statement runs
};

struct AccessPlan {
    Road road = Road::Scan;
    std::vector<PlanTerm> terms;
    std::string index;
    std::vector<int> equalTerms;  ///< of Index and Kept: positions in `terms`, by key field
    int lowTerm = -1, highTerm = -1;
    bool backwards = false;
    bool ordered = false;  ///< the records must come in this road's order
    std::vector<int> groupFields;
    std::vector<bool> fallingGroups;
    std::vector<int> usedFields;
};

/// What the statement machine asks about a use of a table, answered: the cheapest way, its cost,
/// and which conditions and orders it keeps.
class AccessPlanner {
public:
    /// `groups`: records may be grouped in memory.
    AccessPlanner(SourceTable& table, std::size_t memory, std::int64_t records, bool groups)
        : table_(table), layout_(table.layout()), memory_(memory), records_(records),
          groups_(groups)
    {
    }
    AccessPlan plan(sqlite3_index_info& info);

private:
    struct Condition {
        PlanTerm term;
        int number;  ///< in the machine's list
        bool exact;  ///< a constant that the test decides alone
    };
    int fieldOf(int column) const;
    void readConditions(sqlite3_index_info& info);
    bool takeCondition(sqlite3_index_info& info, int number, Condition& condition) const;
    const Condition* conditionOn(int field, bool equal) const;
    void considerIndexes(sqlite3_index_info& info);
    void considerIndex(const IndexDef& index);
    bool searchable(const IndexDef& index) const;
    bool givesOrder(const IndexDef& index, const sqlite3_index_info& info, bool& backwards) const;
    void considerKept();
    void considerGroups(sqlite3_index_info& info);
    double keptBytes() const;
    void settle(sqlite3_index_info& info);

    SourceTable& table_;
    const TableLayout& layout_;
    std::size_t memory_;
    std::int64_t records_;
    bool groups_;
    std::vector<Condition> conditions_;
    std::vector<int> used_;
    AccessPlan best_;
    double cost_ = 0, rows_ = 0;
    bool ordered_ = false;
};

/// Field, not record name; -1 for none. The exact form of field n is column n + fields.
int positionOfField(const TableLayout& layout, std::string_view name);

}  // namespace velnor::sql
