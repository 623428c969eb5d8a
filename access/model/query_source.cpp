#include "access/model/query_source.h"

#include "access/model/database_state.h"
#include "access/model/recordset_state.h"

namespace velnor::model {
namespace {

constexpr const char* kForReading = "it is for reading only";

/// Stands for one table of a statement with the store that has it.
class TableClient final : public StoreClient {
public:
    TableClient(QueryTable& table, QueryResult* result) : table_(table), result_(result) {}
    const std::string& tableName() const override { return table_.layout().name; }
    /// The store goes: what is still to come is fetched while it is there.
    void releaseStore() override
    {
        storeWillChange();
        if (rows_)
            rows_->releaseStore();
    }
    void restoreStore() override
    {
        if (rows_)
            rows_->restoreStore();
    }
    void storeWillChange() override
    {
        if (result_)
            result_->fetchAll();
    }
    OpenStore& store() { return table_.store(); }
    /// A recordset whose cursor belongs to this store.
    void holdsCursor(RecordsetState* rows) { rows_ = rows; }

private:
    QueryTable& table_;
    QueryResult* result_;
    RecordsetState* rows_ = nullptr;
};

class QuerySource : public RecordSource {
public:
    QuerySource(DatabaseState& database, QueryTables tables, TableLayout layout)
        : traits_(database.traits()), tables_(std::move(tables)), layout_(std::move(layout))
    {
    }
    const TableLayout& layout() const override { return layout_; }
    const FormatTraits& traits() const override { return traits_; }
    const char* whyReadOnly() const override { return kForReading; }
    std::unique_ptr<RowWriter> writer() override
    {
        throw EngineError(EngineErrorNumber::ReadOnly, kForReading);
    }
    void recordWillChange() override {}
    void recordWritten() override {}
    void detach(RecordsetState&) override
    {
        for (const auto& client : clients_)
            client->store().remove(*client);
        clients_.clear();
    }

protected:
    void join(QueryResult* result, RecordsetState* rows)
    {
        for (const auto& table : tables_.found()) {
            clients_.push_back(std::make_unique<TableClient>(*table, result));
            clients_.back()->holdsCursor(rows);
            table->store().add(*clients_.back());
        }
    }

private:
    const FormatTraits& traits_;
    QueryTables tables_;
    TableLayout layout_;
    std::vector<std::unique_ptr<TableClient>> clients_;
};

class ResultSource final : public QuerySource {
public:
    ResultSource(DatabaseState& database, QueryTables tables, std::shared_ptr<QueryResult> result)
        : QuerySource(database, std::move(tables), result->layout()), result_(std::move(result))
    {
    }
    std::unique_ptr<RowCursor> cursor(std::optional<std::string_view>) override
    {
        return std::make_unique<ResultCursor>(result_);
    }
    std::int64_t recordCount() override { return result_->fetchAll(); }
    void attach(RecordsetState& rows) override
    {
        join(result_.get(), result_->keepsRecords() ? &rows : nullptr);
    }

private:
    std::shared_ptr<QueryResult> result_;
};

/// Stands on no record, and finds none.
class LostCursor final : public RowCursor {
public:
    bool first() override { return false; }
    bool last() override { return false; }
    bool next() override { return false; }
    bool previous() override { return false; }
    bool moveTo(RowId) override { return false; }
    RowId row() const override { return 0; }
    ValueView field(int) override { return {}; }
};

class ForwardSource final : public QuerySource {
public:
    ForwardSource(DatabaseState& database, QueryTables tables, sql::Translation translation,
                  std::unique_ptr<ForwardCursor> cursor)
        : QuerySource(database, std::move(tables), layoutOf(translation)),
          cursor_(std::move(cursor))
    {
    }
    static TableLayout layoutOf(const sql::Translation& translation)
    {
        TableLayout layout;
        layout.name = "the answer";
        for (const sql::OutputColumn& column : translation.columns)
            layout.fields.push_back(column.field);
        return layout;
    }
    std::unique_ptr<RowCursor> cursor(std::optional<std::string_view>) override
    {
        if (!cursor_)  // its files were opened anew, for writing: the place is lost
            return std::make_unique<LostCursor>();
        return std::move(cursor_);
    }
    std::int64_t recordCount() override
    {
        throw EngineError(EngineErrorNumber::NotSupported,
                          "A recordset that only goes forwards is not counted.");
    }
    void attach(RecordsetState& rows) override { join(nullptr, &rows); }

private:
    std::unique_ptr<ForwardCursor> cursor_;
};

}  // namespace

std::unique_ptr<RecordSource> openQuery(DatabaseState& database, std::string_view statement,
                                        RecordsetType type)
{
    if (type == RecordsetType::Table)
        throw EngineError(EngineErrorNumber::NotSupported,
                          "A statement cannot be opened as a recordset of table type.");
    QueryTables tables(database);
    sql::Translation translation = sql::translate(statement, tables);
    if (type == RecordsetType::ForwardOnly) {
        auto cursor = std::make_unique<ForwardCursor>(translation, database.runOptions());
        return std::make_unique<ForwardSource>(database, std::move(tables), std::move(translation),
                                               std::move(cursor));
    }
    auto result = std::make_shared<QueryResult>(std::move(translation), database.runOptions());
    return std::make_unique<ResultSource>(database, std::move(tables), std::move(result));
}

std::unique_ptr<RecordSource> openSnapshot(DatabaseState& database, std::string_view table)
{
    QueryTables tables(database);
    sql::Translation all;
    all.tables.push_back(tables.find("", table));
    if (!all.tables.front())
        throw EngineError(EngineErrorNumber::TableNotFound,
                          "There is no table '" + std::string(table) + "'.");
    const TableLayout& layout = all.tables.front()->layout();
    for (const FieldDef& field : layout.fields) {
        all.columns.push_back({field, false});
        all.fieldOfColumn.push_back(static_cast<int>(all.fieldOfColumn.size()));
    }
    all.recordsSql = "SELECT rowid FROM v0";
    auto result = std::make_shared<QueryResult>(std::move(all), database.runOptions());
    return std::make_unique<ResultSource>(database, std::move(tables), std::move(result));
}

}  // namespace velnor::model
