#include "cli/source.h"

#include <algorithm>
#include <array>

#include "platform/host.h"
#include "platform/paths.h"

namespace velnor::cli {
namespace {

struct Kind {
    std::string_view extension;
    FileKind kind;
    std::string_view connect;
};
constexpr std::array kKinds{
    Kind{"DBF", FileKind::Xbase, "dBASE 5.0;"}, Kind{"MDB", FileKind::Access, "Access 2000;"},
    Kind{"TXT", FileKind::Text, "Text;"},       Kind{"CSV", FileKind::Text, "Text;"},
    Kind{"TAB", FileKind::Text, "Text;"},       Kind{"ASC", FileKind::Text, "Text;"},
    Kind{"XLS", FileKind::Excel, "Excel 8.0;"}, Kind{"DB", FileKind::Paradox, "Paradox 5.x;"},
    Kind{"WK4", FileKind::Lotus, "Lotus WK4;"}, Kind{"WK3", FileKind::Lotus, "Lotus WK3;"},
    Kind{"WK1", FileKind::Lotus, "Lotus WK1;"}, Kind{"WKS", FileKind::Lotus, "Lotus WKS;"},
    Kind{"WRK", FileKind::Lotus, "Lotus WKS;"}, Kind{"WKB", FileKind::Lotus, "Lotus WK1;"},
    Kind{"123", FileKind::Lotus, "Lotus WK4;"},
};

const Kind* findKind(std::string_view path)
{
    const std::string extension = paths::foldName(paths::extension(path));
    const auto found = std::find_if(kKinds.begin(), kKinds.end(),
                                    [&](const Kind& k) { return k.extension == extension; });
    return found == kKinds.end() ? nullptr : &*found;
}

std::string optionsOf(const Arguments& arguments)
{
    std::string tail;
    if (arguments.has("--password"))
        tail += "pwd=" + arguments.value("--password") + ";";
    if (arguments.has("--codepage"))
        tail += "codepage=" + arguments.value("--codepage") + ";";
    if (arguments.has("--cells"))
        tail += "cells=yes;";
    return tail;
}

Database tryOpen(Context& context, const Source& source, bool readOnly)
{
    Database database =
        context.workspace.OpenDatabase(source.database, false, readOnly, source.connect);
    if (source.kind == FileKind::Xbase)  // the first look into the table tells whose file it is
        database.TableDefs().Item(source.table).Fields();
    return database;
}

}  // namespace

FileKind kindOfPath(std::string_view path)
{
    const Kind* kind = findKind(path);
    return kind ? kind->kind : FileKind::None;
}

bool namesDataFile(std::string_view word)
{
    return findKind(word) != nullptr;
}

Source sourceOf(Context& context, const std::string& word, const Arguments& arguments,
                bool mayBeNew)
{
    Source source;
    source.path = host().paths->fromPerson(word);
    source.tail = optionsOf(arguments);
    const auto there = context.files.info(source.path);
    if (!there && !mayBeNew)
        throw RunError(RunErrorNumber::FileNotFound, "File not found: " + word);
    if (there && there->folder) {
        source.kind = FileKind::Folder;
        source.database = source.path;
        source.connect = "dBASE 5.0;" + source.tail;
        return source;
    }
    const Kind* kind = findKind(source.path);
    if (!kind)
        throw EngineError(EngineErrorNumber::NoDriver, "No driver for this kind of file: " + word);
    source.kind = kind->kind;
    source.connect = std::string(kind->connect) + source.tail;
    if (isTableFile(kind->kind)) {
        source.database = paths::folder(source.path);
        source.table = kind->kind == FileKind::Text ? paths::fileName(source.path)
                                                    : paths::baseName(source.path);
    } else {
        source.database = source.path;
    }
    return source;
}

Database openSource(Context& context, Source& source, bool readOnly)
{
    try {
        return tryOpen(context, source, readOnly);
    } catch (const EngineError& error) {
        if (error.code() != EngineErrorNumber::UnexpectedFormat || source.kind != FileKind::Xbase)
            throw;
    }
    source.connect = "FoxPro 3.0;" + source.tail;
    return tryOpen(context, source, readOnly);
}

std::vector<std::string> userTables(Database& database)
{
    std::vector<std::string> names;
    for (TableDef& table : database.TableDefs())
        if ((table.Attributes() & kSystemTableBits) == 0)
            names.push_back(table.Name());
    return names;
}

bool isLink(Database& database, const std::string& table)
{
    Collection<TableDef>& tables = database.TableDefs();
    return tables.contains(table) &&
           (tables.Item(table).Attributes() & (kLinkedTableBit | kLinkedOdbcTableBit)) != 0;
}

std::string chosenTable(Database& database, const Source& source)
{
    if (!source.table.empty()) {
        const std::string sheet = source.table + sheetMark(source.kind);
        Collection<TableDef>& tables = database.TableDefs();
        const bool marked =
            isSheetFile(source.kind) && !tables.contains(source.table) && tables.contains(sheet);
        return marked ? sheet : source.table;
    }
    const std::vector<std::string> names = userTables(database);
    const auto own = std::find_if(names.begin(), names.end(), [&](const std::string& name) {
        return !isLink(database, name);
    });
    if (own == names.end())
        throw EngineError(EngineErrorNumber::TableNotFound, "The file has no tables.");
    return *own;
}

FromTo splitFromTo(const std::vector<std::string>& words)
{
    if (words.size() < 2 || words.size() > 4)
        throw UsageError("FROM [TABLE] TO [TABLE] expected");
    if (words.size() == 2)
        return {words[0], "", words[1], ""};
    if (words.size() == 4)
        return {words[0], words[1], words[2], words[3]};
    if (namesDataFile(words[1]))
        return {words[0], "", words[1], words[2]};
    return {words[0], words[1], words[2], ""};
}

}  // namespace velnor::cli
