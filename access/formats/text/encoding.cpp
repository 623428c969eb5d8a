#include "access/formats/text/encoding.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/storage/utf8.h"
#include "platform/paths.h"

namespace velnor::text {
namespace {

constexpr int kUtf8 = 65001, kAnsi = 1252, kOem = 437;

Encoding wideEncoding(Units units, unsigned markBytes)
{
    return {units, nullptr, markBytes};
}

/// Plain letters in UTF-16 have a zero in each second byte.
bool zerosAtEvery(std::span<const std::uint8_t> head, std::size_t first)
{
    if (head.size() < 4 || head[first] != 0 || head[1 - first] == 0)
        return false;
    std::size_t zeros = 0, all = 0;
    for (std::size_t i = first; i < head.size(); i += 2, ++all)
        zeros += head[i] == 0;
    return zeros * 2 > all;
}

void swapBytes(std::string& bytes)
{
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        std::swap(bytes[i], bytes[i + 1]);
}

}  // namespace

const CodePage& utf8Page()
{
    return *CodePage::find(kUtf8);
}

const CodePage& ansiPage()
{
    return *CodePage::find(kAnsi);
}

Encoding encodingOfHead(std::span<const std::uint8_t> head)
{
    const auto starts = [head](std::initializer_list<std::uint8_t> mark) {
        return head.size() >= mark.size() && std::equal(mark.begin(), mark.end(), head.begin());
    };
    if (starts({0xEF, 0xBB, 0xBF}))
        return {Units::Bytes, &utf8Page(), 3};
    if (starts({0xFF, 0xFE}))
        return wideEncoding(Units::Utf16Little, 2);
    if (starts({0xFE, 0xFF}))
        return wideEncoding(Units::Utf16Big, 2);
    if (zerosAtEvery(head, 1))
        return wideEncoding(Units::Utf16Little, 0);
    if (zerosAtEvery(head, 0))
        return wideEncoding(Units::Utf16Big, 0);
    return {};
}

Encoding encodingNamed(std::string_view word)
{
    if (paths::sameName(word, "Unicode") || word == "1200")
        return wideEncoding(Units::Utf16Little, 0);
    if (word == "1201")
        return wideEncoding(Units::Utf16Big, 0);
    const CodePage* page = paths::sameName(word, "ANSI")  ? CodePage::find(kAnsi)
                           : paths::sameName(word, "OEM") ? CodePage::find(kOem)
                                                          : CodePage::find(word);
    if (!page)
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "There is no code page \"" + std::string(word) + "\".");
    return {Units::Bytes, page, 0};
}

bool isUtf8(std::string_view bytes)
{
    for (std::size_t at = 0; at < bytes.size();) {
        at += utf8::asciiLength(bytes.data() + at, bytes.size() - at);
        if (at < bytes.size() && utf8::next(bytes, at) == utf8::kInvalid)
            return false;
    }
    return true;
}

void appendUtf8(Units units, std::span<const std::uint8_t> bytes, std::string& out)
{
    std::string scratch;
    if (units == Units::Utf16Little) {
        out += utf16leToUtf8(bytes, scratch);
        return;
    }
    std::string swapped(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    swapBytes(swapped);
    const std::span little(reinterpret_cast<const std::uint8_t*>(swapped.data()), swapped.size());
    out += utf16leToUtf8(little, scratch);
}

void appendEncoded(const Encoding& encoding, std::string_view utf8, std::string& out)
{
    if (encoding.wide()) {
        std::string units;
        utf8ToUtf16le(utf8, units);
        if (encoding.units == Units::Utf16Big)
            swapBytes(units);
        out += units;
        return;
    }
    const CodePage& page = encoding.page ? *encoding.page : utf8Page();
    if (page.number() == kUtf8) {
        out += utf8;
        return;
    }
    if (!page.encode(utf8, out))
        throw EngineError(EngineErrorNumber::TypeConversion,
                          "A character of the text is not in code page " +
                              std::to_string(page.number()) + " of the file.");
}

std::string encodingWords(const Encoding& encoding)
{
    if (encoding.wide())
        return encoding.units == Units::Utf16Big ? "UTF-16, high byte first" : "UTF-16";
    const CodePage& page = encoding.page ? *encoding.page : utf8Page();
    return page.number() == kUtf8 ? "UTF-8" : "code page " + std::to_string(page.number());
}

}  // namespace velnor::text
