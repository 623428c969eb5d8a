#include "access/model/record_source.h"

#include "access/model/database_state.h"
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
    void recordWritten() override { store_->recordWritten(); }
    void attach(RecordsetState& rows) override { store_->add(rows); }
    void detach(RecordsetState& rows) override { store_->remove(rows); }

private:
    std::shared_ptr<OpenStore> store_;
    TableLayout layout_;
    const char* whyReadOnly_;
};

bool isStatement(std::string_view source)
{
    static constexpr std::string_view kSelect = "SELECT";
    const std::size_t first = source.find_first_not_of(" \t\r\n");
    if (first == source.npos)
        return false;
    source.remove_prefix(first);
    if (source.size() <= kSelect.size() ||
        !paths::sameName(source.substr(0, kSelect.size()), kSelect))
        return false;
    return std::string_view(" \t\r\n*[(\"'").find(source[kSelect.size()]) != std::string_view::npos;
}

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

const char* whyReadOnly(DatabaseState& database, const TableLayout& layout, RecordsetType type)
{
    if (!database.writeable())
        return "the database is open for reading only";
    if (type == RecordsetType::Snapshot)
        return "a snapshot is for reading only";
    return layout.updatable ? nullptr : "the table cannot be changed";
}

}  // namespace

std::unique_ptr<RecordSource> openSource(DatabaseState& database, std::string_view source,
                                         RecordsetType type)
{
    if (isStatement(source))
        throw EngineError(EngineErrorNumber::NotSupported, "Statements are not supported.");
    TableLayout layout = layoutOf(database, source);
    const char* why = whyReadOnly(database, layout, type);
    return std::make_unique<TableSource>(database.sharedStore(), std::move(layout), why);
}

}  // namespace velnor::model
