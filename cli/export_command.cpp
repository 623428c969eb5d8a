// export: the records of a table in a text form, or as a file of another kind.
#include <array>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/record_writers.h"
#include "cli/source.h"
#include "platform/host.h"
#include "platform/paths.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--format", "csv|json|ndjson|html|sql|xls|dbf",
               "csv (the default), or another form"},
    OptionSpec{"--json", "", "the same as --format json"},
    OptionSpec{"--out", "F", "write to a file instead of standard output"},
    OptionSpec{"--index", "NAME", "in the order of an index"},
    OptionSpec{"--password", "P", "password of an Access file"},
    OptionSpec{"--codepage", "C",
               "code page of the texts, such as 866, where the file does not say"},
    OptionSpec{"--cells", "", "of a sheet: every cell from A1 on as a text, fields A, B, C, ..."},
    OptionSpec{"--progress", "", "progress lines also when standard error is no terminal"},
};

/// A workbook or a DBF is a file of its own: it is made as `convert` does.
int exportFile(Context& context, const Arguments& arguments, const std::string& format)
{
    std::vector<std::string> words = arguments.positional();
    const std::string out = arguments.value("--out");
    if (out.empty() || !paths::sameName(out.substr(out.rfind('.') + 1), format))
        throw UsageError("--format " + format + " needs --out NAME." + format);
    words.push_back(out);
    for (const char* option : {"--password", "--codepage"})
        if (arguments.has(option)) {
            words.emplace_back(option);
            words.push_back(arguments.value(option));
        }
    std::vector<char*> given;
    for (std::string& word : words)
        given.push_back(word.data());
    return kConvert.run(context, Arguments(kConvert.options, given));
}

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 2);
    const std::string format =
        arguments.value("--format", arguments.has("--json") ? "json" : "csv");
    if (format == "xls" || format == "dbf")
        return exportFile(context, arguments, format);
    if (!isTextFormat(format))
        throw UsageError("no format \"" + format + "\"");
    Source source = sourceOf(context, arguments.positional()[0], arguments);
    if (arguments.positional().size() > 1)
        source.table = arguments.positional()[1];
    Database database = openSource(context, source, true);
    const std::string index = arguments.value("--index");
    source.table = chosenTable(database, source);
    Recordset rows = database.OpenRecordset(source.table, RecordsetType::Table);
    if (!index.empty()) {
        rows.Index(index);
        if (!rows.Eof() || !rows.Bof())
            rows.MoveFirst();
    }
    const std::string out = arguments.value("--out");
    Output output(context.files, out.empty() ? "" : host().paths->fromPerson(out));
    Progress progress("Records", arguments.has("--progress"));
    writeRecords(rows, format, source.table, output, progress);
    output.finish();
    return kDone;
}

}  // namespace

const Command kExport{
    "export",
    "FILE [TABLE]",
    "the records of a table as CSV, JSON, HTML, SQL or another file",
    "CSV is UTF-8 with the field names first: Null is an empty field, an empty text \"\",\n"
    "dates are YYYY-MM-DD[ HH:MM:SS], times of day HH:MM:SS, bytes lower-case hex. Without TABLE "
    "the first one is taken.",
    kOptions,
    run};

}  // namespace velnor::cli
