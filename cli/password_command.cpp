// password: sets, changes or removes the password of an Access file.
#include <array>

#include "cli/command.h"
#include "cli/result_json.h"
#include "cli/source.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--password", "P", "the password that the file has now"},
    OptionSpec{"--new-password", "P", "the password from now on, at most 20 characters"},
    OptionSpec{"--remove", "", "no password from now on"},
    OptionSpec{"--json", "", "the outcome as JSON"},
};

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 1);
    if (arguments.has("--new-password") == arguments.has("--remove"))
        throw UsageError("either --new-password or --remove is needed");
    Source source = sourceOf(context, arguments.positional()[0], arguments);
    if (source.kind != FileKind::Access)
        throw UsageError("only Access files have passwords");
    Database database = openSource(context, source, false);
    database.NewPassword(arguments.value("--password"), arguments.value("--new-password"));
    database.Close();
    if (arguments.has("--json"))
        ResultJson()
            .text("file", arguments.positional()[0])
            .truth("password", !arguments.value("--new-password").empty())
            .print(context);
    return kDone;
}

}  // namespace

const Command kPassword{
    "password", "FILE",   "sets, changes or removes the password of an Access file",
    "",         kOptions, run};

}  // namespace velnor::cli
