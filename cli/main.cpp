// velnor-cli: the engine for scripts. Errors stand on standard error as "Error - NUMBER -
// DESCRIPTION"; exit codes are 0 done, 1 failed, 2 wrong use.
#include <array>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/self_description.h"
#include "platform/host.h"

namespace velnor::cli {

std::span<const Command* const> commands()
{
    static constexpr std::array<const Command*, 15> all{
        &kTables, &kSchema, &kInfo,  &kExport,      &kQuery,   &kCopy,     &kConvert, &kCreate,
        &kCheck,  &kDiff,   &kIndex, &kDeleteTable, &kCompact, &kPassword, &kRepair};
    return all;
}

namespace {

void printProgramHelp(std::FILE* to)
{
    std::fputs("velnor-cli - database and spreadsheet files from the shell\n\n"
               "Usage: velnor-cli COMMAND [ARGUMENTS] [OPTIONS]\n\nCommands:\n",
               to);
    for (const Command* c : commands())
        std::fprintf(to, "  %-12.*s %.*s\n", static_cast<int>(c->name.size()), c->name.data(),
                     static_cast<int>(c->summary.size()), c->summary.data());
    std::fputs(
        "\n\"velnor-cli COMMAND --help\" tells more. Exit codes: 0 done, 1 failed, 2 wrong use.\n",
        to);
}

void printCommandHelp(const Command& c)
{
    std::printf("Usage: velnor-cli %s %s%s\n\n%s\n", std::string(c.name).c_str(),
                std::string(c.arguments).c_str(), c.options.empty() ? "" : " [OPTIONS]",
                std::string(c.summary).c_str());
    if (!c.details.empty())
        std::printf("\n%s\n", std::string(c.details).c_str());
    std::puts("\nOptions:");
    for (const OptionSpec& o : c.options) {
        const std::string left =
            std::string(o.name) + (o.value.empty() ? "" : " ") + std::string(o.value);
        std::printf("  %-28s  %s\n", left.c_str(), std::string(o.help).c_str());
    }
    std::printf("  %-28s  %s\n", "--help", "this text");
}

int tell(int number, const char* description)
{
    std::fprintf(stderr, "Error - %d - %s\n", number, description);
    return kFailed;
}

int runCommand(const Command& command, std::span<char* const> words)
{
    for (const char* word : words) {
        if (std::string_view(word) == "--")
            break;
        if (std::string_view(word) == "--help") {
            printCommandHelp(command);
            return kDone;
        }
    }
    HostPaths paths;
    const auto files = makeLinuxFileSystem(paths);
    host().files = files.get();
    host().paths = &paths;
    Workspace workspace(*files);
    Context context{*files, workspace};
    watchInterrupt();
    try {
        return command.run(context, Arguments(command.options, words));
    } catch (const UsageError& error) {
        std::fprintf(stderr, "velnor-cli %s: %s\nUsage: velnor-cli %s %s\n",
                     std::string(command.name).c_str(), error.what(),
                     std::string(command.name).c_str(), std::string(command.arguments).c_str());
        return kUsage;
    } catch (const EngineError& error) {
        return tell(error.number(), error.what());
    } catch (const RunError& error) {
        return tell(error.number(), error.what());
    } catch (const std::bad_alloc&) {
        return tell(static_cast<int>(RunErrorNumber::OutOfMemory), "Out of memory.");
    } catch (const std::exception& error) {
        return tell(static_cast<int>(EngineErrorNumber::Unexpected), error.what());
    }
}

}  // namespace
}  // namespace velnor::cli

int main(int argc, char** argv)
{
    using namespace velnor::cli;
    if (argc < 2) {
        printProgramHelp(stderr);
        return kUsage;
    }
    const std::string_view name = argv[1];
    if (name == "--help" || name == "help") {
        printProgramHelp(stdout);
        return kDone;
    }
    if (name == "--man") {
        printManPage();
        return kDone;
    }
    if (name == "--completion") {
        printCompletion();
        return kDone;
    }
    if (name == "--version") {
        std::puts("velnor-cli 3.0");
        return kDone;
    }
    for (const Command* command : commands())
        if (command->name == name)
            return runCommand(*command, {argv + 2, static_cast<std::size_t>(argc - 2)});
    std::fprintf(stderr, "velnor-cli: no command \"%s\"\n", argv[1]);
    printProgramHelp(stderr);
    return kUsage;
}
