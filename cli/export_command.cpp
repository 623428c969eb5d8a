// export: the records of a table as CSV or JSON.
#include <array>

#include "cli/command.h"
#include "cli/csv_writer.h"
#include "cli/output.h"
#include "cli/record_text.h"
#include "cli/source.h"
#include "cli/time_columns.h"
#include "platform/host.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--format", "csv|json", "csv (the default) or json"},
    OptionSpec{"--out", "F", "write to a file instead of standard output"},
    OptionSpec{"--index", "NAME", "in the order of an index"},
    OptionSpec{"--password", "P", "password of an Access file"},
    OptionSpec{"--codepage", "C",
               "code page of the texts, such as 866, where the file does not say"},
    OptionSpec{"--cells", "", "of a sheet: every cell from A1 on as a text, fields A, B, C, ..."},
    OptionSpec{"--progress", "", "progress lines also when standard error is no terminal"},
};

void writeCsv(Recordset& rows, Output& output, Progress& progress)
{
    std::string& out = output.buffer();
    const int count = rows.fieldCount();
    for (int i = 0; i < count; ++i) {
        out += i ? "," : "";
        appendCsvText(out, rows.Fields().Item(i).Name());
    }
    out += "\r\n";
    output.write(out);
    out.clear();

    CsvWriter csv(output);
    TimeColumns times(rows);
    std::vector<ValueView> values(static_cast<std::size_t>(count));
    for (std::int64_t done = 0; !rows.Eof(); rows.MoveNext()) {
        rows.values(values);
        times.show(values);
        csv.record(values);
        if ((++done & 0x3FF) == 0) {
            stopIfInterrupted();
            progress.show(done);
        }
    }
    csv.finish();
}

void writeJson(Recordset& rows, Output& output, Progress& progress)
{
    std::string& out = output.buffer();
    const int count = rows.fieldCount();
    std::vector<std::string> heads;
    for (int i = 0; i < count; ++i) {
        std::string head = i ? "," : "";
        appendJsonString(head, rows.Fields().Item(i).Name());
        heads.push_back(head + ":");
    }
    out += "[";
    std::int64_t done = 0;
    TimeColumns times(rows);
    std::vector<ValueView> values(static_cast<std::size_t>(count));
    for (; !rows.Eof(); rows.MoveNext()) {
        rows.values(values);
        times.show(values);
        out += done ? ",\n{" : "\n{";
        for (int i = 0; i < count; ++i) {
            out += heads[static_cast<std::size_t>(i)];
            appendJson(out, values[static_cast<std::size_t>(i)]);
        }
        out += '}';
        output.flushIfFull();
        if ((++done & 0x3FF) == 0) {
            stopIfInterrupted();
            progress.show(done);
        }
    }
    out += "\n]\n";
}

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 2);
    const std::string format = arguments.value("--format", "csv");
    if (format != "csv" && format != "json")
        throw UsageError("no format \"" + format + "\"");
    Source source = sourceOf(context, arguments.positional()[0], arguments);
    if (arguments.positional().size() > 1)
        source.table = arguments.positional()[1];
    Database database = openSource(context, source, true);
    const std::string index = arguments.value("--index");
    Recordset rows = database.OpenRecordset(chosenTable(database, source), RecordsetType::Table);
    if (!index.empty()) {
        rows.Index(index);
        if (!rows.Eof() || !rows.Bof())
            rows.MoveFirst();
    }
    const std::string out = arguments.value("--out");
    Output output(context.files, out.empty() ? "" : host().paths->fromPerson(out));
    Progress progress("Records", arguments.has("--progress"));
    if (format == "csv")
        writeCsv(rows, output, progress);
    else
        writeJson(rows, output, progress);
    output.finish();
    return kDone;
}

}  // namespace

const Command kExport{
    "export",
    "FILE [TABLE]",
    "the records of a table as CSV or JSON",
    "CSV is UTF-8 with the field names first: Null is an empty field, an empty text \"\",\n"
    "dates are YYYY-MM-DD[ HH:MM:SS], times of day HH:MM:SS, bytes lower-case hex. Without TABLE "
    "the first one is taken.",
    kOptions,
    run};

}  // namespace velnor::cli
