// What changes a database: writers, structure, commit.
#include "access/formats/jet/jet_store.h"

namespace velnor::jet {

void JetStore::needWriteable()
{
    if (file_.readOnly())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          "The database \"" + file_.path() + "\" is open for reading only.");
}

void JetStore::commit()
{
    if (file_.readOnly())
        return;
    try {
        catalog_.saveCounts();
        for (auto& [page, table] : tables_)
            table->saveCounts();
        file_.commit();
    } catch (...) {
        forgetChanges();
        throw;
    }
}

/// The file is back at its last commit, and so must be what is remembered of it.
void JetStore::forgetChanges()
{
    file_.rollback();
    catalog_.reload();
    for (auto it = tables_.begin(); it != tables_.end();) {
        try {
            it->second->reload();
            ++it;
        } catch (const EngineError&) {
            it = tables_.erase(it);  // made since that commit
        }
    }
}

std::unique_ptr<RowWriter> JetStore::writer(std::string_view)
{
    throw EngineError(EngineErrorNumber::NotSupported, "not yet");
}
void JetStore::createTable(const TableLayout&) { needWriteable(); }
void JetStore::dropTable(std::string_view) { needWriteable(); }
void JetStore::check(std::string_view, const ProblemSink&) {}

}  // namespace velnor::jet
