#include "access/formats/jet/salvage.h"

#include <algorithm>
#include <set>

#include "access/formats/jet/data_page.h"
#include "access/formats/jet/definition_repair.h"
#include "access/formats/jet/system_tables.h"
#include "access/storage/byte_reader.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

constexpr PageNumber kFirstOwnPage = 6;

}  // namespace

Salvage::Salvage(JetFile& file, const ProblemSink& report) : file_(file), report_(report)
{
    mendSystemTables();
    findPages();
    openEnlisted();
    openUnlisted();
    mendRelations();
}

void Salvage::tell(const std::string& where, const std::string& text, bool harmless)
{
    if (report_)
        report_({where, text, harmless});
}

const std::vector<PageNumber>& Salvage::pagesOf(PageNumber definition) const
{
    static const std::vector<PageNumber> kNone;
    const auto found = pages_.find(definition);
    return found == pages_.end() ? kNone : found->second;
}

std::shared_ptr<JetTable> Salvage::tryOpen(PageNumber page, const std::string& name)
{
    try {
        auto table = std::make_shared<JetTable>(file_, page, name);
        TableDef def = table->def();
        for (const std::string& column : mendColumns(def))
            if (!column.empty())
                tell("table " + name, "Its field \"" + column + "\" is lost.", false);
        for (const std::string& index : dropImpossibleIndexes(def))
            tell("table " + name, "Its index \"" + index + "\" is gone.", false);
        table = std::make_shared<JetTable>(file_, std::move(def), name);
        // A definition that lays out no record is none.
        RowWriterBuffer layout(table->plan());
        return table->def().columns.empty() ? nullptr : table;
    } catch (const EngineError&) {
        return nullptr;
    }
}

namespace {

bool hasColumn(const TableDef& def, const Column& wanted)
{
    return wanted.name == "LvExtra" ||
           std::any_of(def.columns.begin(), def.columns.end(), [&](const Column& c) {
               return c.name == wanted.name && c.type == wanted.type && c.id == wanted.id &&
                      c.fixed() == wanted.fixed() &&
                      (c.fixed() ? c.fixedOffset == wanted.fixedOffset
                                 : c.variableSlot == wanted.variableSlot);
           });
}

bool hasIndex(const TableDef& def, const TableDef& standard, const LogicalIndex& wanted)
{
    const auto sameColumn = [](const IndexColumn& a, const IndexColumn& b) {
        return a.id == b.id && a.descending == b.descending;
    };
    const RealIndex& tree = standard.realIndexes[wanted.realIndex];
    return std::any_of(
        def.logicalIndexes.begin(), def.logicalIndexes.end(), [&](const LogicalIndex& index) {
            return index.name == wanted.name && index.realIndex < def.realIndexes.size() &&
                   std::ranges::equal(def.realIndexes[index.realIndex].columns, tree.columns,
                                      sameColumn);
        });
}

/// Whether a definition has every column and index of a system table, as they must be.
bool fits(const TableDef& def, const TableDef& standard)
{
    return std::all_of(standard.columns.begin(), standard.columns.end(),
                       [&](const Column& wanted) { return hasColumn(def, wanted); }) &&
           std::all_of(standard.logicalIndexes.begin(), standard.logicalIndexes.end(),
                       [&](const LogicalIndex& wanted) { return hasIndex(def, standard, wanted); });
}

}  // namespace

/// The catalog and its companions are the same in every file: without their definitions their
/// records can still be read. Of the last two, programs put either first.
void Salvage::mendSystemTables()
{
    const JetHeader& header = file_.header();
    const std::vector<TableDef> standard =
        systemTableDefs({file_.format(), header.order, header.codePage, header.columnWord});
    std::vector<bool> found(standard.size(), false);
    std::vector<PageNumber> broken;
    for (PageNumber page = kCatalogPage; page < kFirstOwnPage; ++page) {
        std::size_t kind = standard.size();
        try {
            const JetTable table(file_, page, "");
            const RowWriterBuffer layout(table.plan());  // refuses what lays out no record
            for (std::size_t i = 0; i < standard.size(); ++i)
                if (fits(table.def(), standard[i]))
                    kind = i;
        } catch (const EngineError&) {
        }
        if (kind < standard.size())
            found[kind] = true;
        else
            broken.push_back(page);
    }
    for (const PageNumber page : broken) {
        std::size_t kind = page - kCatalogPage;
        if (found[kind])
            kind = static_cast<std::size_t>(std::find(found.begin(), found.end(), false) -
                                            found.begin());
        if (kind >= standard.size())
            continue;
        found[kind] = true;
        layDefinition(page, standard[kind]);
    }
}

void Salvage::layDefinition(PageNumber page, TableDef def)
{
    if (file_.format().version == 4)
        std::stable_sort(def.columns.begin(), def.columns.end(),
                         [](const Column& a, const Column& b) {
                             return paths::foldName(a.name) < paths::foldName(b.name);
                         });
    std::vector<PageNumber> chain{page};
    writeTableChain(file_, buildTableDef(def, file_.names()), chain);
    tell("page " + std::to_string(page), "The definition of a system table was laid anew.", true);
}

void Salvage::findPages()
{
    std::set<PageNumber> followers;
    for (PageNumber number = kCatalogPage; number < file_.pageCount(); ++number) {
        const PageRef page = file_.page(number);
        const DataPage data(file_.format(), page.data());
        if (page.data()[0] == page_type::kTableDef && !file_.isFree(number)) {
            definitions_.push_back(number);
            followers.insert(loadLE<std::uint32_t>(page.data() + file_.format().table.nextPage));
        } else if (data.isData() && data.owner() >= kCatalogPage &&
                   data.owner() != kLongValueOwner) {
            pages_[data.owner()].push_back(number);
        }
    }
    std::erase_if(definitions_, [&](PageNumber page) { return followers.contains(page); });
}

/// By its fields: programs put the last two in either order.
std::string Salvage::systemName(PageNumber page)
{
    const JetTable table(file_, page, "");
    if (fieldNamed(table, "szRelationship") >= 0)
        return "MSysRelationships";
    if (fieldNamed(table, "Attribute") >= 0)
        return "MSysQueries";
    return fieldNamed(table, "SID") >= 0 ? "MSysACEs" : "MSysObjects";
}

/// Pages that are marked free count only where the table's own map names them.
void Salvage::openEnlisted()
{
    // The system tables are there whatever the catalog says.
    for (PageNumber page = kCatalogPage; page < kFirstOwnPage; ++page) {
        const std::string name = systemName(page);
        auto table = tryOpen(page, name);
        if (!table)
            table = std::make_shared<JetTable>(file_, page, name);
        tables_.push_back({std::move(table), false});
    }
    Catalog catalog(file_);
    std::set<PageNumber> seen;
    for (const CatalogEntry& entry : catalog.objects()) {
        const auto page = static_cast<PageNumber>(entry.id);
        if (!entry.table() || page < kFirstOwnPage || !seen.insert(page).second)
            continue;
        auto table = tryOpen(page, entry.name);
        if (!table) {
            tell("table " + entry.name, "Its definition cannot be read: it is lost.", false);
            continue;
        }
        tables_.push_back({std::move(table), true});
    }
    for (Table& found : tables_) {
        JetTable& table = *found.table;
        std::set<PageNumber> mapped;
        try {
            for (PageNumber page = table.owned().next(1); page != 0;
                 page = table.owned().next(page + 1))
                mapped.insert(page);
        } catch (const EngineError&) {
        }
        auto& pages = pages_[table.page()];
        std::erase_if(
            pages, [&](PageNumber page) { return !mapped.contains(page) && file_.isFree(page); });
        const auto lost = std::count_if(mapped.begin(), mapped.end(), [&](PageNumber page) {
            return !std::binary_search(pages.begin(), pages.end(), page);
        });
        if (lost > 0)
            tell("table " + table.name(),
                 "The records of " + std::to_string(lost) + " pages are lost.", false);
        else if (mapped.size() != pages.size())
            tell("table " + table.name(), "Its map of pages was wrong and is made anew.", true);
    }
}

/// Definitions with records that the catalog has lost.
void Salvage::openUnlisted()
{
    std::set<PageNumber> known;
    for (const Table& found : tables_)
        known.insert(found.table->page());
    int number = 0;
    for (const PageNumber page : definitions_) {
        if (known.contains(page))
            continue;
        auto& pages = pages_[page];
        std::erase_if(pages, [&](PageNumber own) { return file_.isFree(own); });
        if (pages.empty())
            continue;
        const std::string name = "Recovered " + std::to_string(++number);
        if (auto table = tryOpen(page, name)) {
            tell("table " + name, "Its name was lost; it is called so now.", false);
            tables_.push_back({std::move(table), false});
        }
    }
}

void Salvage::mendRelations()
{
    const auto definition = [this](PageNumber page) -> const TableDef* {
        for (const Table& found : tables_)
            if (found.table->page() == page)
                return &found.table->def();
        return nullptr;
    };
    std::vector<std::vector<std::size_t>> broken;
    for (const Table& found : tables_)
        broken.push_back(brokenRelations(found.table->def(), definition));
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        TableDef& def = tables_[i].table->def();
        for (const std::size_t end : broken[i])
            tell("table " + tables_[i].table->name(),
                 "Its relationship \"" + def.logicalIndexes[end].name + "\" is gone.", false);
        dropRelations(def, broken[i]);
    }
}

}  // namespace velnor::jet
