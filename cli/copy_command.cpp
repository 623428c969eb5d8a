// copy: the records of one table appended to another along matched fields, as the copy workspace
// does it.
#include <array>
#include <cstdio>
#include <iostream>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/result_json.h"
#include "cli/source.h"
#include "copy/copy_engine.h"
#include "copy/field_match.h"
#include "copy/record_loop.h"
#include "platform/paths.h"

namespace velnor::cli {
namespace {

constexpr std::int64_t kBetweenCommits = 20000;

constexpr std::array kOptions{
    OptionSpec{"--auto", "", "match the fields by name, then by type and size (the default)"},
    OptionSpec{"--match", "FROMFIELD=TOFIELD", "match two fields by name", true},
    OptionSpec{"--query", "SELECT", "the records of a statement over FROM, in place of a table"},
    OptionSpec{"--yes", "", "do not ask about fields of different types"},
    OptionSpec{"--json", "", "the outcome as JSON"},
    OptionSpec{"--password", "P", "password of the Access file that is read"},
    OptionSpec{"--to-password", "P", "password of the Access file that is written"},
    OptionSpec{"--codepage", "C", "code page of the texts that are read"},
    OptionSpec{"--progress", "", "progress lines also when standard error is no terminal"},
};

struct Side {
    Source source;
    FieldList fields;
};

/// The answer of a statement as the side that is read.
Side readQuery(Context& context, Source source, const std::string& statement)
{
    Side side{std::move(source), {}};
    Database database = openSource(context, side.source, true);
    side.source.table = statement;
    Recordset answer = database.OpenRecordset(statement);
    side.fields = fieldListOf(answer);
    return side;
}

Side readSide(Context& context, Source source)
{
    Side side{std::move(source), {}};
    Database database = openSource(context, side.source, true);
    side.source.table = chosenTable(database, side.source);
    side.fields = fieldListOf(database.TableDefs().Item(side.source.table));
    return side;
}

short positionOf(const FieldList& fields, const std::string& name)
{
    for (int i = 1; i <= fields.count; ++i)
        if (paths::sameName(fields.names[i].toStdString(), name))
            return static_cast<short>(i - 1);
    throw EngineError(EngineErrorNumber::ItemNotFound, "There is no field '" + name + "'.");
}

std::vector<FieldPair> pairsOf(const Arguments& arguments, const Side& from, const Side& to)
{
    std::vector<FieldPair> pairs;
    for (const std::string& match : arguments.values("--match")) {
        const std::size_t equals = match.find('=');
        if (equals == std::string::npos)
            throw UsageError("--match takes FROMFIELD=TOFIELD, not \"" + match + "\"");
        pairs.push_back({positionOf(from.fields, match.substr(0, equals)),
                         positionOf(to.fields, match.substr(equals + 1))});
    }
    if (pairs.empty())
        matchFields(from.fields, to.fields, pairs);
    if (pairs.empty())
        throw EngineError(EngineErrorNumber::ItemNotFound, "No fields match.");
    return pairs;
}

bool askOnTerminal(const QString& question)
{
    std::fprintf(stderr, "%s? [y/N] ", qUtf8Printable(question.trimmed()));
    std::string answer;
    return std::getline(std::cin, answer) && !answer.empty() &&
           (answer[0] == 'y' || answer[0] == 'Y');
}

bool typesAccepted(const std::vector<FieldPair>& pairs, const Side& from, const Side& to)
{
    MatchArrays matches;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        matches.MatchFrom[static_cast<int>(i)] = pairs[i].from;
        matches.MatchTo[static_cast<int>(i)] = pairs[i].to;
    }
    return checkFieldTypes(matches, static_cast<int>(pairs.size()), from.fields, to.fields,
                           [](int, const QString& question) { return askOnTerminal(question); });
}

FromTo splitQueryTo(const Arguments& arguments)
{
    arguments.expectPositional(2, 3);
    const auto& words = arguments.positional();
    return {words[0], "", words[1], words.size() > 2 ? words[2] : ""};
}

CopyJob::End endOf(const Source& source)
{
    return {source.database, source.connect, source.table};
}

int run(Context& context, const Arguments& arguments)
{
    if (arguments.has("--auto") && arguments.has("--match"))
        throw UsageError("--auto or --match, not both");
    const bool query = arguments.has("--query");
    const FromTo words = query ? splitQueryTo(arguments) : splitFromTo(arguments.positional());
    Source fromSource = sourceOf(context, words.from, arguments);
    Source toSource = sourceOf(context, words.to, arguments);
    toSource.connect = toSource.connect.substr(0, toSource.connect.find(';') + 1);
    toSource.tail =
        arguments.has("--to-password") ? "pwd=" + arguments.value("--to-password") + ";" : "";
    toSource.connect += toSource.tail;
    if (!words.fromTable.empty())
        fromSource.table = words.fromTable;
    if (!words.toTable.empty())
        toSource.table = words.toTable;

    const Side from = query ? readQuery(context, std::move(fromSource), arguments.value("--query"))
                            : readSide(context, std::move(fromSource));
    const Side to = readSide(context, std::move(toSource));
    CopyJob job{endOf(from.source), endOf(to.source), pairsOf(arguments, from, to)};
    job.from.readOnly = true;
    if (!arguments.has("--yes") && !typesAccepted(job.pairs, from, to)) {
        std::fputs("File not Copied\n", stderr);
        return kFailed;
    }

    Progress progress("Records written", arguments.has("--progress"));
    CopyTally tally;
    try {
        CopyWatch watch;
        watch.every = kBetweenCommits;
        watch.reached = [&](std::int64_t copied) {
            progress.show(copied);
            return true;
        };
        watch.stop = interrupted;
        runCopy(context.workspace, job, tally, watch);
    } catch (...) {
        std::fputs("Copy Unsuccessful\n", stderr);
        throw;
    }
    if (tally.cancelled)
        throw EngineError(EngineErrorNumber::Cancelled, "Stopped by the user, " +
                                                            std::to_string(tally.copied) +
                                                            " records copied.");
    progress.show(tally.copied);
    for (const std::string& sheet : tally.furtherSheets)
        std::fprintf(stderr, "The sheet is full; the records go on in %s.\n", sheet.c_str());
    if (arguments.has("--json"))
        ResultJson()
            .number("records", tally.copied)
            .texts("furtherSheets", tally.furtherSheets)
            .print(context);
    else
        std::printf("Copy Successful - %lld records\n", static_cast<long long>(tally.copied));
    return kDone;
}

}  // namespace

const Command kCopy{"copy",
                    "FROM [TABLE] TO [TABLE]",
                    "append the records of one table to another",
                    "The fields are matched and their values converted as in the copy workspace: "
                    "equal names first, then\n"
                    "equal type and size. The progress counts records that are safe on the disk.",
                    kOptions,
                    run};

}  // namespace velnor::cli
