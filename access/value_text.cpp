#include "access/value_text.h"

#include <cstring>

namespace velnor {
namespace {

bool continues(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

void appendHex(std::string& out, std::span<const std::uint8_t> bytes)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    const std::size_t start = out.size();
    out.resize(start + 2 * bytes.size());
    char* p = out.data() + start;
    for (const std::uint8_t b : bytes) {
        *p++ = kDigits[b >> 4];
        *p++ = kDigits[b & 15];
    }
}

void appendText(std::string& out, ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Null:
        return;
    case ValueKind::Boolean:
        out += v.asBoolean() ? "True" : "False";
        return;
    case ValueKind::Integer:
        return appendInteger(out, v.asInteger());
    case ValueKind::Currency:
        return appendCurrency(out, v.asCurrency());
    case ValueKind::Real:
        return appendReal(out, v.asReal());
    case ValueKind::Date:
        return appendDateText(out, v.asDate());
    case ValueKind::Decimal:
        return appendDecimal(out, v);
    case ValueKind::Text:
        out += v.asText();
        return;
    case ValueKind::Bytes:
        return appendHex(out, v.asBytes());
    }
}

bool isAscii(std::string_view text)
{
    const char* p = text.data();
    std::size_t left = text.size();
    for (; left >= 8; p += 8, left -= 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, p, 8);
        if ((word & 0x8080808080808080u) != 0)
            return false;
    }
    for (; left > 0; ++p, --left)
        if (static_cast<unsigned char>(*p) > 0x7F)
            return false;
    return true;
}

std::size_t textLength(std::string_view utf8)
{
    std::size_t length = 0;
    for (const char c : utf8)
        length += static_cast<std::size_t>(!continues(c)) +
                  static_cast<std::size_t>(static_cast<unsigned char>(c) >= 0xF0);
    return length;
}

std::string_view textPrefix(std::string_view utf8, std::size_t characters)
{
    if (utf8.size() <= characters)  // no character is shorter than a byte
        return utf8;
    std::size_t at = 0;
    while (at < utf8.size()) {
        const std::size_t width = static_cast<unsigned char>(utf8[at]) >= 0xF0 ? 2 : 1;
        if (width > characters)
            break;
        characters -= width;
        ++at;
        while (at < utf8.size() && continues(utf8[at]))
            ++at;
    }
    return utf8.substr(0, at);
}

}  // namespace velnor
