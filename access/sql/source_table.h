// access/sql/source_table.h - what a statement reads from: tables by their names.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "access/formats/driver.h"

namespace velnor::sql {

/// How the texts of an index are ordered, so far as a search may count on it.
enum class TextKeys : std::uint8_t {
    Unknown,  ///< texts are never looked for in an index
    Blind,    ///< equal but for case are one key
    Bytes,    ///< by character code: capitals stand before small letters
};

class SourceTable {
public:
    virtual ~SourceTable() = default;
    virtual const TableLayout& layout() const = 0;
    virtual TextKeys textKeys() const = 0;
    /// Null keys stand first, as the smallest ones: an index may give an order.
    virtual bool nullsFirst() const = 0;
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
