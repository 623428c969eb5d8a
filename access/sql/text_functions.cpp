// Functions of texts. Positions count characters from 1.
#include <algorithm>
#include <cmath>

#include "access/sql/function_support.h"
#include "access/sql/functions.h"
#include "access/sql/like_pattern.h"
#include "access/sql/sql_error.h"
#include "access/sql/text_order.h"
#include "access/value_text.h"
#include "platform/letter_case.h"

namespace velnor::sql {

void failCall(Call call, EngineErrorNumber number, const std::string& words)
{
    const std::string message = errorMessage(number, words);
    sqlite3_result_error(call, message.data(), static_cast<int>(message.size()));
}

std::string_view textOf(sqlite3_value* v)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(v));
    return text ? std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(v))) : "";
}

void giveText(Call call, std::string_view text)
{
    if (text.size() > kLongestText)
        return failCall(call, EngineErrorNumber::ValueTooLong,
                        "A text in the statement is too long.");
    sqlite3_result_text64(call, text.empty() ? "" : text.data(), text.size(), SQLITE_TRANSIENT,
                          SQLITE_UTF8);
}

namespace {

[[noreturn]] void badArgument(const char* function)
{
    throw EngineError(EngineErrorNumber::InvalidArgument,
                      std::string("An argument of ") + function + "() is out of its range.");
}

/// A count of characters: whole, not below `least`.
std::size_t countOf(sqlite3_value* v, int least, const char* function)
{
    const double number = std::nearbyint(sqlite3_value_double(v));
    if (!(number >= least))
        badArgument(function);
    return static_cast<std::size_t>(std::min(number, 1e15));
}

/// Where character number `n` (from 0) begins, the end when there are fewer.
std::size_t placeOf(std::string_view text, std::size_t n)
{
    std::size_t at = 0;
    for (; n > 0 && at < text.size(); --n)
        takeCharacter(text, at);
    return at;
}

std::size_t charactersOf(std::string_view text)
{
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); ++count)
        takeCharacter(text, at);
    return count;
}

void left(Call call, int, Given given)
{
    const std::string_view text = textOf(given[0]);
    giveText(call, text.substr(0, placeOf(text, countOf(given[1], 0, "Left"))));
}

void right(Call call, int, Given given)
{
    const std::string_view text = textOf(given[0]);
    const std::size_t wanted = countOf(given[1], 0, "Right"), all = charactersOf(text);
    giveText(call, text.substr(wanted >= all ? 0 : placeOf(text, all - wanted)));
}

void mid(Call call, int count, Given given)
{
    std::string_view text = textOf(given[0]);
    text.remove_prefix(placeOf(text, countOf(given[1], 1, "Mid") - 1));
    giveText(call, count > 2 ? text.substr(0, placeOf(text, countOf(given[2], 0, "Mid"))) : text);
}

void length(Call call, int, Given given)
{
    sqlite3_result_int64(call, static_cast<std::int64_t>(charactersOf(textOf(given[0]))));
}

char32_t smallOf(char32_t capital)
{
    if (capital < 0x80)
        return foldedCharacter(capital);
    // The pair of a capital lies near it: 32 above (Latin, Greek, Cyrillic), next to it, 80 or 48
    // above.
    for (const char32_t away : {32u, 1u, 80u, 48u})
        if (capitalOf(capital + away) == capital)
            return capital + away;
    return capital;
}

template <char32_t (*turn)(char32_t)> void turned(Call call, int, Given given)
{
    const std::string_view text = textOf(given[0]);
    std::string made;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t begin = at;
        const char32_t character = nextCharacter(text, at);
        if (character == kNoCharacter)
            made += text[at++];
        else if (const char32_t other = turn(character); other == character)
            made.append(text.substr(begin, at - begin));
        else
            appendCharacter(made, other);
    }
    giveText(call, made);
}

template <bool front, bool back> void trimmed(Call call, int, Given given)
{
    std::string_view text = textOf(given[0]);
    while (front && !text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (back && !text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    giveText(call, text);
}

/// The first place from number `from` on where `wanted` stands; 0 when nowhere.
std::int64_t placeOfText(std::string_view text, std::string_view wanted, std::size_t from)
{
    std::size_t at = placeOf(text, from - 1);
    if (from > 1 && at >= text.size())
        return 0;
    for (std::size_t number = from;; ++number) {
        std::size_t t = at, w = 0;
        bool same = true;
        while (same && w < wanted.size())
            same = t < text.size() && foldedCharacter(takeCharacter(text, t)) ==
                                          foldedCharacter(takeCharacter(wanted, w));
        if (same)
            return static_cast<std::int64_t>(number);
        if (at >= text.size())
            return 0;
        takeCharacter(text, at);
    }
}

/// InStr([start,] text, wanted [, how])
void inStr(Call call, int count, Given given)
{
    const bool start = count > 2 && sqlite3_value_type(given[0]) != SQLITE_TEXT;
    const int text = start ? 1 : 0;
    if (text + 1 >= count)
        badArgument("InStr");
    const std::size_t from = start ? countOf(given[0], 1, "InStr") : 1;
    sqlite3_result_int64(call, placeOfText(textOf(given[text]), textOf(given[text + 1]), from));
}

void replace(Call call, int, Given given)
{
    const std::string_view text = textOf(given[0]), wanted = textOf(given[1]);
    const std::string_view with = textOf(given[2]);
    if (wanted.empty())
        return giveText(call, text);
    std::string made;
    std::size_t done = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view here = text.substr(at, wanted.size());
        if (equalText(here, wanted)) {
            made.append(text.substr(done, at - done)).append(with);
            if (made.size() > kLongestText)
                break;
            at += wanted.size();
            done = at;
        } else {
            takeCharacter(text, at);
        }
    }
    giveText(call, made.append(text.substr(std::min(done, text.size()))));
}

void space(Call call, int, Given given)
{
    giveText(call, std::string(std::min(countOf(given[0], 0, "Space"), kLongestText + 1), ' '));
}

void repeated(Call call, int, Given given)
{
    const std::size_t times = countOf(given[0], 0, "String");
    const std::string_view text = textOf(given[1]);
    const std::string_view one = text.substr(0, placeOf(text, 1));
    std::string made;
    for (std::size_t i = 0; i < times && made.size() <= kLongestText && !one.empty(); ++i)
        made += one;
    giveText(call, made);
}

void reversed(Call call, int, Given given)
{
    const std::string_view text = textOf(given[0]);
    std::string made;
    std::vector<std::size_t> places;
    for (std::size_t at = 0; at < text.size(); takeCharacter(text, at))
        places.push_back(at);
    std::size_t end = text.size();
    for (auto place = places.rbegin(); place != places.rend(); end = *place++)
        made.append(text.substr(*place, end - *place));
    giveText(call, made);
}

void compared(Call call, int count, Given given)
{
    const std::string_view a = textOf(given[0]), b = textOf(given[1]);
    const bool exact = count > 2 && sqlite3_value_double(given[2]) == 0;
    const int order = exact ? a.compare(b) : compareText(a, b);
    sqlite3_result_int(call, order < 0 ? -1 : order > 0);
}

void codeOf(Call call, int, Given given)
{
    const std::string_view text = textOf(given[0]);
    std::size_t at = 0;
    if (text.empty())
        badArgument("Asc");
    sqlite3_result_int64(call, static_cast<std::int64_t>(takeCharacter(text, at)));
}

void characterOf(Call call, int, Given given)
{
    const std::size_t code = countOf(given[0], 1, "Chr");
    if (code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
        badArgument("Chr");
    std::string made;
    appendCharacter(made, static_cast<char32_t>(code));
    giveText(call, made);
}

/// The number that a text begins with; blanks are skipped.
void leadingNumber(Call call, int, Given given)
{
    std::string text;
    for (const char c : textOf(given[0]))
        if (c != ' ' && c != '\t')
            text += c;
    std::size_t end = 0, digits = 0;
    bool point = false;
    for (; end < text.size() && end < 400; ++end) {
        const char c = text[end];
        if (c >= '0' && c <= '9')
            ++digits;
        else if (c == '.' && !point)
            point = true;
        else if (end != 0 || (c != '-' && c != '+'))
            break;
    }
    std::size_t used = end;
    if (digits && end + 1 < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        std::size_t e = end + 1 + (text[end + 1] == '-' || text[end + 1] == '+');
        const std::size_t first = e;
        while (e < text.size() && text[e] >= '0' && text[e] <= '9')
            ++e;
        used = e > first ? e : end;
    }
    const auto number = digits ? parseReal(text.substr(text[0] == '+', used)) : std::nullopt;
    sqlite3_result_double(call, number.value_or(0));
}

/// All but Null put one behind the other; Null when nothing else is there.
void joined(Call call, int count, Given given)
{
    std::string made;
    bool any = false;
    for (int i = 0; i < count; ++i) {
        any = any || !isNull(given[i]);
        made += textOf(given[i]);
    }
    if (any)
        giveText(call, made);
    else
        sqlite3_result_null(call);
}

void like(Call call, int, Given given)
{
    sqlite3_result_int(call, isLike(textOf(given[0]), textOf(given[1])));
}

void plainText(Call call, int, Given given)
{
    std::string made;
    appendText(made, plainOf(given[0]));
    giveText(call, made);
}

void truthText(Call call, int, Given given)
{
    giveText(call, sqlite3_value_int64(given[0]) != 0 ? "True" : "False");
}

/// Null is no text.
void asText(Call call, int, Given given)
{
    if (isNull(given[0]))
        return failCall(call, EngineErrorNumber::TypeMismatch, "CStr() was given Null.");
    giveText(call, textOf(given[0]));
}

/// A number with a blank in front in the place of its sign.
void numberText(Call call, int, Given given)
{
    std::string made = sqlite3_value_double(given[0]) < 0 ? "" : " ";
    appendText(made, plainOf(given[0]));
    giveText(call, made);
}

}  // namespace

void addTextFunctions(sqlite3* db)
{
    static constexpr Function kAll[] = {
        {"v_like", 2, unlessNull<like>},
        {"v_text", 1, unlessNull<plainText>},
        {"v_truthtext", 1, unlessNull<truthText>},
        {"v_join", -1, joined},
        {"v_cstr", 1, asText},
        {"v_str", 1, unlessNull<numberText>},
        {"v_left", 2, unlessNull<left>},
        {"v_right", 2, unlessNull<right>},
        {"v_mid", -1, unlessNull<mid>},
        {"v_len", 1, unlessNull<length>},
        {"v_ucase", 1, unlessNull<turned<capitalOf>>},
        {"v_lcase", 1, unlessNull<turned<smallOf>>},
        {"v_trim", 1, unlessNull<trimmed<true, true>>},
        {"v_ltrim", 1, unlessNull<trimmed<true, false>>},
        {"v_rtrim", 1, unlessNull<trimmed<false, true>>},
        {"v_instr", -1, unlessNull<inStr>},
        {"v_replace", 3, unlessNull<replace>},
        {"v_space", 1, unlessNull<space>},
        {"v_string", 2, unlessNull<repeated>},
        {"v_reverse", 1, unlessNull<reversed>},
        {"v_strcomp", -1, unlessNull<compared>},
        {"v_asc", 1, unlessNull<codeOf>},
        {"v_chr", 1, unlessNull<characterOf>},
        {"v_val", 1, unlessNull<leadingNumber>},
    };
    addAll(db, kAll);
}

}  // namespace velnor::sql
