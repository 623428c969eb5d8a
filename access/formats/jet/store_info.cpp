// Facts about a file for people.
#include "access/formats/jet/jet_store.h"
#include "platform/paths.h"

namespace velnor::jet {

std::vector<std::pair<std::string, std::string>> JetStore::info(std::string_view table)
{
    const JetFormat& format = file_.format();
    const JetHeader& header = file_.header();
    const bool jet4 = format.version == 4;
    std::vector<std::pair<std::string, std::string>> facts{
        {"Format", jet4 ? "Access 2000 to 2003 (Jet 4)" : "Access 95 or 97 (Jet 3)"},
        {"Page size", std::to_string(format.pageSize)},
        {"Pages", std::to_string(file_.pageCount())},
        {"Code page", jet4 ? "Unicode" : std::to_string(file_.codePage().number())},
        {"Sort order", "language " + std::to_string(header.order.lcid) + ", id " +
                           std::to_string(header.order.id) + ", version " +
                           std::to_string(header.order.version)},
        {"Engine build", std::to_string(header.build)},
        {"Password", header.hasPassword ? "yes" : "no"},
        {"Encoded", header.key ? "yes" : "no"},
    };
    for (const CatalogEntry* entry : catalog_.tables())
        if (entry->link() && (table.empty() || paths::sameName(entry->name, table)))
            facts.emplace_back("Linked table", entry->name + ": " + entry->foreignName + " of " +
                                                   (entry->database.empty() ? "another source"
                                                                            : entry->database));
    if (table.empty() || entryOf(table).link())
        return facts;
    const auto open = openTable(table);
    const TableDef& def = open->def();
    facts.emplace_back("Table", open->name());
    facts.emplace_back("Definition page", std::to_string(def.page()));
    facts.emplace_back("Fields", std::to_string(def.columns.size()));
    facts.emplace_back("Indexes", std::to_string(def.logicalIndexes.size()));
    facts.emplace_back("Data pages", std::to_string(open->pages().size()));
    facts.emplace_back("Records", std::to_string(open->recordCount()));
    facts.emplace_back("Records stored in the definition", std::to_string(def.recordCount));
    return facts;
}

}  // namespace velnor::jet
