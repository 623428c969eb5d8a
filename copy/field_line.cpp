#include "copy/field_line.h"

#include "access/field_type_names.h"
#include "core/text.h"

namespace velnor {

QString fieldLine(const QString& name, int type, int size)
{
    return name + " - " + FieldTypeName(text::narrow16(type)) + " - " + QString::number(size);
}

QString fieldLineName(const QString& line)
{
    const int dash = text::instr(line, "-");
    return text::mid(line, 1, dash - 2);
}

QString matchLine(const QString& fromLine, const QString& toLine)
{
    return fromLine + "  =  " + toLine;
}

MatchHalves splitMatchLine(const QString& line)
{
    const int equals = text::instr(line, "=");
    if (equals < 3)  // a name that begins with "=" or "x=": there is nothing to cut
        return {};
    return {text::mid(line, 1, equals - 3),
            text::mid(line, equals + 3, static_cast<int>(line.size()) - equals - 1)};
}

}  // namespace velnor
