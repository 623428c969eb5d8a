// index: adds indexes to a table, or drops them.
#include <array>

#include "cli/command.h"
#include "cli/field_words.h"
#include "cli/new_table.h"
#include "cli/output.h"
#include "cli/result_json.h"
#include "cli/source.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--add", "NAME", "a new index; its fields stand in --field"},
    OptionSpec{"--field", "FIELD", "a field of the new index, the first one first", true},
    OptionSpec{"--expression", "E", "of a DBF: what is indexed, in place of the fields"},
    OptionSpec{"--for", "E", "of a DBF: only records for which this is true"},
    OptionSpec{"--descending", "", "the highest key first"},
    OptionSpec{"--unique", "", "no two records with one key"},
    OptionSpec{"--primary", "", "the primary key"},
    OptionSpec{"--drop", "NAME", "an index goes", true},
    OptionSpec{"--as", "KIND",
               "of a DBF: the kind of index, dbase5 (MDX), dbase3 (NDX), foxpro2 (CDX)"},
    OptionSpec{"--json", "", "the outcome as JSON"},
    OptionSpec{"--password", "P", "password of an Access file"},
    OptionSpec{"--codepage", "C", "code page of a DBF's texts"},
};

IndexDef wantedIndex(const Arguments& arguments)
{
    IndexDef index;
    index.name = arguments.value("--add");
    for (const std::string& field : arguments.values("--field"))
        index.fields.push_back({field, arguments.has("--descending")});
    index.expression = arguments.value("--expression");
    index.condition = arguments.value("--for");
    index.primary = index.required = arguments.has("--primary");
    index.unique = index.primary || arguments.has("--unique");
    if (index.fields.empty())
        throw UsageError("a new index needs at least one --field");
    return index;
}

int indexesSeen(Context& context, const Source& source)
{
    Database database =
        context.workspace.OpenDatabase(source.database, false, true, source.connect);
    return database.TableDefs().Item(source.table).Indexes().Count();
}

/// A DBF whose indexes only FoxPro sees is FoxPro's.
void chooseDriver(Context& context, Source& source)
{
    openSource(context, source, true).Close();
    if (indexesSeen(context, source) > 0)
        return;
    Source fox = source;
    fox.connect = "FoxPro 3.0;" + source.tail;
    if (indexesSeen(context, fox) > 0)
        source = fox;
}

void tellJson(Context& context, const Arguments& arguments, const std::string& table)
{
    std::vector<std::string> added;
    if (arguments.has("--add"))
        added.push_back(arguments.value("--add"));
    ResultJson()
        .text("file", arguments.positional()[0])
        .text("table", table)
        .texts("added", added)
        .texts("dropped", arguments.values("--drop"))
        .print(context);
}

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 2);
    if (!arguments.has("--add") && !arguments.has("--drop"))
        throw UsageError("--add or --drop is needed");
    Target target = targetOf(context, arguments.positional()[0], arguments);
    if (!target.fileExists)
        throw RunError(RunErrorNumber::FileNotFound,
                       "File not found: " + arguments.positional()[0]);
    if (arguments.positional().size() > 1)
        target.source.table = arguments.positional()[1];
    if (target.source.kind == FileKind::Xbase && !arguments.has("--as"))
        chooseDriver(context, target.source);
    Database database = openTarget(context, target);
    Database::QueryOptions options;
    options.cancelled = interrupted;
    database.queryOptions(options);
    const std::string table = chosenTable(database, target.source);
    Collection<Index>& indexes = database.TableDefs().Item(table).Indexes();
    for (const std::string& name : arguments.values("--drop"))
        indexes.Delete(name);
    if (arguments.has("--add"))
        indexes.Append(Index(wantedIndex(arguments)));
    database.Close();
    if (arguments.has("--json"))
        tellJson(context, arguments, table);
    return kDone;
}

}  // namespace

const Command kIndex{
    "index",
    "FILE [TABLE]",
    "adds an index to a table, or drops some",
    "The index is built from the records; with --unique it is refused when two have "
    "one key. Ctrl-C leaves the table as it was.\nExample: velnor-cli index orders.dbf --add CITYNAME --field CITY "
    "--field NAME",
    kOptions,
    run};

}  // namespace velnor::cli
