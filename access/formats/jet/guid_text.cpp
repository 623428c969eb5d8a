// A GUID as it is written.
#include <array>

#include "access/formats/jet/row_codec.h"

namespace velnor::jet {
namespace {

/// Positions of a GUID's stored bytes in the order in which they are written.
constexpr int kGuidOrder[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

bool dashBefore(int byte)
{
    return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

}  // namespace

std::string_view guidText(std::span<const std::uint8_t, 16> stored, std::string& out)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    out.resize(38);
    char* p = out.data();
    *p++ = '{';
    for (int i = 0; i < 16; ++i) {
        if (dashBefore(i))
            *p++ = '-';
        const std::uint8_t byte = stored[kGuidOrder[i]];
        *p++ = kDigits[byte >> 4];
        *p++ = kDigits[byte & 15];
    }
    *p = '}';
    return out;
}

std::optional<std::array<std::uint8_t, 16>> guidBytes(std::string_view text)
{
    if (text.size() == 38 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, 36);
    if (text.size() != 36)
        return std::nullopt;
    std::array<std::uint8_t, 16> bytes{};
    std::size_t at = 0;
    for (int i = 0; i < 16; ++i) {
        if (dashBefore(i) && text[at++] != '-')
            return std::nullopt;
        const int high = hexDigit(text[at++]);
        const int low = hexDigit(text[at++]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes[kGuidOrder[i]] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return bytes;
}

}  // namespace velnor::jet
