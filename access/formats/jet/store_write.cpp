// What changes a database: writers, structure, commit.
#include "access/formats/jet/jet_store.h"

#include "access/formats/jet/jet_check.h"
#include "access/formats/jet/jet_writer.h"
#include "access/formats/jet/structure.h"
#include "platform/paths.h"

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

void JetStore::changePassword(std::string_view password)
{
    needWriteable();
    commit();
    try {
        file_.setPassword(password);
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

TableByPage JetStore::tablesByPage()
{
    return [this](PageNumber page) -> std::shared_ptr<JetTable> {
        for (const CatalogEntry& entry : catalog_.objects())
            if (entry.table() && static_cast<PageNumber>(entry.id) == page)
                return openTable(entry.name);
        return nullptr;
    };
}

std::unique_ptr<RowWriter> JetStore::writer(std::string_view table)
{
    needWriteable();
    const CatalogEntry entry = entryOf(table);
    auto open = openTable(table);
    if (entry.attributes() & kSystemTableBits)
        throw EngineError(EngineErrorNumber::ReadOnly,
                          "\"" + entry.name + "\" is a system table and cannot be changed.");
    bool randomNumbers = false;
    for (const Column& column : open->def().columns)
        if (column.type == column_type::kLong && column.autonumber())
            randomNumbers = paths::sameName(catalog_.properties(entry).defaultValue(column.name),
                                            "GenUniqueID()");
    return std::make_unique<JetWriter>(std::move(open), tablesByPage(), randomNumbers);
}

/// A change of structure is made on a committed file, so that it can be undone as a whole without
/// losing records.
template <class Change> void JetStore::changeStructure(Change change)
{
    needWriteable();
    commit();
    try {
        change(Structure(file_, catalog_, tablesByPage()));
    } catch (...) {
        forgetChanges();
        throw;
    }
}

void JetStore::createTable(const TableLayout& layout)
{
    changeStructure([&](Structure structure) { structure.createTable(layout); });
}

void JetStore::dropTable(std::string_view table)
{
    needWriteable();
    const CatalogEntry entry = entryOf(table);
    const auto open = openTable(table);
    changeStructure([&](Structure structure) { structure.dropTable(entry, *open); });
    tables_.erase(static_cast<PageNumber>(entry.id));
}

void JetStore::check(std::string_view table, const ProblemSink& report)
{
    const auto open = [this](const CatalogEntry& entry) { return openTable(entry.name); };
    checkDatabase(file_, catalog_, table, open, report);
}

}  // namespace velnor::jet
