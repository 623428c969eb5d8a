#include "access/formats/jet/catalog_repair.h"

#include <algorithm>

#include "access/formats/jet/catalog_objects.h"
#include "access/formats/jet/relation_rows.h"

namespace velnor::jet {
namespace {

std::string freeName(Catalog& catalog, const std::string& wanted)
{
    std::string name = wanted;
    for (int number = 2; catalog.find(name) != nullptr; ++number)
        name = wanted + " (" + std::to_string(number) + ")";
    return name;
}

void addUnlisted(Catalog& catalog, const std::vector<UnlistedTable>& unlisted)
{
    for (const UnlistedTable& table : unlisted) {
        const auto id = static_cast<std::int32_t>(table.page);
        const auto& objects = catalog.objects();
        if (std::none_of(objects.begin(), objects.end(),
                         [id](const CatalogEntry& entry) { return entry.id == id; }))
            addObject(catalog, {freeName(catalog, table.name), id, kTablesContainer,
                                object_type::kTable, 0, false});
    }
}

}  // namespace

void completeCatalog(JetFile& file, const std::vector<UnlistedTable>& unlisted,
                     const ProblemSink& report)
{
    const auto tell = [&report](const std::string& text) { report({"the catalog", text, true}); };
    Catalog catalog(file);
    if (const int added = addMissingObjects(catalog))
        tell(std::to_string(added) + " objects that every file has were lost and are added.");
    addUnlisted(catalog, unlisted);
    if (const int gone = containLostObjects(catalog))
        report({"the catalog",
                std::to_string(gone) + " objects are lost: their container is not known.", false});
    RelationRows(file, catalog).complete(tell);
    removeStrayRights(catalog);
    if (const int given = addMissingRights(catalog))
        tell("The rights to " + std::to_string(given) + " objects were lost and are given anew.");
    catalog.saveCounts();
    file.commit();
}

}  // namespace velnor::jet
