// delete-table: a table, its indexes and memos go.
#include <array>
#include <cstdio>
#include <iostream>

#include "cli/command.h"
#include "cli/result_json.h"
#include "cli/source.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--yes", "", "do not ask"},
    OptionSpec{"--json", "", "the outcome as JSON"},
    OptionSpec{"--password", "P", "password of an Access file"},
};

bool askOnTerminal(const std::string& table)
{
    std::fprintf(stderr, "Delete the table %s with all its records? [y/N] ", table.c_str());
    std::string answer;
    return std::getline(std::cin, answer) && !answer.empty() &&
           (answer[0] == 'y' || answer[0] == 'Y');
}

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 2);
    const auto& words = arguments.positional();
    Source source = sourceOf(context, words[0], arguments);
    if (words.size() > 1)
        source.table = words[1];
    if (source.table.empty())
        throw UsageError("the name of the table is needed");
    Database database = openSource(context, source, false);
    if (!database.TableDefs().contains(source.table))
        throw EngineError(EngineErrorNumber::TableNotFound,
                          "There is no table '" + source.table + "'.");
    if (!arguments.has("--yes") && !askOnTerminal(source.table)) {
        std::fputs("Nothing was deleted\n", stderr);
        return kFailed;
    }
    database.TableDefs().Delete(source.table);
    database.Close();
    if (arguments.has("--json"))
        ResultJson().text("file", words[0]).text("deleted", source.table).print(context);
    return kDone;
}

}  // namespace

const Command kDeleteTable{
    "delete-table",
    "FILE [TABLE]",
    "a table removed, with its records and indexes",
    "Of a DBF or DB the file itself is removed, with its memo and index files.",
    kOptions,
    run};

}  // namespace velnor::cli
