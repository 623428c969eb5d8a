#include "access/formats/xbase/field_name.h"

#include "platform/letter_case.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kNameCharacters = 10;

char plainCapital(char32_t c)
{
    const char32_t capital = capitalOf(c);
    const bool kept = (capital >= 'A' && capital <= 'Z') || (capital >= '0' && capital <= '9');
    return kept ? static_cast<char>(capital) : '_';
}

}  // namespace

std::string cleanFieldName(std::string_view utf8)
{
    std::string clean;
    for (std::size_t at = 0; at < utf8.size() && clean.size() < kNameCharacters;) {
        const char32_t c = nextCharacter(utf8, at);
        if (c == kNoCharacter)
            ++at;
        const char plain = plainCapital(c);
        if (clean.empty() && (plain < 'A' || plain > 'Z'))
            clean += 'F';
        clean += plain;
    }
    return clean.empty() ? "FIELD" : clean;
}

}  // namespace velnor::xbase
