#include "access/formats/jet/text_compression.h"

#include <algorithm>
#include <cstring>

#include "access/formats/jet/jet_format.h"
#include "access/formats/jet/utf16_units.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

using Bytes = std::span<const std::uint8_t>;

bool isCompressed(Bytes stored)
{
    return stored.size() >= 2 && stored[0] == 0xFF && stored[1] == 0xFE;
}

/// Every byte is 01..7F: no toggle, no accent.
bool plainAscii(Bytes bytes)
{
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        const auto w = loadLE<std::uint64_t>(&bytes[i]);
        const std::uint64_t zero = (w - 0x0101010101010101u) & ~w;
        if ((w | zero) & 0x8080808080808080u)
            return false;
    }
    for (; i < bytes.size(); ++i)
        if (bytes[i] == 0 || bytes[i] >= 0x80)
            return false;
    return true;
}

/// Writes UTF-8 behind what is there; the room was made before.
class Utf8Writer {
public:
    explicit Utf8Writer(char* to) : to_(to) {}

    void unit(std::uint32_t u)
    {
        if (high_) {
            const std::uint32_t pair = 0x10000 + ((high_ - 0xD800) << 10) + (u - 0xDC00);
            const bool matches = u >= 0xDC00 && u < 0xE000;
            high_ = 0;
            if (matches)
                return put(pair);
            put(0xFFFD);
        }
        if (u >= 0xD800 && u < 0xDC00)
            high_ = u;
        else
            put(u >= 0xDC00 && u < 0xE000 ? 0xFFFD : u);
    }
    char* finish(bool halfCharacter)
    {
        if (high_)
            put(0xFFFD);
        high_ = 0;
        if (halfCharacter)
            put(0xFFFD);
        return to_;
    }

private:
    void byte(std::uint32_t b) { *to_++ = static_cast<char>(b); }
    void put(std::uint32_t c)
    {
        if (c < 0x80)
            return byte(c);
        if (c < 0x800) {
            byte(0xC0 | c >> 6);
        } else {
            if (c < 0x10000) {
                byte(0xE0 | c >> 12);
            } else {
                byte(0xF0 | c >> 18);
                byte(0x80 | (c >> 12 & 0x3F));
            }
            byte(0x80 | (c >> 6 & 0x3F));
        }
        byte(0x80 | (c & 0x3F));
    }

    char* to_;
    std::uint32_t high_ = 0;
};

std::string_view decodeStream(Bytes stream, std::string& scratch)
{
    scratch.resize(stream.size() * 2 + 3);  // a narrow byte gives two at most, a wide pair three
    Utf8Writer out(scratch.data());
    bool wide = false;
    bool half = false;
    for (std::size_t i = 0; i < stream.size();) {
        if (stream[i] == 0) {
            wide = !wide;
            ++i;
        } else if (!wide) {
            out.unit(stream[i++]);
        } else if (i + 1 < stream.size()) {
            out.unit(loadLE<std::uint16_t>(&stream[i]));
            i += 2;
        } else {
            half = true;
            break;
        }
    }
    return {scratch.data(), static_cast<std::size_t>(out.finish(half) - scratch.data())};
}

/// Packs ASCII units to bytes; returns how many there were before the first other one.
std::size_t packAscii(const std::uint8_t* from, std::size_t units, char* to)
{
    std::size_t i = 0;
    for (; i + 4 <= units; i += 4) {
        const auto w = loadLE<std::uint64_t>(from + 2 * i);
        if (w & 0xFF80FF80FF80FF80u)
            break;
        const std::uint64_t pairs = w | w >> 8;  // bytes 0-1 and 4-5 hold two characters each
        to[i] = static_cast<char>(pairs);
        to[i + 1] = static_cast<char>(pairs >> 8);
        to[i + 2] = static_cast<char>(pairs >> 32);
        to[i + 3] = static_cast<char>(pairs >> 40);
    }
    for (; i < units; ++i) {
        const auto u = loadLE<std::uint16_t>(from + 2 * i);
        if (u >= 0x80)
            break;
        to[i] = static_cast<char>(u);
    }
    return i;
}

std::string_view decodePlain(Bytes stored, std::string& scratch)
{
    const std::size_t units = stored.size() / 2;
    scratch.resize(units);
    const std::size_t ascii = packAscii(stored.data(), units, scratch.data());
    const bool half = stored.size() % 2 != 0;
    if (ascii == units && !half)
        return scratch;
    scratch.resize(ascii + (units - ascii) * 3 + 3);
    Utf8Writer out(scratch.data() + ascii);
    for (std::size_t i = ascii; i < units; ++i)
        out.unit(loadLE<std::uint16_t>(&stored[2 * i]));
    return {scratch.data(), static_cast<std::size_t>(out.finish(half) - scratch.data())};
}

char16_t unitAt(const std::string& bytes, std::size_t at)
{
    return static_cast<char16_t>(static_cast<std::uint8_t>(bytes[at]) |
                                 static_cast<std::uint8_t>(bytes[at + 1]) << 8);
}

/// Bytes of the compressed form with its mark; 0 when there is none.
std::size_t compressedSize(const std::string& plain)
{
    std::size_t size = 2;
    bool wide = false;
    for (std::size_t i = 0; i < plain.size(); i += 2) {
        const char16_t u = unitAt(plain, i);
        if ((u & 0xFF) == 0)
            return 0;  // would read as a toggle
        const bool needsWide = u > 0xFF;
        size += (needsWide != wide) + (needsWide ? 2u : 1u);
        wide = needsWide;
    }
    return size;
}

/// Puts the compressed form in place of the plain one, which is longer or as long.
void compressInPlace(std::string& bytes, std::size_t size)
{
    const std::size_t plain = bytes.size();
    bytes.append("\xFF\xFE", 2);
    bool wide = false;
    for (std::size_t i = 0; i < plain; i += 2) {
        const char16_t u = unitAt(bytes, i);
        if ((u > 0xFF) != wide) {
            bytes.push_back('\0');
            wide = !wide;
        }
        bytes.push_back(static_cast<char>(u & 0xFF));
        if (wide)
            bytes.push_back(static_cast<char>(u >> 8));
    }
    bytes.erase(0, plain);
    bytes.resize(size);
}

void encodePlain(std::string_view utf8, std::string& stored)
{
    stored.clear();
    forEachUnit(utf8, [&](char16_t u) {
        stored.push_back(static_cast<char>(u & 0xFF));
        stored.push_back(static_cast<char>(u >> 8));
        return true;
    });
}

bool encodeAscii(std::string_view utf8, std::string& stored)
{
    const Bytes bytes{reinterpret_cast<const std::uint8_t*>(utf8.data()), utf8.size()};
    if (utf8.size() <= 2 || !plainAscii(bytes))
        return false;
    stored.assign("\xFF\xFE", 2);
    stored.append(utf8);
    return true;
}

}  // namespace

std::string_view decodeText(Bytes stored, std::string& scratch)
{
    if (!isCompressed(stored))
        return decodePlain(stored, scratch);
    const Bytes stream = stored.subspan(2);
    if (plainAscii(stream))
        return {reinterpret_cast<const char*>(stream.data()), stream.size()};
    return decodeStream(stream, scratch);
}

void encodeText(std::string_view utf8, bool compress, std::string& stored)
{
    if (compress && encodeAscii(utf8, stored))
        return;
    encodePlain(utf8, stored);
    if (!compress || stored.size() <= 4)
        return;
    const std::size_t size = compressedSize(stored);
    if (size != 0 && size <= stored.size())
        compressInPlace(stored, size);
}

void encodeMemo(std::string_view utf8, bool compress, std::string& stored)
{
    encodePlain(utf8, stored);
    const auto plain = static_cast<int>(std::min<std::size_t>(stored.size(), 1u << 30));
    if (plain <= 4 || plain > kJet4.longValue.maxCompressed ||
        (!compress && plain > kJet4.longValue.maxInline))
        return;
    const std::size_t size = compressedSize(stored);
    if (size != 0 && size < stored.size())
        compressInPlace(stored, size);
}

std::size_t utf16Length(std::string_view utf8)
{
    std::size_t units = 0;
    forEachUnit(utf8, [&](char16_t) {
        ++units;
        return true;
    });
    return units;
}

}  // namespace velnor::jet
