// query: the answer of a SELECT statement over one file or several at once.
#include <array>
#include <deque>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/record_writers.h"
#include "cli/source.h"
#include "platform/host.h"

namespace velnor::cli {
namespace {

constexpr std::size_t kMegabyte = 1u << 20;

constexpr std::array kOptions{
    OptionSpec{"--attach", "NAME=FILE", "a further file, its tables named NAME.[TABLE]", true},
    OptionSpec{"--format", "csv|json|ndjson|html|sql", "csv (the default), or another form"},
    OptionSpec{"--json", "", "the same as --format json"},
    OptionSpec{"--out", "F", "write to a file instead of standard output"},
    OptionSpec{"--memory", "MB", "megabytes that the statement may keep; beyond, temporary files"},
    OptionSpec{"--password", "P", "password of Access files"},
    OptionSpec{"--codepage", "C",
               "code page of the texts, such as 866, where the files do not say"},
    OptionSpec{"--progress", "", "progress lines also when standard error is no terminal"},
};

struct Attached {
    std::string name;
    Database database;
};

Attached attach(Context& context, const std::string& word, const Arguments& arguments)
{
    const std::size_t equals = word.find('=');
    if (equals == 0 || equals == std::string::npos)
        throw UsageError("--attach takes NAME=FILE, not \"" + word + "\"");
    Source source = sourceOf(context, word.substr(equals + 1), arguments);
    return {word.substr(0, equals), openSource(context, source, true)};
}

Database::QueryOptions optionsOf(const Arguments& arguments)
{
    Database::QueryOptions options;
    options.cancelled = interrupted;
    if (!arguments.has("--memory"))
        return options;
    const std::string word = arguments.value("--memory");
    const bool number = !word.empty() && word.size() < 7 &&
                        word.find_first_not_of("0123456789") == std::string::npos;
    if (!number || word == "0")
        throw UsageError("--memory takes a number of megabytes, not \"" + word + "\"");
    options.memory = std::stoul(word) * kMegabyte;
    return options;
}

std::string formatOf(const Arguments& arguments)
{
    const std::string format =
        arguments.value("--format", arguments.has("--json") ? "json" : "csv");
    if (!isTextFormat(format))
        throw UsageError("no format \"" + format + "\"");
    return format;
}

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(arguments.has("--attach") ? 1 : 2, 2);
    const std::string format = formatOf(arguments);
    const Database::QueryOptions options = optionsOf(arguments);
    const auto& words = arguments.positional();
    std::deque<Attached> attached;
    for (const std::string& word : arguments.values("--attach"))
        attached.push_back(attach(context, word, arguments));
    std::optional<Database> own;
    if (words.size() == 2) {
        Source source = sourceOf(context, words.front(), arguments);
        own = openSource(context, source, true);
    }
    Database& database = own ? *own : attached.front().database;
    for (const Attached& other : attached)
        database.attach(other.name, other.database);
    database.queryOptions(options);

    Recordset rows = database.OpenRecordset(words.back(), RecordsetType::ForwardOnly);
    const std::string out = arguments.value("--out");
    Output output(context.files, out.empty() ? "" : host().paths->fromPerson(out));
    Progress progress("Records", arguments.has("--progress"));
    writeRecords(rows, format, "answer", output, progress);
    output.finish();
    return kDone;
}

}  // namespace

const Command kQuery{
    "query",
    "[FILE|FOLDER] SELECT",
    "the answer of a SELECT statement over tables of any file",
    "The tables are those of FILE, of the folder of a DBF, or of files given by --attach, in any "
    "mixture:\n"
    "  velnor-cli query --attach a=orders.dbf --attach b=customers.mdb \\\n"
    "      \"SELECT b.Name, a.Total FROM a.[ORDERS] AS a JOIN b.[Customers] AS b ON a.Cust = "
    "b.ID\"\n"
    "Names may stand in [brackets], dates as #12/31/2003#, texts compare without regard to case.",
    kOptions,
    run};

}  // namespace velnor::cli
