#include "access/sql/sql_error.h"

#include <charconv>

namespace velnor::sql {
namespace {

constexpr std::string_view kMark = "\x01velnor ";  // no message of SQLite's own begins so
constexpr std::size_t kShownCharacters = 24;

bool continues(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

std::string_view shownPart(std::string_view statement, std::size_t at)
{
    std::size_t end = std::min(statement.size(), at + kShownCharacters);
    while (end < statement.size() && end > at && continues(statement[end]))
        --end;
    return statement.substr(at, end - at);
}

}  // namespace

void fail(EngineErrorNumber number, const std::string& what, std::string_view statement,
          std::size_t at)
{
    at = std::min(at, statement.size());
    std::string words = what;
    if (at == statement.size())
        words += ", at the end of the statement.";
    else
        words += ", at character " + std::to_string(at + 1) + ", near '" +
                 std::string(shownPart(statement, at)) + "'.";
    throw EngineError(number, words);
}

std::string errorMessage(EngineErrorNumber number, std::string_view words)
{
    return std::string(kMark) + std::to_string(static_cast<int>(number)) + " " + std::string(words);
}

EngineError errorOfMessage(const char* message, const EngineError& otherwise)
{
    std::string_view text = message ? message : "";
    if (text.substr(0, kMark.size()) != kMark)
        return otherwise;
    text.remove_prefix(kMark.size());
    int number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
    if (!text.empty())
        text.remove_prefix(1);
    return EngineError(static_cast<EngineErrorNumber>(number), std::string(text));
}

}  // namespace velnor::sql
