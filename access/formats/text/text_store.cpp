#include "access/formats/text/text_store.h"

#include <algorithm>

#include "access/formats/text/new_text.h"
#include "access/formats/text/schema_ini.h"
#include "access/formats/text/text_check.h"
#include "access/formats/text/text_cursor.h"
#include "access/formats/text/text_writer.h"
#include "platform/paths.h"

namespace velnor::text {
namespace {

constexpr std::string_view kExtensions[] = {"TXT", "CSV", "TAB", "ASC"};

bool isTextFile(std::string_view name)
{
    const std::string_view extension = paths::extension(name);
    return !paths::baseName(name).empty() &&
           std::any_of(std::begin(kExtensions), std::end(kExtensions),
                       [&](std::string_view known) { return paths::sameName(known, extension); });
}

/// Names that lead out of the folder, or cannot stand in one, name no table.
bool canBeFile(std::string_view name)
{
    return isTextFile(name) && name.find_first_of("\\/:*?\"<>|") == name.npos &&
           std::none_of(name.begin(), name.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

/// "Close#Txt" names the file "Close.Txt", too.
std::string withDot(std::string_view table)
{
    std::string name(table);
    const std::size_t hash = name.rfind('#');
    if (!isTextFile(name) && hash != name.npos)
        name[hash] = '.';
    return name;
}

[[noreturn]] void notFound(std::string_view table)
{
    throw EngineError(EngineErrorNumber::TableNotFound,
                      "There is no table \"" + std::string(table) + "\".");
}

}  // namespace

TextStore::TextStore(FileSystem& files, const OpenRequest& request)
    : files_(files), request_(request)
{
}

std::vector<TableEntry> TextStore::catalogue()
{
    std::vector<std::pair<std::string, TableEntry>> found;
    for (const FileInfo& file : files_.list(request_.name))
        if (!file.folder && isTextFile(file.name))
            found.push_back({paths::foldName(file.name), {file.name, 0}});
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<TableEntry> tables;
    for (auto& [folded, entry] : found)
        tables.push_back(std::move(entry));
    return tables;
}

std::optional<std::string> TextStore::fileOf(std::string_view table)
{
    const std::string name = withDot(table);
    if (!isTextFile(name)) {
        for (const std::string_view extension : kExtensions)
            if (auto found = fileOf(name + "." + std::string(extension)))
                return found;
        return std::nullopt;
    }
    if (!canBeFile(name))
        return std::nullopt;
    const auto info = files_.info(paths::join(request_.name, name));
    if (!info || info->folder)
        return std::nullopt;
    return info->name;
}

std::shared_ptr<TextTable> TextStore::open(std::string_view table)
{
    const auto name = fileOf(table);
    if (!name)
        notFound(table);
    const std::string key = paths::foldName(*name);
    if (const auto known = open_.find(key); known != open_.end())
        return known->second;
    TextOpening opening;
    opening.files = &files_;
    opening.path = paths::join(request_.name, *name);
    opening.readOnly = request_.readOnly;
    opening.codePage = request_.codePage;
    opening.options = request_.options;
    return open_[key] = std::make_shared<TextTable>(opening);
}

TableLayout TextStore::layout(std::string_view table)
{
    const auto opened = open(table);
    TableLayout layout;
    layout.name = paths::fileName(opened->path());
    layout.fields = opened->fields();
    layout.whyNotUpdatable = opened->whyNotUpdatable();
    layout.updatable = layout.whyNotUpdatable.empty();
    return layout;
}

std::int64_t TextStore::recordCount(std::string_view table)
{
    return open(table)->recordCount();
}

std::unique_ptr<RowCursor> TextStore::cursor(std::string_view table,
                                             std::optional<std::string_view> index)
{
    if (index)
        throw EngineError(EngineErrorNumber::IndexKeyMissing, "Text files have no indexes.");
    return std::make_unique<TextCursor>(open(table));
}

std::unique_ptr<RowWriter> TextStore::writer(std::string_view table)
{
    return std::make_unique<TextWriter>(open(table));
}

void TextStore::needWritable() const
{
    if (request_.readOnly)
        throw EngineError(EngineErrorNumber::ReadOnly,
                          request_.name + " is open for reading only.");
}

void TextStore::createTable(const TableLayout& layout)
{
    needWritable();
    std::string name = withDot(layout.name);
    if (name.find('.') == name.npos)
        name += ".txt";
    if (!canBeFile(name))
        throw EngineError(EngineErrorNumber::InvalidTableName,
                          "\"" + layout.name + "\" cannot be the name of a text file.");
    if (fileOf(name))
        throw EngineError(EngineErrorNumber::TableAlreadyExists,
                          "The table \"" + name + "\" exists already.");
    createTextFile(files_, request_.name, name, layout, request_.codePage);
}

void TextStore::dropTable(std::string_view table)
{
    needWritable();
    const auto name = fileOf(table);
    if (!name)
        notFound(table);
    open(table);  // 3045 when somebody else works on it
    open_.erase(paths::foldName(*name));
    files_.remove(paths::join(request_.name, *name));
    writeSchema(files_, request_.name, *name, {});
    files_.syncFolder(request_.name);
}

void TextStore::commit()
{
    for (const auto& [name, table] : open_)
        table->commit();
}

std::size_t TextStore::pendingBytes() const
{
    std::size_t bytes = 0;
    for (const auto& [name, table] : open_)
        bytes += table->pendingBytes();
    return bytes;
}

void TextStore::check(std::string_view table, const ProblemSink& report)
{
    checkText(*open(table), report);
}

std::vector<std::pair<std::string, std::string>> TextStore::info(std::string_view table)
{
    return textInfo(*open(table));
}

}  // namespace velnor::text
