// What changes a database: writers, structure, commit.
#include "access/formats/jet/jet_store.h"

#include <algorithm>

#include "access/formats/jet/jet_check.h"
#include "access/formats/jet/jet_writer.h"
#include "access/formats/jet/structure.h"
#include "access/formats/jet/table_change.h"
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
        const JetFile::LongChange change(file_);
        catalog_.saveCounts();
        for (auto& [page, table] : tables_)
            table->saveCounts();
        file_.commit();
    } catch (...) {
        forgetChanges();
        throw;
    }
}

void JetStore::breathe(std::size_t mostBytes)
{
    if (file_.readOnly() || file_.pendingBytes() <= mostBytes)
        return;
    const bool wait = std::any_of(tables_.begin(), tables_.end(),
                                  [](const auto& open) { return open.second->entriesWait(); });
    const std::uint64_t size = std::uint64_t{file_.pageCount()} * file_.format().pageSize;
    if (!wait || size >= 2 * file_.committedBytes())
        return commit();
    try {
        file_.spill();
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

/// A change of structure begins and ends with a commit: it can be undone as a whole without losing
/// records, and nobody opens a structure that a failed commit takes away again.
template <class Change> void JetStore::changeStructure(Change change)
{
    needWriteable();
    commit();
    try {
        const JetFile::LongChange longChange(file_, [this] { stopIfAsked(); });
        change(Structure(file_, catalog_, tablesByPage()));
        catalog_.saveCounts();
        file_.commit();
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
    forgetTable(static_cast<PageNumber>(entry.id));
}

/// Those who still hold the table as it was cannot write to it.
void JetStore::forgetTable(PageNumber page)
{
    const auto known = tables_.find(page);
    if (known == tables_.end())
        return;
    known->second->retire();
    tables_.erase(known);
}

template <class Change> void JetStore::changeTable(std::string_view table, Change change)
{
    needWriteable();
    const CatalogEntry entry = entryOf(table);
    const auto open = openTable(table);
    changeStructure([&](const Structure&) {
        TableChange changing(file_, catalog_, entry, open, tablesByPage());
        change(changing);
    });
    forgetTable(open->page());
}

void JetStore::addField(std::string_view table, const FieldDef& field)
{
    bool misread = false;
    changeTable(table, [&](TableChange& changing) { misread = changing.addField(field); });
    if (!misread)
        return;
    try {
        rewriteRecords(table);
    } catch (...) {
        forgetChanges();
        changeTable(table, [&](TableChange& changing) { changing.dropField(field.name); });
        throw;
    }
}

/// Nothing changes but the form of the records, so that there may be commits in between.
void JetStore::rewriteRecords(std::string_view table)
{
    constexpr std::size_t kCommitBytes = 8u << 20;
    const auto open = openTable(table);
    JetWriter writer(open, tablesByPage(), false);
    PhysicalCursor cursor(open);
    for (bool on = cursor.first(); on; on = cursor.next()) {
        writer.update(cursor.row(), {});
        if (pendingBytes() > kCommitBytes)
            commit();
    }
    commit();
}

void JetStore::dropField(std::string_view table, std::string_view field)
{
    changeTable(table, [&](TableChange& changing) { changing.dropField(field); });
}

void JetStore::addIndex(std::string_view table, const IndexDef& index)
{
    changeTable(table, [&](TableChange& changing) { changing.addIndex(index); });
}

void JetStore::dropIndex(std::string_view table, std::string_view index)
{
    changeTable(table, [&](TableChange& changing) { changing.dropIndex(index); });
}

void JetStore::check(std::string_view table, const ProblemSink& report)
{
    const auto open = [this](const CatalogEntry& entry) { return openTable(entry.name); };
    checkDatabase(file_, catalog_, table, open, report);
}

}  // namespace velnor::jet
