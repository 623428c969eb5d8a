#include "access/storage/code_page.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "access/storage/system_converter.h"
#include "access/storage/utf8.h"

namespace velnor {

/// The characters of a page above ASCII and their bytes: a table with 128 of 256 places taken, each
/// character at the first free place from its home on.
struct CodePageReverse {
    std::array<char16_t, 256> character{};
    std::array<std::uint8_t, 256> byte{};

    static constexpr unsigned home(char32_t c) { return (c * 0x9E3779B1u >> 16) & 0xFF; }

    constexpr explicit CodePageReverse(const char16_t (&page)[128])
    {
        for (unsigned i = 0; i < 128; ++i) {
            unsigned at = home(page[i]);
            while (character[at] != 0)
                at = (at + 1) & 0xFF;
            character[at] = page[i];
            byte[at] = static_cast<std::uint8_t>(0x80 + i);
        }
    }
    /// 0 for a character that is not in the page.
    std::uint8_t find(char32_t c) const
    {
        for (unsigned at = home(c); character[at] != 0; at = (at + 1) & 0xFF)
            if (character[at] == c)
                return byte[at];
        return 0;
    }
};

namespace {

#include "access/storage/code_page_tables.inc"

#define VELNOR_REVERSE(number) constexpr CodePageReverse kReverse##number(kPage##number);
VELNOR_SINGLE_BYTE_PAGES(VELNOR_REVERSE)
#undef VELNOR_REVERSE

#define VELNOR_PAGE(number) CodePage(number, kPage##number, &kReverse##number, nullptr),
constexpr CodePage kPages[] = {
    VELNOR_SINGLE_BYTE_PAGES(
        VELNOR_PAGE)  // in the order of their numbers, but that is not relied on
    CodePage(932, nullptr, nullptr, "CP932"),
    CodePage(936, nullptr, nullptr, "GBK"),
    CodePage(949, nullptr, nullptr, "UHC"),
    CodePage(950, nullptr, nullptr, "CP950"),
    CodePage(54936, nullptr, nullptr, "GB18030"),
    CodePage(65001, nullptr, nullptr, nullptr),
};
#undef VELNOR_PAGE

struct PageName {
    std::string_view name;
    int number;
};
/// Without "-", "_" and blanks, in small letters.
constexpr PageName kNames[] = {
    {"ansi", 1252},      {"oem", 437},           {"ascii", 1252},      {"usascii", 1252},
    {"latin1", 28591},   {"iso88591", 28591},    {"latin2", 28592},    {"iso88592", 28592},
    {"iso88595", 28595}, {"iso88597", 28597},    {"latin5", 28599},    {"iso88599", 28599},
    {"koi8r", 20866},    {"koi8u", 21866},       {"macroman", 10000},  {"macintosh", 10000},
    {"macgreek", 10006}, {"maccyrillic", 10007}, {"maclatin2", 10029}, {"kamenicky", 895},
    {"mazovia", 620},    {"utf8", 65001},        {"sjis", 932},        {"shiftjis", 932},
    {"gbk", 936},        {"gb2312", 936},        {"gb18030", 54936},   {"uhc", 949},
    {"euckr", 949},      {"big5", 950},
};

/// Room for `count` bytes; scratch is never made shorter, so that it is filled with zeros only
/// once.
char* roomIn(std::string& scratch, std::size_t count)
{
    if (scratch.size() < count)
        scratch.resize(count);
    return scratch.data();
}

std::string_view decodeSingleByte(const char16_t* page, std::string_view bytes, std::size_t ascii,
                                  std::string& scratch)
{
    char* const start = roomIn(scratch, 3 * bytes.size());
    std::memcpy(start, bytes.data(), ascii);
    char* out = start + ascii;
    for (std::size_t at = ascii; at < bytes.size();) {
        const auto byte = static_cast<unsigned char>(bytes[at]);
        if (byte >= 0x80) {
            out = utf8::put(out, page[byte - 0x80]);
            ++at;
            continue;
        }
        const std::size_t run = utf8::asciiLength(bytes.data() + at, bytes.size() - at);
        std::memcpy(out, bytes.data() + at, run);
        out += run;
        at += run;
    }
    return {start, static_cast<std::size_t>(out - start)};
}

/// True for text without a broken character.
bool validUtf8(std::string_view text, std::size_t at)
{
    while (at < text.size()) {
        if (utf8::next(text, at) == utf8::kInvalid)
            return false;
        at += utf8::asciiLength(text.data() + at, text.size() - at);
    }
    return true;
}

char* putValid(char* out, std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        const char32_t c = utf8::next(text, at);
        out = utf8::put(out, c == utf8::kInvalid ? utf8::kReplacement : c);
    }
    return out;
}

std::string_view decodeUtf8(std::string_view bytes, std::size_t ascii, std::string& scratch)
{
    if (validUtf8(bytes, ascii))
        return bytes;
    char* const start = roomIn(scratch, 3 * bytes.size());
    return {start, static_cast<std::size_t>(putValid(start, bytes) - start)};
}

void appendUtf8(std::string_view text, std::string& bytes)
{
    if (validUtf8(text, 0)) {
        bytes.append(text);
        return;
    }
    const std::size_t before = bytes.size();
    bytes.resize(before + 3 * text.size());
    const char* end = putValid(bytes.data() + before, text);
    bytes.resize(static_cast<std::size_t>(end - bytes.data()));
}

}  // namespace

const CodePage* CodePage::find(int number)
{
    const auto* found = std::find_if(std::begin(kPages), std::end(kPages),
                                     [&](const CodePage& page) { return page.number() == number; });
    return found == std::end(kPages) ? nullptr : found;
}

const CodePage* CodePage::find(std::string_view name)
{
    std::string plain;
    for (const char c : name)
        if (c != '-' && c != '_' && c != ' ')
            plain += c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    for (const PageName& known : kNames)
        if (plain == known.name)
            return find(known.number);

    std::string_view digits = plain;
    for (const std::string_view prefix : {"windows", "codepage", "ibm", "dos", "oem", "cp", "win"})
        if (digits.starts_with(prefix)) {
            digits.remove_prefix(prefix.size());
            break;
        }
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size())
        return nullptr;
    return find(number);
}

std::string_view CodePage::decode(std::string_view bytes, std::string& scratch) const
{
    const std::size_t ascii = utf8::asciiLength(bytes.data(), bytes.size());
    if (ascii == bytes.size())
        return bytes;
    if (toUnicode_)
        return decodeSingleByte(toUnicode_, bytes, ascii, scratch);
    if (!systemName_)
        return decodeUtf8(bytes, ascii, scratch);
    systemDecode(systemName_, bytes, scratch);
    return scratch;
}

bool CodePage::encode(std::string_view text, std::string& bytes) const
{
    if (toUnicode_)
        return encodeSingleByte(text, bytes);
    if (systemName_)
        return systemEncode(systemName_, text, bytes);
    appendUtf8(text, bytes);
    return true;
}

bool CodePage::encodeSingleByte(std::string_view text, std::string& bytes) const
{
    bool complete = true;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t run = utf8::asciiLength(text.data() + at, text.size() - at);
        bytes.append(text.substr(at, run));
        at += run;
        if (at == text.size())
            break;
        const std::uint8_t byte = fromUnicode_->find(utf8::next(text, at));
        bytes += byte != 0 ? static_cast<char>(byte) : '?';
        complete &= byte != 0;
    }
    return complete;
}

}  // namespace velnor
