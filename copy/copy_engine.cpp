#include "copy/copy_engine.h"

#include "copy/field_line.h"
#include "core/text.h"

namespace velnor {
namespace {

/// The first line that is the same but for case and outer blanks; the first line of all when none
/// is.
short lineOf(const QString& text, const QStringList& lines)
{
    const QString wanted = text::trim(text.toUpper());
    for (int j = 0; j < lines.size(); ++j) {
        if (text::trim(lines[j].toUpper()) == wanted)
            return text::narrow16(j);
    }
    return 0;
}

/// The name of a field for a question; empty where the list has no such line.
QString nameAt(const QStringList& lines, int line)
{
    return line < lines.size() ? fieldLineName(lines[line]) : QString();
}

}  // namespace

void buildFieldMatches(const QStringList& matchLines, const QStringList& fromLines,
                       const QStringList& toLines, MatchArrays& matches)
{
    for (int i = 0; i <= 300; ++i) {
        matches.MatchFrom[i] = 0;
        matches.MatchTo[i] = 0;
    }
    for (int i = 0; i < matchLines.size(); ++i) {
        const MatchHalves halves = splitMatchLine(matchLines[i]);
        matches.MatchFrom[i] = lineOf(halves.from, fromLines);
        matches.MatchTo[i] = lineOf(halves.to, toLines);
    }
}

std::vector<FieldPair> fieldPairs(const MatchArrays& matches, int count)
{
    std::vector<FieldPair> pairs;
    for (int i = 0; i < count; ++i)
        pairs.push_back({matches.MatchFrom[i], matches.MatchTo[i]});
    return pairs;
}

bool checkFieldTypes(const MatchArrays& matches, int count, const FieldList& from,
                     const FieldList& to,
                     const std::function<bool(int line, const QString& question)>& ask)
{
    for (int i = 0; i < count; ++i) {
        const int f = matches.MatchFrom[i];
        const int t = matches.MatchTo[i];
        if (from.types[f] == to.types[t])
            continue;
        const QString question =
            "Do you want to Copy " + nameAt(from.lines, f) + " to " + nameAt(to.lines, t);
        if (!ask(i, question))
            return false;
    }
    return true;
}

QString copyFromConnect(const QString& connect, const QString& password)
{
    return connect == "Access 2000;" ? ";pwd=" + password : connect;
}

QString copyToConnect(const QString& connect, const QString& password,
                      const QString& passwordInHand)
{
    if (connect != "Access 2000;")
        return connect;
    return passwordInHand.isEmpty() ? QString() : ";pwd=" + password;
}

}  // namespace velnor
