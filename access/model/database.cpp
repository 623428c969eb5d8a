// access/model/database.cpp - Database of engine.h.

#include "access/model/collection.h"
#include "access/model/database_state.h"
#include "access/model/edit_buffer.h"
#include "access/model/recordset_state.h"
#include "access/model/table_state.h"

namespace velnor {

Database::Database(std::shared_ptr<model::DatabaseState> state) : state_(std::move(state)) {}
Database::Database(Database&&) noexcept = default;
Database& Database::operator=(Database&&) noexcept = default;
Database::~Database() = default;

const std::string& Database::Name() const
{
    return state_->name();
}
const std::string& Database::Connect() const
{
    return state_->connect();
}
bool Database::Updatable() const
{
    return state_->writeable();
}
Collection<TableDef>& Database::TableDefs()
{
    return state_->tables();
}

TableDef Database::CreateTableDef(std::string_view name) const
{
    TableDef table;
    table.state_ = std::make_shared<TableDef::State>(name, state_->traits());
    return table;
}

Recordset Database::OpenRecordset(std::string_view source, RecordsetType type)
{
    auto records = model::openSource(*state_, source, type);
    return Recordset(std::make_unique<model::RecordsetState>(*state_, std::move(records), type));
}

void Database::Close()
{
    state_->close();
}

void Database::NewPassword(std::string_view old, std::string_view now)
{
    state_->requireWriteable();
    state_->openStore().changePassword(old, now);
}

void Database::attach(std::string_view name, const Database& other)
{
    state_->attach(name, other.state_);
}

void Database::queryOptions(QueryOptions options)
{
    state_->runOptions({options.memory, std::move(options.cancelled)});
}

void Database::commit()
{
    state_->openStore().commit();
}

void Database::check(std::string_view table, const std::function<void(const Finding&)>& report)
{
    state_->store().check(table, [&](const Problem& problem) {
        report({problem.where, problem.text, problem.harmless});
    });
}

std::vector<std::pair<std::string, std::string>> Database::info(std::string_view table)
{
    auto facts = state_->store().info(table);
    if (!table.empty())
        for (std::string& rule : model::rulesNotEnforced(state_->store().layout(table)))
            facts.emplace_back("Rule not enforced", std::move(rule));
    return facts;
}

}  // namespace velnor
