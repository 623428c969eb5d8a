#include "access/formats/jet/index_rules.h"

#include "access/engine_error.h"

namespace velnor::jet {

IndexPlan::IndexPlan(const TableDef& table, const RowPlan& rows, const RealIndex& index)
{
    for (const IndexColumn& column : index.columns) {
        KeyColumn key;
        key.descending = column.descending;
        if (const Column* c = table.columnById(column.id)) {
            key.type = c->type;
            key.scale = c->scale;
            key.order = c->order;
        }
        fields.push_back(rows.fieldOfId(column.id));
        keyColumns.push_back(key);
    }
}

void requireKey(const RealIndex& index, const KeyBuilder& keys, const std::string& table)
{
    if (index.required() && keys.nulls() > 0)
        throw EngineError(EngineErrorNumber::NullKey, "An index or primary key of table \"" +
                                                          table + "\" cannot hold a Null value.");
    if (takesKey(index, keys) && !keys.sure())
        throw EngineError(
            EngineErrorNumber::NotSupported,
            "Table \"" + table +
                "\" has an index whose sort order is not supported for this text; the "
                "record cannot be written.");
}

void refuseDuplicateKey(const std::string& table)
{
    throw EngineError(EngineErrorNumber::DuplicateKey,
                      "The record would make duplicate values in an index, primary key or "
                      "relationship of table \"" +
                          table + "\".");
}

}  // namespace velnor::jet
