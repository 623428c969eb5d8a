#include "access/formats/text/field_names.h"

#include <algorithm>

#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::text {
namespace {

constexpr std::size_t kLongestName = 64;

std::string trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    if (first == text.npos)
        return {};
    return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

std::string cleanName(std::string_view raw)
{
    constexpr std::string_view kTaken = ".![]`", kInstead = "#$()'";
    std::string name;
    for (const char c : raw) {
        const std::size_t at = kTaken.find(c);
        name += at != kTaken.npos ? kInstead[at] : static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
    return trimmed(textPrefix(trimmed(name), kLongestName));
}

}  // namespace

std::vector<std::string> cleanNames(const std::vector<std::string>& raw, std::size_t columns)
{
    std::vector<std::string> names, folded;
    for (std::size_t i = 0; i < columns; ++i) {
        std::string name = i < raw.size() ? cleanName(raw[i]) : std::string();
        const bool used =
            std::find(folded.begin(), folded.end(), paths::foldName(name)) != folded.end();
        if (name.empty() || used)
            name = "F" + std::to_string(i + 1);
        folded.push_back(paths::foldName(name));
        names.push_back(std::move(name));
    }
    return names;
}

}  // namespace velnor::text
