#include "access/model/record_source.h"

#include "access/model/database_state.h"
#include "access/model/query_source.h"
#include "access/model/recordset_state.h"
#include "platform/paths.h"

namespace velnor::model {
namespace {

class TableSource final : public RecordSource {
public:
    TableSource(std::shared_ptr<OpenStore> store, TableLayout layout, const char* whyReadOnly)
        : store_(std::move(store)), layout_(std::move(layout)), whyReadOnly_(whyReadOnly)
    {
    }
    const TableLayout& layout() const override { return layout_; }
    const FormatTraits& traits() const override { return store_->traits(); }
    const char* whyReadOnly() const override { return whyReadOnly_; }
    std::unique_ptr<RowCursor> cursor(std::optional<std::string_view> index) override
    {
        return store_->store().cursor(layout_.name, index);
    }
    std::unique_ptr<RowWriter> writer() override { return store_->store().writer(layout_.name); }
    std::int64_t recordCount() override { return store_->store().recordCount(layout_.name); }
    void recordWillChange() override { store_->willChange(); }
    void recordWritten() override { store_->recordWritten(); }
    void attach(RecordsetState& rows) override { store_->add(rows); }
    void detach(RecordsetState& rows) override { store_->remove(rows); }

private:
    std::shared_ptr<OpenStore> store_;
    TableLayout layout_;
    const char* whyReadOnly_;
};

/// No table of this name, and words as in a statement: people want to hear of those.
bool readsLikeStatement(std::string_view source)
{
    return paths::foldName(source).find(" FROM ") != std::string::npos;
}

const char* whyReadOnly(DatabaseState& database, const TableLayout& layout)
{
    if (!database.writeable())
        return "the database is open for reading only";
    return layout.updatable ? nullptr : "the table cannot be changed";
}

}  // namespace

/// Folder kinds take the file's name as well, but only when no table has it as its bare name.
TableLayout layoutOf(DatabaseState& database, std::string_view source)
{
    const std::size_t dot = source.rfind('.');
    try {
        return database.store().layout(source);
    } catch (const EngineError& e) {
        if (e.code() != EngineErrorNumber::TableNotFound || !database.traits().folder ||
            dot == source.npos)
            throw;
    }
    return database.store().layout(source.substr(0, dot));
}

std::unique_ptr<RecordSource> openSource(DatabaseState& database, std::string_view source,
                                         RecordsetType type)
{
    if (sql::isSelect(source))
        return openQuery(database, source, type);
    TableLayout layout;
    try {
        layout = layoutOf(database, source);
    } catch (const EngineError& e) {
        if (e.code() == EngineErrorNumber::TableNotFound && readsLikeStatement(source))
            throw EngineError(EngineErrorNumber::SyntaxError,
                              "Syntax error: a statement begins with SELECT.");
        throw;
    }
    if (type == RecordsetType::Snapshot)
        return openSnapshot(database, source);
    const char* why = whyReadOnly(database, layout);
    return std::make_unique<TableSource>(database.sharedStore(), std::move(layout), why);
}

}  // namespace velnor::model
