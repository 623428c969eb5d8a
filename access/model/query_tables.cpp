#include "access/model/query_tables.h"

#include "access/model/database_state.h"
#include "access/model/record_source.h"

namespace velnor::model {

std::shared_ptr<sql::SourceTable> QueryTables::find(std::string_view name, std::string_view table)
{
    DatabaseState* const database = name.empty() ? &database_ : database_.attached(name);
    if (!database)
        return nullptr;
    try {
        auto found =
            std::make_shared<QueryTable>(database->sharedStore(), layoutOf(*database, table));
        found_.push_back(found);
        return found;
    } catch (const EngineError& e) {
        if (e.code() != EngineErrorNumber::TableNotFound)
            throw;
        return nullptr;
    }
}

bool QueryTables::hasDatabase(std::string_view database) const
{
    return database_.attached(database) != nullptr;
}

}  // namespace velnor::model
