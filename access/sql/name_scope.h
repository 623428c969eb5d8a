// access/sql/name_scope.h - the tables and columns that a part of a statement can name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "access/sql/expression.h"
#include "access/sql/source_table.h"

namespace velnor::sql {

struct ScopeColumn {
    std::string name;
    SqlType type = SqlType::Unknown;
    FieldDef field;
};

/// One entry of FROM: a use of a table, or a subquery.
struct ScopeTable {
    std::string sql;                      ///< its name for the statement machine
    std::string database;                 ///< as written, may be empty
    std::string name;                     ///< alias, or name as written
    std::string bareName;                 ///< without the file's extension; empty behind an alias
    std::shared_ptr<SourceTable> source;  ///< null for a subquery
    int use = -1;                         ///< which v<n>
    std::vector<ScopeColumn> columns;

    bool isCalled(std::string_view database, std::string_view table) const;
};

struct FoundColumn {
    const ScopeTable* table = nullptr;
    int position = -1;
    bool twice = false;  ///< in more than one table
    int level = 0;       ///< 0: of the innermost statement
};

class NameScope {
public:
    explicit NameScope(const NameScope* outer) : outer_(outer) {}

    void add(ScopeTable table) { tables_.push_back(std::move(table)); }
    const std::vector<ScopeTable>& tables() const { return tables_; }
    /// `parts`: [database,] [table,] column.
    FoundColumn find(const std::vector<std::string>& parts) const;
    /// Positions in tables(): those of a name, or all for an empty one.
    std::vector<const ScopeTable*> called(const std::vector<std::string>& parts) const;

private:
    FoundColumn findHere(const std::vector<std::string>& parts) const;

    const NameScope* outer_;
    std::vector<ScopeTable> tables_;
};

/// The column as an expression.
Expression expressionOf(const ScopeTable& table, int position);

}  // namespace velnor::sql
