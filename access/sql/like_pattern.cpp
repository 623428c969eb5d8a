#include "access/sql/like_pattern.h"

#include "access/engine_error.h"
#include "access/sql/text_order.h"

namespace velnor::sql {
namespace {

char32_t takeFolded(std::string_view text, std::size_t& at)
{
    return foldedCharacter(takeCharacter(text, at));
}

/// One character against [list]; `at` stands behind the "[" and moves behind the "]".
bool inList(char32_t character, std::string_view pattern, std::size_t& at)
{
    const std::size_t close = pattern.find(']', at);
    if (close == pattern.npos)
        throw EngineError(EngineErrorNumber::SyntaxError,
                          "Syntax error: a \"[\" without its \"]\" in the pattern '" +
                              std::string(pattern) + "'.");
    const bool negated = pattern[at] == '!' && close > at + 1;
    at += negated;
    bool found = false;
    while (at < close) {
        const char32_t low = takeFolded(pattern, at);
        char32_t high = low;
        if (at + 1 < close && pattern[at] == '-') {
            ++at;
            high = takeFolded(pattern, at);
        }
        found = found || (character >= low && character <= high);
    }
    at = close + 1;
    return found != negated;
}

/// One step of the pattern that is no "*" against one character.
bool stepFits(std::string_view text, std::size_t& t, std::string_view pattern, std::size_t& p)
{
    if (pattern[p] == '[' && p + 1 < pattern.size() && pattern[p + 1] == ']') {
        p += 2;  // an empty list is an empty text
        return true;
    }
    if (t >= text.size()) {
        if (pattern[p] == '[')
            inList(0, pattern, ++p);  // a broken list is told in any case
        return false;
    }
    if (pattern[p] == '[')
        return inList(takeFolded(text, t), pattern, ++p);
    const char32_t character = takeFolded(text, t);
    const char32_t wanted = takeFolded(pattern, p);
    if (wanted == '?')
        return true;
    if (wanted == '#')
        return character >= '0' && character <= '9';
    return character == wanted;
}

}  // namespace

bool isPattern(std::string_view pattern)
{
    for (std::size_t open = pattern.find('['); open != pattern.npos;
         open = pattern.find('[', open)) {
        open = pattern.find(']', open);
        if (open == pattern.npos)
            return false;
    }
    return true;
}

bool isLike(std::string_view text, std::string_view pattern)
{
    std::size_t t = 0, p = 0;
    std::size_t star = pattern.npos, resume = 0;  // the last "*", and where its text may end
    for (;;) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = ++p;
            resume = t;
            continue;
        }
        if (p == pattern.size() && t == text.size())
            return true;
        if (p < pattern.size() && stepFits(text, t, pattern, p))
            continue;
        if (star == pattern.npos || resume >= text.size())
            return false;
        takeCharacter(text, resume);  // the star takes one character more
        t = resume;
        p = star;
    }
}

}  // namespace velnor::sql
