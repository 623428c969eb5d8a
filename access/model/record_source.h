// access/model/record_source.h - where a Recordset's records come from: a table of a store, or the
// answer to a statement. `openSource` is the one place that tells them apart.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "access/engine.h"
#include "access/formats/driver.h"

namespace velnor::model {

class DatabaseState;
class RecordsetState;

class RecordSource {
public:
    virtual ~RecordSource() = default;
    virtual const TableLayout& layout() const = 0;
    virtual const FormatTraits& traits() const = 0;
    /// Why nothing may be written; null when it may.
    virtual const char* whyReadOnly() const = 0;
    virtual std::unique_ptr<RowCursor> cursor(std::optional<std::string_view> index) = 0;
    virtual std::unique_ptr<RowWriter> writer() = 0;
    virtual std::int64_t recordCount() = 0;
    /// Before each record that is added, changed or removed, and after it.
    virtual void recordWillChange() = 0;
    virtual void recordWritten() = 0;
    /// The recordset is told when its cursors must go, from attach to detach.
    virtual void attach(RecordsetState& rows) = 0;
    virtual void detach(RecordsetState& rows) = 0;
};

/// A table by its name (folder kinds: with or without its extension), or a SELECT statement; 3078
/// when it is not there.
std::unique_ptr<RecordSource> openSource(DatabaseState& database, std::string_view source,
                                         RecordsetType type);

/// The structure of a table by such a name.
TableLayout layoutOf(DatabaseState& database, std::string_view source);

}  // namespace velnor::model
