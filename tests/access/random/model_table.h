// tests/access/random/model_table.h - the table as it must be: plain rows in memory.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/access/random/random_format.h"

namespace velnor::testing {

using ModelRow = std::vector<Value>;  // in layout order; the first names the record

class ModelTable {
public:
    explicit ModelTable(const RandomFormat& format);

    std::vector<FieldDef> fields;
    std::vector<IndexDef> indexes;
    std::map<std::int64_t, ModelRow> rows;  // by the first field

    int fieldPosition(const std::string& name) const;  ///< -1 when it is not there
    bool indexUses(const std::string& field) const;
    int compareKeys(const IndexDef& index, const ModelRow& a, const ModelRow& b) const;
    /// Compares the first key.size() fields of an index with a key.
    int compareWithKey(const IndexDef& index, const ModelRow& row,
                       const std::vector<Value>& key) const;
    /// The unique index in which `row` would meet another record; empty when none. `except`: its
    /// own name.
    std::string collision(const ModelRow& row, const std::int64_t* except) const;
    bool hasDuplicates(const IndexDef& index) const;
    bool holdsNull(const IndexDef& index, const ModelRow& row) const;
    /// Whether the record stands in the index.
    bool listed(const IndexDef& index, const ModelRow& row) const;
    std::string csv() const;

private:
    int compareField(const FieldDef& field, ValueView a, ValueView b) const;
    const RandomFormat& format_;
};

/// One value as the outside readers print it; Null is empty.
std::string plainText(ValueView v);

}  // namespace velnor::testing
