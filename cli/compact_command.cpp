// compact: a copy of an Access file without the room that deleted records leave; a DBF is packed in
// its place.
#include <array>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/result_json.h"
#include "cli/source.h"
#include "platform/host.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--password", "P", "password of FILE"},
    OptionSpec{"--new-password", "P", "password of TO; empty: none. Else it has the one of FILE"},
    OptionSpec{"--json", "", "the outcome as JSON"},
    OptionSpec{"--encode", "", "encode the pages of TO"},
    OptionSpec{"--plain", "", "write the pages of TO plain, also when those of FILE are encoded"},
};

constexpr int kEncode = 2, kPlain = 4;

std::uint64_t sizeOf(Context& context, const std::string& path)
{
    const auto info = context.files.info(path);
    return info ? info->size : 0;
}

/// `path` is the file that was made.
void tellSizes(Context& context, const Arguments& arguments, std::uint64_t before,
               const std::string& path)
{
    const std::uint64_t now = sizeOf(context, path);
    if (arguments.has("--json")) {
        ResultJson()
            .text("file", arguments.positional().back())
            .number("bytesBefore", static_cast<std::int64_t>(before))
            .number("bytesNow", static_cast<std::int64_t>(now))
            .print(context);
        return;
    }
    Output output(context.files, "");
    output.buffer() +=
        std::to_string(before) + " bytes before, " + std::to_string(now) + " bytes now\n";
    output.finish();
}

int packTable(Context& context, const Arguments& arguments, const Source& source)
{
    const std::uint64_t before = sizeOf(context, source.path);
    CompactDatabase(context.files, source.path, source.path, {}, 0, source.connect);
    tellSizes(context, arguments, before, source.path);
    return kDone;
}

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 2);
    const Source source = sourceOf(context, arguments.positional()[0], arguments);
    if (source.kind == FileKind::Xbase && arguments.positional().size() == 1)
        return packTable(context, arguments, source);
    if (source.kind != FileKind::Access)
        throw UsageError("compact takes an Access file and its copy, or a DBF alone");
    arguments.expectPositional(2, 2);
    if (arguments.has("--encode") && arguments.has("--plain"))
        throw UsageError("--encode and --plain exclude each other");
    const std::string target = host().paths->fromPerson(arguments.positional()[1]);
    const std::string locale =
        arguments.has("--new-password") ? ";pwd=" + arguments.value("--new-password") : "";
    const int options =
        (arguments.has("--encode") ? kEncode : 0) | (arguments.has("--plain") ? kPlain : 0);
    CompactDatabase(context.files, source.database, target, locale, options, source.connect);

    tellSizes(context, arguments, sizeOf(context, source.path), target);
    return kDone;
}

}  // namespace

const Command kCompact{
    "compact",
    "FILE [TO]",
    "gives back the room of what was deleted",
    "An Access file is copied to TO, which must not be there; FILE is left as it is. "
    "A DBF is packed\nin its place, with its memo file and its indexes. Nobody else "
    "may have FILE open.",
    kOptions,
    run};

}  // namespace velnor::cli
