// access/sql/source_table.h - what a statement reads from: tables by their names.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "access/formats/driver.h"
#include "access/formats/index_order.h"

namespace velnor::sql {

class SourceTable {
public:
    virtual ~SourceTable() = default;
    virtual const TableLayout& layout() const = 0;
    virtual IndexOrder orderOf(const IndexDef&) { return {}; }
    virtual std::unique_ptr<RowCursor> cursor(std::optional<std::string_view> index) = 0;
    /// Live records; may cost a look through the file.
    virtual std::int64_t recordCount() = 0;
};

class Tables {
public:
    virtual ~Tables() = default;
    /// A table of an attached database, or of the own one when `database` is empty. Null when it is
    /// not there.
    virtual std::shared_ptr<SourceTable> find(std::string_view database,
                                              std::string_view table) = 0;
    virtual bool hasDatabase(std::string_view database) const = 0;
};

}  // namespace velnor::sql
