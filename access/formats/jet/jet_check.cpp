#include "access/formats/jet/jet_check.h"

#include <algorithm>

#include "access/formats/jet/check_catalog.h"
#include "access/formats/jet/check_context.h"
#include "access/formats/jet/check_index.h"
#include "access/formats/jet/check_rows.h"
#include "access/storage/byte_reader.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

constexpr PageNumber kFirstOwnPage = 6;
constexpr int kUsers = 256;

class DatabaseCheck {
public:
    DatabaseCheck(JetFile& file, Catalog& catalog, const TableOpener& open,
                  const ProblemSink& report)
        : context_(file, report), file_(file), catalog_(catalog), open_(open)
    {
    }
    void whole();
    void oneTable(const CatalogEntry& entry) { table(entry); }

private:
    void header();
    void freeMap();
    void table(const CatalogEntry& entry);
    void indexes(const std::shared_ptr<JetTable>& open, const RowFacts& facts,
                 const std::string& where);
    void mapRecords();
    void everyPage();
    void unowned(PageNumber page);

    CheckContext context_;
    JetFile& file_;
    Catalog& catalog_;
    const TableOpener& open_;
    CheckedTables tables_;
};

void DatabaseCheck::whole()
{
    header();
    freeMap();
    for (const CatalogEntry& entry : catalog_.objects())
        if (entry.table())
            table(entry);
    for (PageNumber page = kCatalogPage; page < kFirstOwnPage; ++page)
        if (!tables_.contains(page))
            context_.problem("table MSysObjects",
                             "It lacks the system table on page " + std::to_string(page) + ".");
    checkRelations(context_, tables_);
    checkObjects(context_, catalog_, tables_);
    mapRecords();
    everyPage();
}

void DatabaseCheck::header()
{
    context_.claim(0, context_.addOwner("the header"));
    const PageRef page = file_.page(0);
    const auto counters = static_cast<std::size_t>(file_.format().header.commitCounters);
    for (int user = 0; user < kUsers; ++user)
        if (loadLE<std::uint16_t>(page.data() + counters + 2 * static_cast<std::size_t>(user)) ==
            0) {
            context_.problem("the header",
                             "A program ended while it was writing: the database may be damaged.");
            return;
        }
}

void DatabaseCheck::freeMap()
{
    const std::string where = "the map of free pages";
    const auto owner = context_.addOwner(where);
    context_.claim(1, owner);
    try {
        for (const PageNumber page : file_.freePages().mapPages())
            context_.claim(page, owner);
        for (PageNumber page = 0; page < std::min(kFirstOwnPage, file_.pageCount()); ++page)
            if (file_.freePages().contains(page))
                context_.problem(where, "It calls page " + std::to_string(page) + " free.");
    } catch (const EngineError& error) {
        context_.problem(where, error.what());
    }
    const RowPointer released = file_.header().releasedMap;
    if (!released.isNull() && !context_.useMap(released, "the map of released pages").empty())
        context_.note("the map of released pages", "It holds pages, which are left alone.");
}

void DatabaseCheck::table(const CatalogEntry& entry)
{
    const std::string where = "table " + entry.name;
    const auto page = static_cast<PageNumber>(entry.id);
    if (tables_.contains(page)) {
        context_.problem(where, "Its definition is that of table " + tables_[page]->name() + ".");
        return;
    }
    try {
        const auto open = open_(entry);
        tables_[page] = open;
        checkDefinition(context_, *open, where);
        const RowFacts facts = checkRows(context_, *open, where);
        indexes(open, facts, where);
    } catch (const EngineError& error) {
        context_.problem(where, error.what());
    }
}

void DatabaseCheck::indexes(const std::shared_ptr<JetTable>& open, const RowFacts& facts,
                            const std::string& where)
{
    for (int real = 0; real < open->indexCount(); ++real) {
        std::string name = std::to_string(real);
        for (const LogicalIndex& index : open->def().logicalIndexes)
            if (static_cast<int>(index.realIndex) == real)
                name = index.name;
        checkIndex(context_, open, real, facts.entries[static_cast<std::size_t>(real)],
                   where + ", index " + name);
    }
}

/// Rows of map pages that nothing names.
void DatabaseCheck::mapRecords()
{
    for (const PageNumber number : context_.mapRecordPages()) {
        const PageRef page = file_.page(number);
        const DataPage data(file_.format(), page.data());
        if (!data.isData() || data.owner() != 0) {
            context_.problem("page maps", "Page " + std::to_string(number) +
                                              " holds page maps, but is marked as another's.");
            continue;
        }
        for (int slot = 0; slot < data.rowCount(); ++slot) {
            const RowPointer row{number, static_cast<std::uint8_t>(slot)};
            const auto bytes = data.row(slot);
            if (data.delivered(slot) && bytes && !bytes->empty() && !context_.mapRecordUsed(row))
                context_.note("page maps", "Nothing uses the map at " + placeText(row) + ".");
        }
    }
}

void DatabaseCheck::everyPage()
{
    for (PageNumber page = 0; page < file_.pageCount(); ++page) {
        const auto owner = context_.ownerOf(page);
        const bool free = page >= kFirstOwnPage && file_.isFree(page);
        if (owner != 0 && free)
            context_.problem("the map of free pages", "It calls page " + std::to_string(page) +
                                                          " free, which belongs to " +
                                                          context_.ownerName(owner) + ".");
        else if (owner == 0 && !free)
            unowned(page);
    }
}

void DatabaseCheck::unowned(PageNumber number)
{
    const PageRef page = file_.page(number);
    const DataPage data(file_.format(), page.data());
    const auto owner = data.isData() ? tables_.find(data.owner()) : tables_.end();
    if (owner != tables_.end())
        context_.note("table " + owner->second->name(),
                      "Page " + std::to_string(number) + " names it, but is not in its map.");
    else
        context_.note("lost pages", "Nothing uses page " + std::to_string(number) + ".");
}

}  // namespace

void checkDatabase(JetFile& file, Catalog& catalog, std::string_view table, const TableOpener& open,
                   const ProblemSink& report)
{
    DatabaseCheck check(file, catalog, open, report);
    if (table.empty())
        return check.whole();
    const CatalogEntry* entry = catalog.find(table);
    if (!entry || !entry->table())
        throw EngineError(EngineErrorNumber::TableNotFound,
                          "There is no table \"" + std::string(table) + "\" to be checked.");
    check.oneTable(*entry);
}

}  // namespace velnor::jet
