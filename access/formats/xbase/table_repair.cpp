#include "access/formats/xbase/table_repair.h"

#include <algorithm>
#include <vector>

#include "access/formats/xbase/dbf_check.h"
#include "access/formats/xbase/dbf_table.h"
#include "access/formats/xbase/index_check.h"
#include "access/formats/xbase/table_rewrite.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

/// What is wrong, one text a place.
std::vector<Problem> findingsOf(DbfTable& table)
{
    std::vector<Problem> found;
    const ProblemSink keep = [&found](const Problem& problem) {
        if (!problem.harmless)
            found.push_back(problem);
    };
    checkTable(table, keep);
    checkIndexes(table, keep);
    return found;
}

void copyFile(FileSystem& files, const std::string& from, const std::string& to)
{
    const auto in = files.open(from, OpenMode::Read);
    const auto out = files.open(to, OpenMode::CreateNew);
    std::vector<std::uint8_t> block(1u << 20);
    std::uint64_t at = 0;
    while (const std::size_t got = in->readAt(at, block)) {
        out->writeAt(at, std::span(block).first(got));
        at += got;
    }
    out->sync();
}

/// The files that a table has, by their paths.
std::vector<std::string> filesOf(DbfTable& table)
{
    std::vector<std::string> paths{table.path()};
    if (table.memo())
        paths.push_back(table.memoPath());
    for (const std::string& name : table.indexFiles())
        paths.push_back(paths::join(paths::folder(table.path()), name));
    return paths;
}

std::string nameAside(const std::string& path, int number)
{
    std::string name(paths::baseName(path));
    name += number > 1 ? "-damaged-" + std::to_string(number) : "-damaged";
    const std::string extension(paths::extension(path));
    return paths::join(paths::folder(path), name + "." + extension);
}

/// Copies of all files under the first names that are free; the name of the table's.
std::string setAside(FileSystem& files, const std::vector<std::string>& all)
{
    int number = 1;
    while (std::any_of(all.begin(), all.end(), [&](const std::string& path) {
        return files.exists(nameAside(path, number));
    }))
        ++number;
    for (const std::string& path : all)
        copyFile(files, path, nameAside(path, number));
    files.syncFolder(paths::folder(all.front()));
    return nameAside(all.front(), number);
}

}  // namespace

void repairTable(FileSystem& files, const std::string& path, const NewTableForm& form,
                 const std::string& codePage, const ProblemSink& report)
{
    TableOpening opening;
    opening.files = &files;
    opening.path = path;
    opening.readOnly = false;
    opening.foxWord = true;  // all kinds
    opening.codePage = codePage;
    {
        DbfTable damaged(opening);
        if (findingsOf(damaged).empty() && !damaged.memoMissing()) {
            report({path, "There is no damage; the files are as they were.", true});
            return;
        }
        if (damaged.header().format->two)
            throw EngineError(EngineErrorNumber::ReadOnly, damaged.whyNotUpdatable());
        const std::string aside = setAside(files, filesOf(damaged));
        const std::vector<std::uint8_t> head = damaged.headerBytes();
        const TablePlanner planner(head, damaged.header(), form);
        rewriteTable(damaged, planner.plan(), RewriteKind::Repair, &report);
        report({path, "It is written anew; the damaged files are kept as " + aside + ".", true});
    }
    DbfTable made(opening);
    for (const Problem& problem : findingsOf(made))
        report({problem.where, "It is still so: " + problem.text, false});
}

}  // namespace velnor::xbase
