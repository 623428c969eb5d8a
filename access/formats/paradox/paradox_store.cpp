#include "access/formats/paradox/paradox_store.h"

#include <algorithm>

#include "access/formats/paradox/db_cursor.h"
#include "access/formats/paradox/db_writer.h"
#include "access/formats/paradox/index_cursor.h"
#include "access/formats/paradox/structure.h"
#include "access/formats/paradox/table_check.h"
#include "access/formats/paradox/table_layout.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

/// Names that lead out of the folder, or cannot stand in one, name no table.
bool canBeTable(std::string_view name)
{
    return !name.empty() && name.find_first_of("\\/:*?\"<>|") == name.npos &&
           std::none_of(name.begin(), name.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

[[noreturn]] void notFound(std::string_view table)
{
    throw EngineError(EngineErrorNumber::TableNotFound,
                      "There is no table \"" + std::string(table) + "\".");
}

}  // namespace

ParadoxStore::ParadoxStore(FileSystem& files, const OpenRequest& request, const NewTableForm& form)
    : files_(files), request_(request), form_(form), passwords_{request.password}
{
}

std::vector<TableEntry> ParadoxStore::catalogue()
{
    std::vector<std::pair<std::string, TableEntry>> found;
    for (const FileInfo& file : files_.list(request_.name)) {
        if (file.folder || !paths::sameName(paths::extension(file.name), kTableExtension))
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

std::optional<std::string> ParadoxStore::pathOf(std::string_view table)
{
    if (!canBeTable(table))
        return std::nullopt;
    const std::string path = paths::join(request_.name, std::string(table) + ".DB");
    const auto info = files_.info(path);
    if (!info || info->folder)
        return std::nullopt;
    return paths::join(request_.name, info->name);
}

std::shared_ptr<DbTable> ParadoxStore::open(std::string_view table)
{
    const std::string key = paths::foldName(table);
    if (const auto known = open_.find(key); known != open_.end())
        return known->second;
    const auto path = pathOf(table);
    if (!path)
        notFound(table);
    finishStructureChange(files_, *path, request_.readOnly);
    TableOpening opening;
    opening.files = &files_;
    opening.path = *path;
    opening.readOnly = request_.readOnly;
    opening.codePage = request_.codePage;
    opening.passwords = passwords_;
    return open_[key] = std::make_shared<DbTable>(opening);
}

TableLayout ParadoxStore::layout(std::string_view table)
{
    return layoutOf(*open(table));
}

std::int64_t ParadoxStore::recordCount(std::string_view table)
{
    return open(table)->chain().records();
}

std::unique_ptr<RowCursor> ParadoxStore::cursor(std::string_view table,
                                                std::optional<std::string_view> index)
{
    auto opened = open(table);
    const bool primary =
        index && opened->keyed() && paths::sameName(*index, opened->primaryIndexName());
    if (index && !primary)
        return std::make_unique<IndexCursor>(std::move(opened), *index);
    return std::make_unique<DbCursor>(std::move(opened), primary);
}

std::unique_ptr<RowWriter> ParadoxStore::writer(std::string_view table)
{
    return std::make_unique<DbWriter>(open(table));
}

std::shared_ptr<DbTable> ParadoxStore::openToChange(std::string_view table)
{
    if (request_.readOnly)
        throw EngineError(EngineErrorNumber::ReadOnly,
                          request_.name + " is open for reading only.");
    return open(table);
}

void ParadoxStore::createTable(const TableLayout& layout)
{
    if (request_.readOnly)
        throw EngineError(EngineErrorNumber::ReadOnly,
                          request_.name + " is open for reading only.");
    // "orders.db" is the table "orders" in a file of just that spelling.
    const bool spelled = paths::sameName(paths::extension(layout.name), kTableExtension);
    const std::string name(spelled ? paths::baseName(layout.name) : layout.name);
    if (!canBeTable(name))
        throw EngineError(EngineErrorNumber::InvalidTableName,
                          "\"" + layout.name + "\" cannot be the name of a table.");
    if (pathOf(name))
        throw EngineError(EngineErrorNumber::TableAlreadyExists,
                          "The table \"" + name + "\" exists already.");
    open_.erase(paths::foldName(name));
    const std::string path = paths::join(request_.name, spelled ? layout.name : name + ".DB");
    createTableWithIndexes(files_, path, layout, form_, request_.codePage);
}

void ParadoxStore::dropTable(std::string_view table)
{
    if (request_.readOnly)
        throw EngineError(EngineErrorNumber::ReadOnly,
                          request_.name + " is open for reading only.");
    const auto path = pathOf(table);
    if (!path)
        notFound(table);
    try {
        open(table);  // 3045 when somebody else works on it
    } catch (const EngineError& error) {
        if (error.code() != EngineErrorNumber::UnexpectedFormat)
            throw;  // a damaged table may go
    }
    open_.erase(paths::foldName(table));
    const std::vector<Companion> companions = companionsOf(files_, *path);
    files_.remove(*path);
    for (const Companion& companion : companions)
        files_.remove(companion.path);
    files_.syncFolder(request_.name);
}

void ParadoxStore::addField(std::string_view table, const FieldDef& field)
{
    addTableField(*openToChange(table), field);
}

void ParadoxStore::dropField(std::string_view table, std::string_view field)
{
    dropTableField(*openToChange(table), field);
}

void ParadoxStore::addIndex(std::string_view table, const IndexDef& index)
{
    addTableIndex(*openToChange(table), index);
}

void ParadoxStore::dropIndex(std::string_view table, std::string_view index)
{
    dropTableIndex(*openToChange(table), index);
}

bool ParadoxStore::acceptsPassword(std::string_view password)
{
    // Each table of the folder may have its own: whether it is one is seen when a table is opened.
    passwords_.emplace_back(password);
    return true;
}

void ParadoxStore::commit()
{
    for (auto at = open_.begin(); at != open_.end(); ++at)
        try {
            at->second->commit();
        } catch (...) {
            for (++at; at != open_.end(); ++at)
                at->second->rollback();
            throw;
        }
}

std::size_t ParadoxStore::pendingBytes() const
{
    std::size_t bytes = 0;
    for (const auto& [name, table] : open_)
        bytes += table->pendingBytes();
    return bytes;
}

void ParadoxStore::check(std::string_view table, const ProblemSink& report)
{
    checkTable(*open(table), report);
}

std::vector<std::pair<std::string, std::string>> ParadoxStore::info(std::string_view table)
{
    return tableInfo(*open(table));
}

}  // namespace velnor::paradox
