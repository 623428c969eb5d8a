// repair: puts a damaged Access file or DBF right, as far as that goes, and says what it did.
#include <array>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/source.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--json", "", "JSON instead of lines"},
};

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 1);
    const Source source = sourceOf(context, arguments.positional()[0], arguments);
    if (source.kind != FileKind::Access && source.kind != FileKind::Xbase)
        throw UsageError("repair takes an Access file or a DBF");
    const bool json = arguments.has("--json");
    Output output(context.files, "");
    std::string& out = output.buffer();
    int losses = 0, shown = 0;
    out += json ? "{\"done\":[" : "";
    RepairDatabase(context.files, source.path, [&](const Database::Finding& finding) {
        losses += !finding.harmless;
        if (json) {
            out += shown ? ",\n{\"where\":" : "\n{\"where\":";
            appendJsonString(out, finding.where);
            out += ",\"text\":";
            appendJsonString(out, finding.text);
            out += finding.harmless ? ",\"harmless\":true}" : "}";
        } else {
            out += finding.where + ": " + finding.text + "\n";
        }
        ++shown;
    });
    if (json)
        out += "],\"losses\":" + std::to_string(losses) + "}\n";
    output.finish();
    return kDone;
}

}  // namespace

const Command kRepair{
    "repair",
    "FILE",
    "puts a damaged Access file or DBF right and says what was done",
    "Everything that can be read is kept, and indexes (and page maps) are made anew.\n"
    "The damaged file stays beside it under the name that is told. A file without\n"
    "damage is left as it is.",
    kOptions,
    run};

}  // namespace velnor::cli
