// create: a new file, or a new table in it.
#include <array>

#include "cli/command.h"
#include "cli/field_words.h"
#include "cli/new_table.h"
#include "cli/result_json.h"
#include "cli/source.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--field", "NAME:TYPE[:SIZE]", "a field; behind it may stand :required and :auto",
               true},
    OptionSpec{"--index", "NAME:FIELD[,FIELD]", "an index; behind it may stand :unique or :primary",
               true},
    OptionSpec{"--as", "KIND",
               "access2000, access97; dbase5, dbase4, dbase3, foxpro3, foxpro2; paradox7, "
               "paradox5, paradox4, paradox3"},
    OptionSpec{"--json", "", "the outcome as JSON"},
    OptionSpec{"--password", "P", "password of an Access file that is there"},
    OptionSpec{"--codepage", "C", "code page of a DBF's texts"},
};

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 2);
    Target target = targetOf(context, arguments.positional()[0], arguments);
    if (arguments.positional().size() > 1)
        target.source.table = arguments.positional()[1];
    TableLayout layout;
    layout.name = target.source.table;
    for (const std::string& word : arguments.values("--field"))
        layout.fields.push_back(parseFieldWord(word));
    for (const std::string& word : arguments.values("--index"))
        layout.indexes.push_back(parseIndexWord(word));
    if (layout.fields.empty() && (isTableFile(target.source.kind) || !layout.name.empty()))
        throw UsageError("a table needs at least one --field");
    if (!layout.fields.empty() && layout.name.empty())
        throw UsageError("a TABLE name is needed");
    Database database = openTarget(context, target);
    if (!layout.fields.empty())
        makeTargetTable(context, database, target, layout);
    database.Close();
    if (arguments.has("--json"))
        ResultJson()
            .text("file", arguments.positional()[0])
            .text("table", layout.name)
            .number("fields", static_cast<std::int64_t>(layout.fields.size()))
            .number("indexes", static_cast<std::int64_t>(layout.indexes.size()))
            .print(context);
    return kDone;
}

}  // namespace

const Command kCreate{
    "create",
    "FILE [TABLE]",
    "a new file, or a new table in it",
    "Types: Boolean Byte Integer Long Currency Single Double Date Binary Text LongBinary Memo\n"
    "GUID Decimal. An Access file or a workbook is made when it is not there; a DBF is a table of "
    "its own.\n"
    "Example: velnor-cli create shop.mdb Customers --field ID:Long:auto --field NAME:Text:40\n"
    "         --index PrimaryKey:ID:primary",
    kOptions,
    run};

}  // namespace velnor::cli
