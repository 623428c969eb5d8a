#include "access/model/like_pattern.h"

#include "platform/paths.h"

namespace velnor::model {
namespace {

/// Length in bytes of the character at the beginning of a text.
std::size_t characterBytes(std::string_view text)
{
    std::size_t n = 1;
    while (n < text.size() && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80)
        ++n;
    return n;
}

/// Whether a character is in "a-z0" or, behind a "!", not in it.
bool inSet(std::string_view character, std::string_view set)
{
    const bool denies = !set.empty() && set.front() == '!';
    if (denies)
        set.remove_prefix(1);
    bool in = false;
    while (!set.empty()) {
        const std::string_view low = set.substr(0, characterBytes(set));
        set.remove_prefix(low.size());
        std::string_view high = low;
        if (set.size() > 1 && set.front() == '-') {
            set.remove_prefix(1);
            high = set.substr(0, characterBytes(set));
            set.remove_prefix(high.size());
        }
        in = in || (character >= low && character <= high);
    }
    return in != denies;
}

/// Both are folded.
bool fitsPattern(std::string_view text, std::string_view pattern)
{
    // Where the last * stands, and how much of the text it has taken.
    std::size_t starAt = pattern.npos, taken = 0, at = 0, place = 0;
    while (place < text.size()) {
        const std::string_view character = text.substr(place, characterBytes(text.substr(place)));
        bool fits = false;
        std::size_t step = 1;
        if (at < pattern.size()) {
            const std::size_t close = pattern[at] == '[' ? pattern.find(']', at + 1) : pattern.npos;
            if (pattern[at] == '*') {
                starAt = at++;
                taken = place;
                continue;
            }
            if (close != pattern.npos) {
                fits = inSet(character, pattern.substr(at + 1, close - at - 1));
                step = close - at + 1;
            } else if (pattern[at] == '?') {
                fits = true;
            } else if (pattern[at] == '#') {
                fits = character >= "0" && character <= "9" && character.size() == 1;
            } else {
                step = characterBytes(pattern.substr(at));
                fits = character == pattern.substr(at, step);
            }
        }
        if (fits) {
            at += step;
            place += character.size();
        } else if (starAt != pattern.npos) {
            at = starAt + 1;
            taken += characterBytes(text.substr(taken));
            place = taken;
        } else {
            return false;
        }
    }
    while (at < pattern.size() && pattern[at] == '*')
        ++at;
    return at == pattern.size();
}

}  // namespace

bool likePattern(std::string_view text, std::string_view pattern)
{
    return fitsPattern(paths::foldName(text), paths::foldName(pattern));
}

}  // namespace velnor::model
