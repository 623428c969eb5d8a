#include "access/sql/text_order.h"

#include <algorithm>
#include <array>

#include "platform/letter_case.h"

namespace velnor::sql {
namespace {

constexpr char32_t kFirstNonAscii = 0x80;
constexpr char32_t kBrokenByte = 0x110000;  // behind every character

constexpr std::array<std::uint8_t, 256> makeSmallLetters()
{
    std::array<std::uint8_t, 256> small{};
    for (std::size_t c = 0; c < small.size(); ++c)
        small[c] = static_cast<std::uint8_t>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return small;
}
constexpr std::array<std::uint8_t, 256> kSmall = makeSmallLetters();

std::uint8_t byteAt(std::string_view text, std::size_t at)
{
    return static_cast<std::uint8_t>(text[at]);
}

int compareFrom(std::string_view a, std::size_t i, std::string_view b, std::size_t j)
{
    while (i < a.size() && j < b.size()) {
        const char32_t x = foldedCharacter(takeCharacter(a, i));
        const char32_t y = foldedCharacter(takeCharacter(b, j));
        if (x != y)
            return x < y ? -1 : 1;
    }
    return i < a.size() ? 1 : j < b.size() ? -1 : 0;
}

}  // namespace

char32_t takeCharacter(std::string_view text, std::size_t& at)
{
    const char32_t character = nextCharacter(text, at);
    return character != kNoCharacter ? character : kBrokenByte + byteAt(text, at++);
}

char32_t foldedCharacter(char32_t character)
{
    if (character < kFirstNonAscii)
        return kSmall[character];
    if (character >= kBrokenByte)
        return character;
    const char32_t capital = capitalOf(character);
    return capital < kFirstNonAscii ? character : capital;
}

int compareText(std::string_view a, std::string_view b)
{
    const std::size_t length = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < length; ++i) {
        const std::uint8_t x = byteAt(a, i), y = byteAt(b, i);
        if ((x | y) >= kFirstNonAscii)
            return compareFrom(a, i, b, i);
        if (kSmall[x] != kSmall[y])
            return kSmall[x] < kSmall[y] ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

bool equalText(std::string_view a, std::string_view b)
{
    return compareText(a, b) == 0;
}

std::uint64_t hashText(std::string_view text)
{
    std::uint64_t hash = 0xCBF29CE484222325u;
    const auto add = [&](std::uint64_t unit) { hash = (hash ^ unit) * 0x100000001B3u; };
    for (std::size_t i = 0; i < text.size();) {
        const std::uint8_t c = byteAt(text, i);
        if (c < kFirstNonAscii) {
            add(kSmall[c]);
            ++i;
        } else {
            add(foldedCharacter(takeCharacter(text, i)));
        }
    }
    return hash ^ hash >> 29;
}

}  // namespace velnor::sql
