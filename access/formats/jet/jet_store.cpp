#include "access/formats/jet/jet_store.h"

#include "access/formats/jet/jet_cursor.h"
#include "access/formats/jet/table_layout.h"

namespace velnor::jet {
namespace {

[[noreturn]] void linked(const CatalogEntry& entry)
{
    throw EngineError(EngineErrorNumber::NotSupported,
                      "\"" + entry.name + "\" is a link to the table \"" + entry.foreignName +
                          "\" of another file" +
                          (entry.database.empty() ? "" : ", \"" + entry.database + "\"") +
                          "; open that file.");
}

}  // namespace

JetStore::JetStore(FileSystem& files, const OpenRequest& request)
    : file_(files, request), catalog_(file_)
{
}

std::vector<TableEntry> JetStore::catalogue()
{
    std::vector<TableEntry> list;
    for (const CatalogEntry* entry : catalog_.tables())
        list.push_back({entry->name, entry->attributes()});
    return list;
}

const CatalogEntry& JetStore::entryOf(std::string_view table)
{
    const CatalogEntry* entry = catalog_.find(table);
    if (!entry)
        throw EngineError(EngineErrorNumber::TableNotFound, "There is no table \"" +
                                                                std::string(table) + "\" in \"" +
                                                                file_.path() + "\".");
    return *entry;
}

std::shared_ptr<JetTable> JetStore::openTable(std::string_view name)
{
    const CatalogEntry& entry = entryOf(name);
    if (entry.link())
        linked(entry);
    const auto page = static_cast<PageNumber>(entry.id);
    if (page == kCatalogPage)
        return catalog_.objectTable();
    const auto known = tables_.find(page);
    if (known != tables_.end())
        return known->second;
    auto table = (entry.flags & kSystemTableBits) && entry.name.starts_with("MSys")
                     ? catalog_.systemTable(entry.name)
                     : std::make_shared<JetTable>(file_, page, entry.name);
    tables_.emplace(page, table);
    return table;
}

TableLayout JetStore::layout(std::string_view table)
{
    const CatalogEntry entry = entryOf(table);
    TableLayout layout;
    layout.name = entry.name;
    layout.attributes = entry.attributes();
    layout.dateCreated = entry.created;
    layout.lastUpdated = entry.updated;
    if (entry.link()) {
        layout.sourceTableName = entry.foreignName;
        layout.updatable = false;
        layout.whyNotUpdatable = "it is a link to a table of another file";
        return layout;
    }
    describe(*openTable(table), catalog_.properties(entry), layout);
    return layout;
}

IndexOrder JetStore::indexOrder(std::string_view, const IndexDef&)
{
    return {TextKeys::Blind, true, false};
}

std::int64_t JetStore::recordCount(std::string_view table)
{
    return openTable(table)->recordCount();
}

std::unique_ptr<RowCursor> JetStore::cursor(std::string_view table,
                                            std::optional<std::string_view> index)
{
    auto open = openTable(table);
    if (!index || index->empty())
        return std::make_unique<PhysicalCursor>(std::move(open));
    const int real = open->realIndexOf(*index);
    if (real < 0)
        throw EngineError(EngineErrorNumber::IndexKeyMissing, "\"" + std::string(*index) +
                                                                  "\" is not an index of table \"" +
                                                                  open->name() + "\".");
    return std::make_unique<IndexCursor>(std::move(open), real);
}

}  // namespace velnor::jet
