#include "cli/new_table.h"

#include <array>

#include "platform/paths.h"

namespace velnor::cli {
namespace {

struct As {
    std::string_view word;
    FileKind kind;
    std::string_view connect;
    int options;
};
constexpr std::array kAs{
    As{"access2000", FileKind::Access, "Access 2000;", 0},
    As{"access97", FileKind::Access, "Access 2000;", 32},
    As{"dbase5", FileKind::Xbase, "dBASE 5.0;", 0},
    As{"dbase4", FileKind::Xbase, "dBASE IV;", 0},
    As{"dbase3", FileKind::Xbase, "dBASE III;", 0},
    As{"foxpro3", FileKind::Xbase, "FoxPro 3.0;", 0},
    As{"foxpro2", FileKind::Xbase, "FoxPro 2.6;", 0},
    As{"excel97", FileKind::Excel, "Excel 8.0;", 0},
    As{"excel95", FileKind::Excel, "Excel 5.0;", 0},
    As{"paradox7", FileKind::Paradox, "Paradox 7.x;", 0},
    As{"paradox5", FileKind::Paradox, "Paradox 5.x;", 0},
    As{"paradox4", FileKind::Paradox, "Paradox 4.x;", 0},
    As{"paradox3", FileKind::Paradox, "Paradox 3.x;", 0},
};

void applyAs(Target& target, const std::string& word)
{
    for (const As& as : kAs) {
        if (as.word != word)
            continue;
        if (as.kind != target.source.kind)
            throw UsageError("--as " + word + " does not fit the file's extension");
        target.source.connect = std::string(as.connect) + target.source.tail;
        target.createOptions = as.options;
        return;
    }
    throw UsageError("--as knows no \"" + word + "\"");
}

}  // namespace

Target targetOf(Context& context, const std::string& word, const Arguments& arguments)
{
    Target target{sourceOf(context, word, arguments, true)};
    if (target.source.kind == FileKind::Folder)
        throw UsageError("a file is needed, not a folder: " + word);
    target.fileExists = context.files.fileExists(target.source.path);
    if (arguments.has("--as"))
        applyAs(target, arguments.value("--as"));
    return target;
}

Database openTarget(Context& context, Target& target)
{
    Source& source = target.source;
    if (target.fileExists)
        return openSource(context, source, false);
    if (isTableFile(source.kind))
        return context.workspace.OpenDatabase(source.database, false, false, source.connect);
    const std::string locale =
        source.kind == FileKind::Access ? kGeneralLocale : kGeneralLocale + source.connect;
    return context.workspace.CreateDatabase(source.path, locale, target.createOptions);
}

bool hasTable(Context&, Database& database, const Target& target)
{
    if (isTableFile(target.source.kind))
        return target.fileExists;
    Collection<TableDef>& tables = database.TableDefs();
    const std::string sheet = target.source.table + sheetMark(target.source.kind);
    if (isSheetFile(target.source.kind) && tables.contains(sheet))
        return tables.Item(sheet).Fields().Count() > 0;  // an empty sheet is taken over
    return tables.contains(target.source.table);
}

void makeTable(Database& database, const Target& target, const TableLayout& layout)
{
    // A table file is given the spelling of its name, so that it lies where the user said.
    TableDef table = database.CreateTableDef(
        isTableFile(target.source.kind) ? paths::fileName(target.source.path) : layout.name);
    for (const FieldDef& field : layout.fields) {
        Field made = table.CreateField(field.name, static_cast<int>(field.type), field.size);
        made.def() = field;
        table.Fields().Append(std::move(made));
    }
    for (const IndexDef& index : layout.indexes)
        table.Indexes().Append(Index(index));
    database.TableDefs().Append(std::move(table));
}

void makeTargetTable(Context& context, Database& database, const Target& target,
                     const TableLayout& layout)
{
    try {
        makeTable(database, target, layout);
    } catch (const EngineError&) {
        if (!target.fileExists && !isTableFile(target.source.kind)) {
            database.Close();
            context.files.remove(target.source.path);
        }
        throw;
    }
}

}  // namespace velnor::cli
