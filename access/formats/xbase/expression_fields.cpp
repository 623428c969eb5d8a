// Which fields an index expression names, and which expression names given fields.
#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/xbase/expression_words.h"
#include "access/formats/xbase/index_expression.h"
#include "platform/paths.h"

namespace velnor::xbase {

int fieldOfName(const DbfHeader& header, std::string_view name)
{
    name = trimmed(name);
    const auto& fields = header.fields;
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (paths::sameName(fields[i].name, name))
            return static_cast<int>(i);
    if (name.size() > 10)
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (paths::sameName(fields[i].name, name.substr(0, 10)))
                return static_cast<int>(i);
    int found = -1;
    if (name.size() > 10)
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (fields[i].name.size() == 10 &&
                paths::sameName(fields[i].name.substr(0, 8), name.substr(0, 8))) {
                if (found >= 0)
                    return -1;
                found = static_cast<int>(i);
            }
    return found;
}

std::vector<std::size_t> fieldsOfExpression(std::string_view utf8, const DbfHeader& header)
{
    std::vector<std::size_t> found;
    const auto take = [&](std::string_view name) {
        const int n = fieldOfName(header, name);
        if (n >= 0 && std::find(found.begin(), found.end(), std::size_t(n)) == found.end())
            found.push_back(static_cast<std::size_t>(n));
    };
    take(unquoted(trimmed(utf8)));
    if (!found.empty())
        return found;
    for (std::size_t at = 0; at < utf8.size();) {
        const char c = utf8[at];
        if (c == '\'' || c == '"' || c == '[' || c == ':') {
            const auto close = utf8.find(c == '[' ? ']' : c, at + 1);
            if (close == utf8.npos)
                break;
            if (c == ':')
                take(utf8.substr(at + 1, close - at - 1));
            at = close + 1;
        } else if (isLetter(c)) {
            std::size_t end = at;
            while (end < utf8.size() && (isLetter(utf8[end]) || isDigit(utf8[end])))
                ++end;
            const std::string_view behind = trimmed(utf8.substr(end));
            if (!behind.starts_with('(') && !behind.starts_with("->"))
                take(utf8.substr(at, end - at));
            at = end;
        } else {
            ++at;
        }
    }
    return found;
}

std::string expressionOfFields(const std::vector<std::size_t>& fields, const DbfHeader& header)
{
    const auto refuse = [](const std::string& why) {
        throw EngineError(EngineErrorNumber::InvalidIndex, why);
    };
    if (fields.empty())
        refuse("An index needs a field.");
    std::string text;
    for (const std::size_t n : fields) {
        const DbfField& field = header.fields[n];
        const std::string name = paths::foldName(field.name);
        const bool whole = field.coding == Coding::IntegerLE || field.coding == Coding::Integer7;
        if (!text.empty())
            text += '+';
        if (fields.size() == 1 || field.coding == Coding::Character)
            text += name;
        else if (field.coding == Coding::Number)
            text += "STR(" + name + "," + std::to_string(field.length) + "," +
                    std::to_string(field.decimals) + ")";
        else if (field.coding == Coding::Day)
            text += "DTOS(" + name + ")";
        else if (whole)
            text += "STR(" + name + ",11)";
        else if (field.coding == Coding::Logical)
            text += "IIF(" + name + ",\"T\",\"F\")";
        else
            refuse("The field " + field.name + " cannot be part of an index over several fields.");
    }
    return text;
}

}  // namespace velnor::xbase
