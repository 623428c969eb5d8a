#include "access/formats/excel/biff_text.h"

#include <algorithm>

#include "access/value_text.h"

namespace velnor::excel {
namespace {

constexpr std::uint32_t kWide = 1, kPhonetic = 4, kRuns = 8;

void latinToUtf8(Bytes latin, std::string& out)
{
    out.clear();
    for (const std::uint8_t c : latin) {
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else {
            out += static_cast<char>(0xC0 | c >> 6);
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
}

std::string_view asText(Bytes bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string_view decoded(Bytes characters, bool wide, std::string& scratch)
{
    if (wide)
        return utf16leToUtf8(characters, scratch);
    if (isAscii(asText(characters)))
        return asText(characters);
    latinToUtf8(characters, scratch);
    return scratch;
}

}  // namespace

const CodePage& codePageOfRecord(int number)
{
    static const CodePage& western = *CodePage::find(1252);
    switch (number) {
    case 0x8000:
        number = 10000;
        break;
    case 65001:
        break;
    default:
        // 367 is ASCII, 0x8001 is 1252, 1200 and 21010 are mistakes of writers
        if (number > 2000 && number < 10000)
            return western;
    }
    const CodePage* page = CodePage::find(number);
    return page ? *page : western;
}

bool UnicodeReader::nextPart()
{
    at_ = 0;
    return part_ < parts_.size() && ++part_ < parts_.size();
}

bool UnicodeReader::number(std::uint32_t& value, int bytes)
{
    value = 0;
    for (int i = 0; i < bytes; ++i) {
        while (left() == 0)
            if (!nextPart())
                return false;
        value |= static_cast<std::uint32_t>(parts_[part_][at_++]) << (8 * i);
    }
    return true;
}

bool UnicodeReader::skip(std::uint64_t bytes)
{
    while (bytes > left()) {
        bytes -= left();
        if (!nextPart())
            return false;
    }
    at_ += static_cast<std::size_t>(bytes);
    return true;
}

/// Within one part it is read where it lies; across an edge it is gathered as two bytes a unit.
bool UnicodeReader::characters(std::string_view& text, std::size_t count, bool wide)
{
    const std::size_t bytes = wide ? 2 * count : count;
    if (bytes <= left()) {
        text = decoded(parts_[part_].subspan(at_, bytes), wide, scratch_);
        at_ += bytes;
        return true;
    }
    units_.clear();
    while (count > 0) {
        if (left() == 0) {
            std::uint32_t flags = 0;
            if (!nextPart() || !number(flags, 1))
                return false;
            wide = flags & kWide;
            continue;
        }
        const std::size_t fits = std::min(count, left() / (wide ? 2 : 1));
        const Bytes piece = parts_[part_].subspan(at_, wide ? 2 * fits : fits);
        if (wide) {
            units_.insert(units_.end(), piece.begin(), piece.end());
        } else {
            for (const std::uint8_t c : piece) {
                units_.push_back(c);
                units_.push_back(0);
            }
        }
        at_ += piece.size();
        count -= fits;
        if (fits == 0)
            ++at_;  // half a unit in front of an edge
    }
    text = utf16leToUtf8(units_, scratch_);
    return true;
}

bool UnicodeReader::body(std::string_view& text, std::size_t count)
{
    cutOff_ = true;
    std::uint32_t flags = 0, runs = 0, phonetic = 0;
    if (!number(flags, 1) || ((flags & kRuns) && !number(runs, 2)) ||
        ((flags & kPhonetic) && !number(phonetic, 4)))
        return false;
    rich_ = runs > 0 || phonetic > 0;
    if (!characters(text, count, flags & kWide) || !skip(std::uint64_t{runs} * 4 + phonetic))
        return false;
    cutOff_ = false;
    return true;
}

bool UnicodeReader::next(std::string_view& text, int countBytes)
{
    cutOff_ = false;
    while (left() == 0)
        if (!nextPart())
            return false;
    std::uint32_t count = 0;
    cutOff_ = true;
    return number(count, countBytes) && body(text, count);
}

std::string textAt(Bytes data, std::size_t& at, int countBytes, const BiffForm& form,
                   const CodePage& page)
{
    const auto count8 = [&] { return at < data.size() ? data[at] : 0u; };
    const auto count16 = [&] {
        return at + 2 <= data.size() ? loadLE<std::uint16_t>(data.data() + at) : 0u;
    };
    const std::size_t count = countBytes == 1 ? count8() : count16();
    at = std::min(data.size(), at + static_cast<std::size_t>(countBytes));
    if (form.version < 8) {
        const Bytes bytes = data.subspan(at, std::min(count, data.size() - at));
        at += bytes.size();
        std::string scratch;
        return std::string(page.decode(asText(bytes), scratch));
    }
    if (at >= data.size())
        return {};
    const bool wide = data[at] & kWide;
    std::size_t start = at + 1 + (data[at] & kRuns ? 2 : 0) + (data[at] & kPhonetic ? 4 : 0);
    start = std::min(start, data.size());
    const Bytes units =
        data.subspan(start, std::min(wide ? 2 * count : count, data.size() - start));
    at = start + units.size();
    std::string scratch;
    return std::string(decoded(units, wide, scratch));
}

void unitsOf(std::string_view utf8, Units& units)
{
    units.bytes.clear();
    utf8ToUtf16le(utf8, units.bytes);
    units.narrow = true;
    for (std::size_t at = 1; at < units.bytes.size(); at += 2)
        units.narrow = units.narrow && units.bytes[at] == 0;
}

void Units::append(std::vector<std::uint8_t>& out, std::size_t first, std::size_t count) const
{
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    if (!narrow) {
        out.insert(out.end(), data + 2 * first, data + 2 * (first + count));
        return;
    }
    for (std::size_t i = first; i < first + count; ++i)
        out.push_back(data[2 * i]);
}

}  // namespace velnor::excel
