// access/model/query_tables.h - the tables of a database, and of those attached to it, as
// statements see them.
#pragma once

#include <memory>
#include <vector>

#include "access/model/open_stores.h"
#include "access/sql/source_table.h"

namespace velnor::model {

class DatabaseState;

/// A table of an open store.
class QueryTable final : public sql::SourceTable {
public:
    QueryTable(std::shared_ptr<OpenStore> store, TableLayout layout)
        : store_(std::move(store)), layout_(std::move(layout))
    {
    }
    const TableLayout& layout() const override { return layout_; }
    IndexOrder orderOf(const IndexDef& index) override
    {
        auto* const orders = dynamic_cast<IndexOrders*>(&store_->store());
        return orders ? orders->indexOrder(layout_.name, index) : IndexOrder{};
    }
    std::unique_ptr<RowCursor> cursor(std::optional<std::string_view> index) override
    {
        return store_->store().cursor(layout_.name, index);
    }
    std::int64_t recordCount() override { return store_->store().recordCount(layout_.name); }
    OpenStore& store() { return *store_; }

private:
    std::shared_ptr<OpenStore> store_;
    TableLayout layout_;
};

class QueryTables final : public sql::Tables {
public:
    explicit QueryTables(DatabaseState& database) : database_(database) {}
    std::shared_ptr<sql::SourceTable> find(std::string_view database,
                                           std::string_view table) override;
    bool hasDatabase(std::string_view database) const override;
    /// Every table that was found.
    const std::vector<std::shared_ptr<QueryTable>>& found() const { return found_; }

private:
    DatabaseState& database_;
    std::vector<std::shared_ptr<QueryTable>> found_;
};

}  // namespace velnor::model
