#include "platform/letter_case.h"

#include <array>
#include <span>

namespace velnor {
namespace {

// Runs of letters and how their capitals are found. Sorted by the first letter.
enum class Rule {
    Shift,     // capital = letter + shift
    EvenPair,  // even is the capital, the odd one behind it the small letter
    OddPair,   // odd is the capital, the even one behind it the small letter
};

struct Run {
    char32_t first, last;
    Rule rule;
    int shift = 0;
};

constexpr std::array kRuns{
    Run{0xB5, 0xB5, Rule::Shift, 0x39C - 0xB5},
    Run{0xE0, 0xF6, Rule::Shift, -32},
    Run{0xF8, 0xFE, Rule::Shift, -32},
    Run{0xFF, 0xFF, Rule::Shift, 0x178 - 0xFF},
    Run{0x100, 0x12F, Rule::EvenPair},
    Run{0x132, 0x137, Rule::EvenPair},
    Run{0x139, 0x148, Rule::OddPair},
    Run{0x14A, 0x177, Rule::EvenPair},
    Run{0x179, 0x17E, Rule::OddPair},
    Run{0x180, 0x180, Rule::Shift, 0x243 - 0x180},
    Run{0x182, 0x185, Rule::EvenPair},
    Run{0x188, 0x188, Rule::Shift, -1},
    Run{0x18C, 0x18C, Rule::Shift, -1},
    Run{0x192, 0x192, Rule::Shift, -1},
    Run{0x199, 0x199, Rule::Shift, -1},
    Run{0x1A0, 0x1A5, Rule::EvenPair},
    Run{0x1A8, 0x1A8, Rule::Shift, -1},
    Run{0x1AD, 0x1AD, Rule::Shift, -1},
    Run{0x1B0, 0x1B0, Rule::Shift, -1},
    Run{0x1B3, 0x1B6, Rule::OddPair},
    Run{0x1B9, 0x1B9, Rule::Shift, -1},
    Run{0x1BD, 0x1BD, Rule::Shift, -1},
    Run{0x1C5, 0x1C5, Rule::Shift, -1},
    Run{0x1C6, 0x1C6, Rule::Shift, -2},
    Run{0x1C8, 0x1C8, Rule::Shift, -1},
    Run{0x1C9, 0x1C9, Rule::Shift, -2},
    Run{0x1CB, 0x1CB, Rule::Shift, -1},
    Run{0x1CC, 0x1CC, Rule::Shift, -2},
    Run{0x1CD, 0x1DC, Rule::OddPair},
    Run{0x1DD, 0x1DD, Rule::Shift, 0x18E - 0x1DD},
    Run{0x1DE, 0x1EF, Rule::EvenPair},
    Run{0x1F2, 0x1F2, Rule::Shift, -1},
    Run{0x1F3, 0x1F3, Rule::Shift, -2},
    Run{0x1F4, 0x1F5, Rule::EvenPair},
    Run{0x1F8, 0x21F, Rule::EvenPair},
    Run{0x222, 0x233, Rule::EvenPair},
    Run{0x253, 0x253, Rule::Shift, 0x181 - 0x253},
    Run{0x254, 0x254, Rule::Shift, 0x186 - 0x254},
    Run{0x256, 0x257, Rule::Shift, 0x189 - 0x256},
    Run{0x259, 0x259, Rule::Shift, 0x18F - 0x259},
    Run{0x25B, 0x25B, Rule::Shift, 0x190 - 0x25B},
    Run{0x3AC, 0x3AC, Rule::Shift, 0x386 - 0x3AC},
    Run{0x3AD, 0x3AF, Rule::Shift, -37},
    Run{0x3B1, 0x3C1, Rule::Shift, -32},
    Run{0x3C2, 0x3C2, Rule::Shift, -31},  // sigma at the end of a word
    Run{0x3C3, 0x3CB, Rule::Shift, -32},
    Run{0x3CC, 0x3CC, Rule::Shift, -64},
    Run{0x3CD, 0x3CE, Rule::Shift, -63},
    Run{0x3D8, 0x3EF, Rule::EvenPair},
    Run{0x430, 0x44F, Rule::Shift, -32},
    Run{0x450, 0x45F, Rule::Shift, -80},
    Run{0x460, 0x481, Rule::EvenPair},
    Run{0x48A, 0x4BF, Rule::EvenPair},
    Run{0x4C1, 0x4CE, Rule::OddPair},
    Run{0x4CF, 0x4CF, Rule::Shift, -15},
    Run{0x4D0, 0x52F, Rule::EvenPair},
    Run{0x561, 0x586, Rule::Shift, -48},
    Run{0x1E00, 0x1E95, Rule::EvenPair},
    Run{0x1EA0, 0x1EFF, Rule::EvenPair},
    Run{0x1F00, 0x1F07, Rule::Shift, 8},
    Run{0x1F10, 0x1F15, Rule::Shift, 8},
    Run{0x1F20, 0x1F27, Rule::Shift, 8},
    Run{0x1F30, 0x1F37, Rule::Shift, 8},
    Run{0x1F40, 0x1F45, Rule::Shift, 8},
    Run{0x1F60, 0x1F67, Rule::Shift, 8},
    Run{0xFF41, 0xFF5A, Rule::Shift, -32},
};

char32_t apply(const Run& run, char32_t letter)
{
    switch (run.rule) {
    case Rule::Shift:
        return static_cast<char32_t>(static_cast<int>(letter) + run.shift);
    case Rule::EvenPair:
        return letter & ~char32_t{1};
    case Rule::OddPair:
        return letter - (letter % 2 == 0 ? 1 : 0);
    }
    return letter;
}

constexpr bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

char32_t capitalOf(char32_t letter)
{
    if (letter < 0x80)
        return letter >= U'a' && letter <= U'z' ? letter - 32 : letter;
    std::size_t low = 0;
    std::size_t high = kRuns.size();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (letter > kRuns[middle].last)
            low = middle + 1;
        else if (letter < kRuns[middle].first)
            high = middle;
        else
            return apply(kRuns[middle], letter);
    }
    return letter;
}

char32_t nextCharacter(std::string_view text, std::size_t& at)
{
    const auto lead = static_cast<unsigned char>(text[at]);
    if (lead < 0x80) {
        ++at;
        return lead;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() - at < length)
        return kNoCharacter;
    char32_t character = lead & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(text[at + i]))
            return kNoCharacter;
        character = character << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3F);
    }
    constexpr std::array<char32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < kLeast[length] || character > 0x10FFFF || surrogate)
        return kNoCharacter;
    at += length;
    return character;
}

void appendCharacter(std::string& text, char32_t character)
{
    const auto put = [&](char32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80)
        return put(character);
    if (character < 0x800) {
        put(0xC0 | character >> 6);
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        put(0x80 | (character >> 6 & 0x3F));
    } else {
        put(0xF0 | character >> 18);
        put(0x80 | (character >> 12 & 0x3F));
        put(0x80 | (character >> 6 & 0x3F));
    }
    put(0x80 | (character & 0x3F));
}

bool isValidUtf8(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();)
        if (nextCharacter(text, at) == kNoCharacter)
            return false;
    return true;
}

}  // namespace velnor
