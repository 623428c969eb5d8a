#include "access/model/database_state.h"

#include "access/model/collection.h"
#include "access/model/recordset_state.h"
#include "access/model/structure_checks.h"
#include "access/model/table_state.h"

namespace velnor::model {

DatabaseState::DatabaseState(std::string name, std::string connect, bool readOnly,
                             std::shared_ptr<OpenStore> store)
    : name_(std::move(name)), connect_(std::move(connect)), readOnly_(readOnly),
      store_(std::move(store))
{
    tables_.onAppend_ = [this](TableDef& table) { appendTable(table); };
    tables_.onDelete_ = [this](TableDef& table) { deleteTable(table); };
    tables_.onRefresh_ = [this] { return readTables(); };
}

DatabaseState::~DatabaseState()
{
    try {
        close();
    } catch (const std::exception&) {
        // Nobody is there to hear it: Close() is for those who want to know.
    }
}

OpenStore& DatabaseState::openStore()
{
    if (!store_)
        throw EngineError(EngineErrorNumber::ObjectClosed, "The database is closed: " + name_);
    return *store_;
}

std::shared_ptr<OpenStore> DatabaseState::sharedStore()
{
    openStore();
    return store_;
}

void DatabaseState::requireWriteable()
{
    openStore();
    if (!writeable())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          "The database is open for reading only: " + name_ + ".");
}

Collection<TableDef>& DatabaseState::tables()
{
    openStore();
    if (!tablesRead_) {
        tables_.Refresh();
        tablesRead_ = true;
    }
    return tables_;
}

std::vector<TableDef> DatabaseState::readTables()
{
    std::vector<TableDef> tables;
    const auto self = shared_from_this();
    for (const TableEntry& entry : store().catalogue()) {
        TableDef table;
        table.state_ = std::make_shared<TableDef::State>(entry.name, traits());
        table.state_->layout.attributes = entry.attributes;
        table.state_->becomeStored(self);
        tables.push_back(std::move(table));
    }
    return tables;
}

void DatabaseState::appendTable(TableDef& table)
{
    requireWriteable();
    if (table.state_->stored)
        throw EngineError(EngineErrorNumber::ItemExists,
                          "Table " + table.Name() + " belongs to a database already.");
    TableLayout layout = table.state_->draftLayout();
    checkTableName(layout.name, traits());
    if (layout.fields.empty())
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "Table " + layout.name + " has no fields.");
    settleFields(layout.fields, traits());
    for (const IndexDef& index : layout.indexes)
        checkIndex(index, layout.fields);
    store().createTable(layout);
    table.state_->becomeStored(shared_from_this());
}

void DatabaseState::deleteTable(const TableDef& table)
{
    requireWriteable();
    openStore().requireUnused(table.Name());
    store().dropTable(table.Name());
}

void DatabaseState::attach(std::string_view name, std::shared_ptr<DatabaseState> other)
{
    if (name.empty() || attached(name))
        throw EngineError(EngineErrorNumber::ItemExists,
                          "A database is attached as '" + std::string(name) + "' already.");
    if (other.get() == this)  // held by itself it would never close
        other = std::shared_ptr<DatabaseState>(std::shared_ptr<void>(), this);
    attached_.emplace_back(name, std::move(other));
}

DatabaseState* DatabaseState::attached(std::string_view name) const
{
    for (const auto& [known, database] : attached_)
        if (paths::sameName(known, name))
            return database.get();
    return nullptr;
}

void DatabaseState::close()
{
    if (!store_)
        return;
    const auto closing = recordsets_;
    for (RecordsetState* rows : closing)
        rows->close();
    recordsets_.clear();
    tables_.items_.clear();
    attached_.clear();
    const auto store = std::move(store_);
    store_.reset();
    if (!readOnly_)
        store->commit();
}

}  // namespace velnor::model
