#include "access/formats/folder/folder_tables.h"

#include <algorithm>

#include "access/engine_error.h"
#include "platform/paths.h"

namespace velnor {
namespace {

/// Names that lead out of the folder, or cannot stand in one, name no table.
bool canBeTable(std::string_view name)
{
    return !name.empty() && name.find_first_of("\\/:*?\"<>|") == name.npos &&
           std::none_of(name.begin(), name.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

}  // namespace

void needFolder(FileSystem& files, const std::string& name)
{
    const auto folder = files.info(name);
    if (!folder || !folder->folder)
        throw EngineError(EngineErrorNumber::PathInvalid, name + " is not a folder.");
}

std::vector<TableEntry> FolderTables::catalogue() const
{
    std::vector<std::pair<std::string, TableEntry>> found;
    for (const FileInfo& file : files_.list(folder_)) {
        if (file.folder || !paths::sameName(paths::extension(file.name), extension_))
            continue;
        const std::string_view name = paths::baseName(file.name);
        if (!name.empty())
            found.push_back({paths::foldName(name), {std::string(name), 0}});
    }
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<TableEntry> tables;
    tables.reserve(found.size());
    for (auto& [folded, entry] : found)
        tables.push_back(std::move(entry));
    return tables;
}

std::optional<std::string> FolderTables::pathOf(std::string_view table) const
{
    if (!canBeTable(table))
        return std::nullopt;
    const auto info =
        files_.info(paths::join(folder_, std::string(table) + "." + std::string(extension_)));
    if (!info || info->folder)
        return std::nullopt;
    return paths::join(folder_, info->name);
}

std::string FolderTables::needPath(std::string_view table) const
{
    if (auto path = pathOf(table))
        return *std::move(path);
    throw EngineError(EngineErrorNumber::TableNotFound,
                      "There is no table \"" + std::string(table) + "\".");
}

FolderTables::NewTable FolderTables::newTable(const std::string& asked) const
{
    // "orders.dbf" is the table "orders" in a file of just that spelling.
    const bool spelled = paths::sameName(paths::extension(asked), extension_);
    NewTable made;
    made.name = spelled ? paths::baseName(asked) : asked;
    made.path = paths::join(folder_, spelled ? asked : asked + "." + std::string(extension_));
    if (!canBeTable(made.name))
        throw EngineError(EngineErrorNumber::InvalidTableName,
                          "\"" + asked + "\" cannot be the name of a table.");
    if (pathOf(made.name))
        throw EngineError(EngineErrorNumber::TableAlreadyExists,
                          "The table \"" + made.name + "\" exists already.");
    return made;
}

}  // namespace velnor
