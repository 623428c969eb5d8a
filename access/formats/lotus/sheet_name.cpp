#include "access/formats/lotus/sheet_name.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/value_text.h"

namespace velnor::lotus {
namespace {

constexpr std::size_t kLongest = 15;

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// "A" to "IV", perhaps with a row behind it.
bool looksLikeAddress(std::string_view name)
{
    std::size_t letters = 0;
    unsigned column = 0;
    for (; letters < name.size() && letters < 3 && isLetter(name[letters]); ++letters)
        column = column * 26 + static_cast<unsigned>((name[letters] | 0x20) - 'a' + 1);
    const std::string_view rest = name.substr(letters);
    return letters > 0 && column <= 256 && rest.size() <= 4 &&
           std::all_of(rest.begin(), rest.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::string sheetNameFor(std::string_view table)
{
    std::string_view name = table;
    if (!name.empty() && name.back() == ':')
        name.remove_suffix(1);
    const bool odd = std::any_of(name.begin(), name.end(), [](char c) {
        return c == ':' || c == '\\' || static_cast<unsigned char>(c) < ' ';
    });
    if (name.empty() || odd || name.front() == ' ' || name.back() == ' ' ||
        textLength(name) > kLongest || looksLikeAddress(name))
        throw EngineError(EngineErrorNumber::InvalidTableName,
                          "\"" + std::string(table) + "\" cannot be the name of a sheet.");
    return std::string(name);
}

}  // namespace velnor::lotus
