// check: a deep look at every structure of a file; nothing is changed.
#include <array>
#include <cstdio>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/source.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--json", "", "JSON instead of lines"},
    OptionSpec{"--notes", "", "also what is harmless: stale counts, leftovers of other programs"},
    OptionSpec{"--password", "P", "password of an Access file"},
    OptionSpec{"--codepage", "C", "code page of the texts"},
};

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 1);
    Source source = sourceOf(context, arguments.positional()[0], arguments);
    if (source.kind == FileKind::Folder)
        throw UsageError("check takes a file, not a folder");
    Database database = openSource(context, source, true);
    const bool json = arguments.has("--json");
    Output output(context.files, "");
    std::string& out = output.buffer();
    std::int64_t problems = 0, shown = 0;
    out += json ? "{\"problems\":[" : "";
    database.check(source.table, [&](const Database::Finding& finding) {
        stopIfInterrupted();
        problems += !finding.harmless;
        if (finding.harmless && !arguments.has("--notes"))
            return;
        if (json) {
            out += shown ? ",\n{\"where\":" : "\n{\"where\":";
            appendJsonString(out, finding.where);
            out += ",\"text\":";
            appendJsonString(out, finding.text);
            out += finding.harmless ? ",\"harmless\":true}" : "}";
        } else {
            out += (finding.harmless ? "note: " : "") + finding.where + ": " + finding.text + "\n";
        }
        ++shown;
        output.flushIfFull();
    });
    if (json)
        out += "],\"count\":" + std::to_string(problems) + "}\n";
    else if (problems == 0)
        out += "No problems found.\n";
    output.finish();
    return problems ? kFailed : kDone;
}

}  // namespace

const Command kCheck{"check",
                     "FILE",
                     "a deep check of every structure; changes nothing",
                     "Prints each problem; the exit code is 1 when there is any.",
                     kOptions,
                     run};

}  // namespace velnor::cli
