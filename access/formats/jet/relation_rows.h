// access/formats/jet/relation_rows.h - relationships as the catalog has them: an object, its
// rights, and one row of MSysRelationships for each pair of fields.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "access/formats/jet/catalog.h"

namespace velnor::jet {

/// Bits of MSysRelationships.grbit.
namespace relation_bit {
inline constexpr std::int32_t kUnique = 0x1, kNotEnforced = 0x2, kCascadeUpdates = 0x100,
                              kCascadeDeletes = 0x1000, kSetNull = 0x2000;
}

class RelationRows {
public:
    RelationRows(JetFile& file, Catalog& catalog);

    /// Makes catalog and definitions agree, where a damaged file lost either: rows are made from
    /// the ends in the definitions; a relationship without ends is no longer enforced; one of which
    /// nothing is left is taken out. Each change is told.
    void complete(const std::function<void(const std::string&)>& tell);

private:
    struct Rows {
        std::vector<RowId> rows;
        bool enforced = false;
    };
    void read();
    void addRows(const JetTable& child, const LogicalIndex& end);
    void addObject(const std::string& name);
    const JetTable* tableAt(PageNumber page) const;

    Catalog& catalog_;
    std::shared_ptr<JetTable> relationships_;
    std::map<std::string, Rows> rows_;  // by folded name
    std::map<PageNumber, std::shared_ptr<JetTable>> tables_;
};

}  // namespace velnor::jet
