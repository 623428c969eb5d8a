#include "access/model/connect_string.h"

#include <algorithm>

#include "platform/paths.h"

namespace velnor::model {
namespace {

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

void takePart(std::string_view part, ConnectString& out)
{
    const std::size_t equals = part.find('=');
    if (equals == part.npos)
        return;
    const std::string_view key = trimmed(part.substr(0, equals));
    const std::string_view value = part.substr(equals + 1);  // blanks of a password count
    if (paths::sameName(key, "pwd"))
        out.password = value, out.hasPassword = true;
    else if (paths::sameName(key, "codepage"))
        out.codePage = trimmed(value);
    else
        out.options += (out.options.empty() ? "" : ";") + std::string(trimmed(part));
}

}  // namespace

ConnectString parseConnect(std::string_view connect)
{
    ConnectString out;
    bool first = true;
    while (!connect.empty()) {
        const std::size_t end = connect.find(';');
        const std::string_view part = connect.substr(0, end);
        if (first && part.find('=') == part.npos && !trimmed(part).empty())
            out.word = std::string(trimmed(part)) + ";";
        else
            takePart(part, out);
        first = false;
        connect = end == connect.npos ? std::string_view{} : connect.substr(end + 1);
    }
    return out;
}

ConnectString parseCreation(std::string_view text)
{
    static constexpr std::string_view kLast = "COUNTRY=";
    const std::size_t last = text.find(kLast);
    if (last == text.npos)
        return parseConnect(text);
    text.remove_prefix(last + kLast.size());
    text.remove_prefix(std::min(text.find_first_not_of("0123456789"), text.size()));
    return parseConnect(text);
}

}  // namespace velnor::model
