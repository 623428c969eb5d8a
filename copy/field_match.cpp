#include "copy/field_match.h"

#include <optional>

#include "copy/field_line.h"
#include "core/bounded_array.h"

namespace velnor {
namespace {

using TakenFlags = BoundedArray<bool, 201>;

std::optional<int> firstNamesake(const QString& fromLine, const QStringList& toLines)
{
    const QString name = fieldLineName(fromLine);
    for (int j = 0; j < toLines.size(); ++j) {
        if (name == fieldLineName(toLines[j]))
            return j;
    }
    return std::nullopt;
}

/// Only an exact size fits: a difference must not pass the best one so far, which starts at 0.
/// Required, near sizes don't pair.
std::optional<int> firstFreeTwin(const FieldList& from, int i, const FieldList& to,
                                 const TakenFlags& taken)
{
    for (int j = 0; j < to.lines.size(); ++j) {
        const bool free = !taken[j];  // read for every line: the range error comes from here
        if (free && from.types[i] == to.types[j] && from.sizes[i] == to.sizes[j])
            return j;
    }
    return std::nullopt;
}

}  // namespace

void matchFields(const FieldList& from, const FieldList& to, std::vector<FieldPair>& pairs)
{
    TakenFlags taken;
    for (int i = 0; i < from.lines.size(); ++i) {
        if (const auto j = firstNamesake(from.lines[i], to.lines)) {
            pairs.push_back({static_cast<short>(i), static_cast<short>(*j)});
            taken[*j] = true;
        } else if (const auto twin = firstFreeTwin(from, i, to, taken)) {
            taken[*twin] = true;
            pairs.push_back({static_cast<short>(i), static_cast<short>(*twin)});
        }
    }
}

}  // namespace velnor
