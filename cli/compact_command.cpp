// compact: a copy of an Access file without the room that deleted records leave.
#include <array>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/source.h"
#include "platform/host.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--password", "P", "password of FILE"},
    OptionSpec{"--new-password", "P", "password of TO; empty: none. Else it has the one of FILE"},
    OptionSpec{"--encode", "", "encode the pages of TO"},
    OptionSpec{"--plain", "", "write the pages of TO plain, also when those of FILE are encoded"},
};

constexpr int kEncode = 2, kPlain = 4;

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(2, 2);
    const Source source = sourceOf(context, arguments.positional()[0], arguments);
    if (source.kind != FileKind::Access)
        throw UsageError("compact takes an Access file");
    if (arguments.has("--encode") && arguments.has("--plain"))
        throw UsageError("--encode and --plain exclude each other");
    const std::string target = host().paths->fromPerson(arguments.positional()[1]);
    const std::string locale =
        arguments.has("--new-password") ? ";pwd=" + arguments.value("--new-password") : "";
    const int options =
        (arguments.has("--encode") ? kEncode : 0) | (arguments.has("--plain") ? kPlain : 0);
    CompactDatabase(context.files, source.database, target, locale, options, source.connect);

    Output output(context.files, "");
    const auto before = context.files.info(source.path), after = context.files.info(target);
    output.buffer() += std::to_string(before ? before->size : 0) + " bytes before, " +
                       std::to_string(after ? after->size : 0) + " bytes now\n";
    output.finish();
    return kDone;
}

}  // namespace

const Command kCompact{"compact",
                       "FILE TO",
                       "a copy of an Access file without the room of what was deleted",
                       "TO must not be there. FILE is left as it is; nobody else may have it open.",
                       kOptions,
                       run};

}  // namespace velnor::cli
