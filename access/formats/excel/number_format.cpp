#include "access/formats/excel/number_format.h"

#include <algorithm>
#include <string>

namespace velnor::excel {
namespace {

using sheet::CellKind;

/// Bytes of the UTF-8 character at the start of `text`.
std::size_t characterSize(std::string_view text)
{
    std::size_t n = 1;
    while (n < text.size() && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80)
        ++n;
    return n;
}

bool isMoneySign(std::string_view character)
{
    for (const std::string_view sign : {"$", "\xC2\xA3", "\xC2\xA5", "\xE2\x82\xAC", "\xE2\x82\xA9",
                                        "\xE2\x82\xBD"})  // dollar pound yen euro won rouble
        if (character == sign)
            return true;
    return false;
}

bool holdsMoneySign(std::string_view text)
{
    for (; !text.empty(); text.remove_prefix(characterSize(text)))
        if (isMoneySign(text.substr(0, characterSize(text))))
            return true;
    return false;
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// "[h]", "[mm]", "[ss]": hours, minutes or seconds beyond the day.
bool isElapsedTime(std::string_view body)
{
    if (body.empty())
        return false;
    const char first = lower(body[0]);
    return (first == 'h' || first == 'm' || first == 's') &&
           std::all_of(body.begin(), body.end(), [&](char c) { return lower(c) == first; });
}

/// "[$EUR-407]" has a sign, "[$-409]" only a language.
bool namesMoney(std::string_view body)
{
    if (body.empty() || body[0] != '$')
        return false;
    const std::string_view sign = body.substr(1, body.substr(1).find('-'));
    return sign.find_first_not_of(' ') != sign.npos;
}

/// A format without its literals.
struct Bare {
    std::string first;  ///< of the first section, in small letters
    bool money = false;
};

Bare bareFormat(std::string_view text)
{
    Bare bare;
    bool inFirst = true;
    while (!text.empty()) {
        const std::size_t size = characterSize(text);
        const char c = text[0];
        std::size_t used = size;
        if (c == '"') {
            const std::size_t end = std::min(text.find('"', 1), text.size());
            bare.money = bare.money || holdsMoneySign(text.substr(1, end - 1));
            used = std::min(end + 1, text.size());
        } else if (c == '\\' || c == '_' || c == '*') {
            const std::string_view next = text.substr(1);
            const std::size_t nextSize = next.empty() ? 0 : characterSize(next);
            bare.money = bare.money || (c == '\\' && isMoneySign(next.substr(0, nextSize)));
            used = 1 + nextSize;
        } else if (c == '[') {
            const std::size_t end = std::min(text.find(']'), text.size());
            const std::string_view body = text.substr(1, end - 1);
            if (inFirst && isElapsedTime(body))
                for (const char letter : body)
                    bare.first += lower(letter);
            bare.money = bare.money || namesMoney(body);
            used = std::min(end + 1, text.size());
        } else if (c == ';') {
            inFirst = false;
        } else {
            bare.money = bare.money || isMoneySign(text.substr(0, size));
            if (inFirst)
                bare.first += size == 1 ? lower(c) : '~';
        }
        text.remove_prefix(used);
    }
    return bare;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to)
{
    for (std::size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

/// Letters of dates, and no digit places in front of them or behind them as in a number.
bool isDate(const std::string& bare)
{
    if (bare.find_first_of("ymdhs") == bare.npos)
        return false;
    const std::size_t digit = bare.find_first_of("0#?");
    if (digit != bare.npos && bare.find_first_of("ymd", digit) != bare.npos)
        return false;
    const std::size_t letter = bare.find_first_of("ymd");
    return letter == bare.npos || bare.find_first_of("#?", letter) == bare.npos;
}

}  // namespace

FormatClass classOfFormat(std::string_view text)
{
    Bare bare = bareFormat(text);
    static constexpr std::string_view kPlain[][2] = {{"general", ""}, {"am/pm", "h"}, {"a/p", "h"},
                                                     {".00", ""},     {".0", ""},     {"e+", ""},
                                                     {"e-", ""}};
    for (const auto& [from, to] : kPlain)
        replaceAll(bare.first, from, to);
    if (isDate(bare.first))
        return {CellKind::Date, bare.first.find_first_of("hs") != bare.first.npos};
    return {bare.money ? CellKind::Currency : CellKind::Number, false};
}

FormatClass classOfBuiltInFormat(int index)
{
    const auto within = [&](int first, int last) { return index >= first && index <= last; };
    if (within(5, 8) || index == 42 || index == 44)
        return {CellKind::Currency, false};
    if (within(18, 22) || within(45, 47))
        return {CellKind::Date, true};
    // 27 on and 50 on are East Asian, 71 on Thai dates
    if (within(14, 17) || within(27, 36) || within(50, 58) || within(71, 81))
        return {CellKind::Date, false};
    return {};
}

}  // namespace velnor::excel
