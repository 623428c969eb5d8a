// access/formats/jet/system_row.h - a record of a system table, put together by field names.
#pragma once

#include <string>
#include <vector>

#include "access/formats/jet/catalog.h"
#include "access/value.h"

namespace velnor::jet {

class SystemRow {
public:
    explicit SystemRow(JetTable& table) : table_(table), values_(table.plan().fields.size()) {}
    /// A field that the table does not have is left out: versions differ.
    void set(const char* field, ValueView value)
    {
        const int at = fieldNamed(table_, field);
        if (at >= 0)
            values_[at] = value;
    }
    /// The bytes must live as long as the row is used.
    void setBytes(const char* field, const std::string& bytes)
    {
        set(field,
            ValueView::bytes({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
    }
    const std::vector<ValueView>& values() const { return values_; }

private:
    JetTable& table_;
    std::vector<ValueView> values_;
};

}  // namespace velnor::jet
