#include "access/model/connect_string.h"

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

}  // namespace velnor::model
