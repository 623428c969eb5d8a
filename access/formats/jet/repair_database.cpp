// Repairing: a damaged file is written anew from what can be read of it, and kept beside it.
//
// 1. The damaged file is only read until the new one is whole under a sibling's name.
// 2. Then a copy of the damaged file is made safe under a name of its own.
// 3. Only then does the new file take its place, in one step.
#include <array>

#include "access/formats/jet/catalog_repair.h"
#include "access/formats/jet/fresh_file.h"
#include "access/formats/jet/jet_check.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/jet/rebuild.h"
#include "access/formats/jet/whole_file.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

/// Everything that a check of the file finds.
std::vector<Problem> findingsOf(JetFile& file)
{
    std::vector<Problem> found;
    const auto open = [&file](const CatalogEntry& entry) {
        return std::make_shared<JetTable>(file, static_cast<PageNumber>(entry.id), entry.name);
    };
    try {
        Catalog catalog(file);
        checkDatabase(file, catalog, {}, open,
                      [&found](const Problem& problem) { found.push_back(problem); });
    } catch (const EngineError& error) {
        found.push_back({"the catalog", error.what(), false});
    }
    return found;
}

/// A password keeps people from looking into a file, not from mending it.
std::string passwordOf(FileSystem& files, const std::string& path)
{
    std::array<std::uint8_t, kHeaderBytes> header{};
    try {
        if (files.open(path, OpenMode::Read)->readAt(0, header) < header.size())
            return {};
        maskHeader(header);
        return databasePassword(header);
    } catch (const RunError&) {
        return {};  // opening it will tell why
    }
}

/// "C:\\SHOP-damaged.MDB", the first such name that is free.
std::string nameAside(FileSystem& files, const std::string& path)
{
    const std::string extension(paths::extension(path));
    const std::size_t dot = extension.empty() ? path.size() : path.size() - extension.size() - 1;
    for (int number = 1;; ++number) {
        const std::string name = path.substr(0, dot) + "-damaged" +
                                 (number > 1 ? "-" + std::to_string(number) : "") +
                                 path.substr(dot);
        if (!files.exists(name))
            return name;
    }
}

void writeAnew(JetFile& damaged, FileSystem& files, const OpenRequest& target,
               const ProblemSink& report)
{
    JetFile file(files, target, false);
    Salvage salvage(damaged, report);
    Rebuild rebuild(damaged, file, salvage, report);
    rebuild.run();
    std::vector<UnlistedTable> unlisted;
    for (const Salvage::Table& found : salvage.tables())
        if (!found.enlisted)
            unlisted.push_back({found.table->name(), rebuild.newPageOf(found.table->page())});
    completeCatalog(file, unlisted, report);
    for (const Problem& problem : findingsOf(file))
        if (!problem.harmless)
            report({problem.where, "It is still so: " + problem.text, false});
}

}  // namespace

void JetDriver::repair(FileSystem& files, const OpenRequest& request,
                       const ProblemSink& report) const
{
    OpenRequest alone = request;
    alone.readOnly = false;
    alone.password = passwordOf(files, request.name);
    JetFile damaged(files, alone);
    if (findingsOf(damaged).empty()) {
        report({request.name, "There is no damage; the file is as it was.", true});
        return;
    }
    OpenRequest target = alone;
    target.name = request.name + "-new";
    std::string aside;
    makeWholeFile(files, request.name, freshPages(damaged, damaged.header().key, std::nullopt),
                  [&](const std::string& sibling) {
                      target.name = sibling;
                      writeAnew(damaged, files, target, report);
                      aside = nameAside(files, request.name);
                      copyWholeFile(files, request.name, aside);
                  });
    report({request.name, "It is written anew; the damaged file is kept as " + aside + ".", true});
}

}  // namespace velnor::jet
