// UTF-16LE to UTF-8 and back.
#include "access/storage/byte_reader.h"
#include "access/storage/code_page.h"
#include "access/storage/utf8.h"

namespace velnor {

namespace {

bool isHigh(char32_t unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLow(char32_t unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

/// Four units that are ASCII, as four bytes; false when one is not.
bool putFourAscii(const std::uint8_t* units, char* out)
{
    std::uint64_t word = loadLE<std::uint64_t>(units);
    if ((word & 0xFF80FF80FF80FF80u) != 0)
        return false;
    word = (word | word >> 8) & 0x0000FFFF0000FFFFu;
    const auto packed = static_cast<std::uint32_t>(word | word >> 16);
    std::memcpy(out, &packed, 4);
    return true;
}

void appendUnit(char32_t unit, std::string& bytes)
{
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8 & 0xFF);
}

}  // namespace

std::string_view utf16leToUtf8(std::span<const std::uint8_t> bytes, std::string& scratch)
{
    const std::size_t count = bytes.size() / 2;
    if (scratch.size() < 3 * count)
        scratch.resize(3 * count);
    const auto unit = [&](std::size_t i) -> char32_t {
        return loadLE<std::uint16_t>(bytes.data() + 2 * i);
    };
    char* out = scratch.data();
    for (std::size_t at = 0; at < count;) {
        if (at + 4 <= count && putFourAscii(bytes.data() + 2 * at, out)) {
            at += 4;
            out += 4;
            continue;
        }
        char32_t c = unit(at++);
        if (isHigh(c) && at < count && isLow(unit(at)))
            c = 0x10000 + ((c & 0x3FF) << 10) + (unit(at++) & 0x3FF);
        else if (isHigh(c) || isLow(c))
            c = utf8::kReplacement;
        out = utf8::put(out, c);
    }
    return {scratch.data(), static_cast<std::size_t>(out - scratch.data())};
}

void utf8ToUtf16le(std::string_view text, std::string& bytes)
{
    bytes.reserve(bytes.size() + 2 * text.size());
    for (std::size_t at = 0; at < text.size();) {
        char32_t c = utf8::next(text, at);
        if (c == utf8::kInvalid)
            c = utf8::kReplacement;
        if (c >= 0x10000) {
            appendUnit(0xD800 + ((c - 0x10000) >> 10), bytes);
            c = 0xDC00 + (c & 0x3FF);
        }
        appendUnit(c, bytes);
    }
}

}  // namespace velnor
