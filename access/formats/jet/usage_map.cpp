#include "access/formats/jet/usage_map.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "access/formats/jet/data_page.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

constexpr std::size_t kInlineHead = 5;  // type, start page
constexpr std::size_t kMapPageHead = 4;
constexpr std::uint8_t kInline = 0, kReference = 1;

[[noreturn]] void damaged()
{
    throw EngineError(EngineErrorNumber::Corrupt, "A page map is damaged; repair the database.");
}

/// The first set bit at or behind `from`; the number of bits when there is none.
std::uint32_t firstSet(std::span<const std::uint8_t> bitmap, std::uint32_t from)
{
    const auto bits = static_cast<std::uint32_t>(bitmap.size() * 8);
    std::uint32_t at = from;
    while (at < bits) {
        const std::size_t byte = at / 8;
        if (at % 8 == 0 && byte + 8 <= bitmap.size()) {
            const auto word = loadLE<std::uint64_t>(bitmap.data() + byte);
            if (word != 0)
                return at + static_cast<std::uint32_t>(std::countr_zero(word));
            at += 64;
            continue;
        }
        const unsigned rest = bitmap[byte] >> (at % 8);
        if (rest != 0)
            return at + static_cast<std::uint32_t>(std::countr_zero(rest));
        at = static_cast<std::uint32_t>(byte + 1) * 8;
    }
    return bits;
}

bool bitAt(std::span<const std::uint8_t> bitmap, std::uint32_t bit)
{
    return bit / 8 < bitmap.size() && (bitmap[bit / 8] >> (bit % 8) & 1);
}

void putBit(std::uint8_t* bitmap, std::uint32_t bit, bool on)
{
    const auto mask = static_cast<std::uint8_t>(1u << (bit % 8));
    if (on)
        bitmap[bit / 8] |= mask;
    else
        bitmap[bit / 8] &= static_cast<std::uint8_t>(~mask);
}

}  // namespace

std::size_t UsageMap::newBytes(const JetFormat& format)
{
    return kInlineHead + format.map.inlineBytes;
}

void UsageMap::lay(const JetFormat& format, std::uint8_t* record)
{
    std::memset(record, 0, newBytes(format));
}

UsageMap::Record UsageMap::open()
{
    Record record;
    record.page = space_.page(record_.page);
    const DataPage page(space_.format(), record.page.data());
    const auto bytes = page.isData() ? page.row(record_.slot) : std::nullopt;
    if (!bytes || bytes->size() < kInlineHead)
        damaged();
    record.bytes = *bytes;
    record.reference = record.bytes[0] == kReference;
    if (record.bytes[0] == kInline) {
        record.start = loadLE<std::uint32_t>(record.bytes.data() + 1);
        record.bitmap = record.bytes.subspan(kInlineHead);
        if (record.start > 0xFFFFFF)
            damaged();
    } else if (!record.reference) {
        damaged();
    }
    return record;
}

std::uint8_t* UsageMap::edit(Record& record)
{
    const auto offset = record.bytes.data() - record.page.data();
    std::uint8_t* page = record.page.edit();
    record.bytes = {page + offset, record.bytes.size()};
    if (!record.reference)
        record.bitmap = record.bytes.subspan(kInlineHead);
    return page + offset;
}

PageNumber UsageMap::mapPage(const Record& record, std::uint32_t index)
{
    const std::size_t at = 1 + 4 * std::size_t{index};
    if (at + 4 > record.bytes.size())
        return 0;
    return loadLE<std::uint32_t>(record.bytes.data() + at);
}

namespace {

/// The bits of a map page, held.
struct MapPageBits {
    PageRef page;
    std::span<const std::uint8_t> bits;
};

MapPageBits openMapPage(PageSpace& space, PageNumber number)
{
    MapPageBits found{space.page(number), {}};
    if (found.page.data()[0] != page_type::kMap)
        damaged();
    found.bits = {found.page.data() + kMapPageHead, space.format().pageSize - kMapPageHead};
    return found;
}

}  // namespace

bool UsageMap::contains(std::uint32_t page)
{
    const Record record = open();
    if (!record.reference) {
        if (page < record.start)
            return false;
        if ((page - record.start) / 8 >= record.bitmap.size())
            return free_;
        return bitAt(record.bitmap, page - record.start);
    }
    const std::uint32_t bits = space_.format().map.pageBits;
    const PageNumber number = mapPage(record, page / bits);
    if (number == 0)
        return free_;
    return bitAt(openMapPage(space_, number).bits, page % bits);
}

std::uint32_t UsageMap::next(std::uint32_t from)
{
    const Record record = open();
    if (!record.reference) {
        const std::uint32_t first = from > record.start ? from - record.start : 0;
        const auto bits = static_cast<std::uint32_t>(record.bitmap.size() * 8);
        const std::uint32_t found = first < bits ? firstSet(record.bitmap, first) : bits;
        return found < bits ? record.start + found : 0;
    }
    const std::uint32_t bits = space_.format().map.pageBits;
    const auto references = static_cast<std::uint32_t>((record.bytes.size() - 1) / 4);
    for (std::uint32_t i = from / bits; i < references; ++i) {
        const PageNumber number = mapPage(record, i);
        if (number == 0)
            continue;
        const std::uint32_t begin = i == from / bits ? from % bits : 0;
        const std::uint32_t found = firstSet(openMapPage(space_, number).bits, begin);
        if (found < bits)
            return i * bits + found;
    }
    return 0;
}

std::uint32_t UsageMap::reach()
{
    const Record record = open();
    if (!record.reference)
        return record.start + static_cast<std::uint32_t>(record.bitmap.size() * 8);
    const std::uint32_t bits = space_.format().map.pageBits;
    const auto references = static_cast<std::uint32_t>((record.bytes.size() - 1) / 4);
    std::uint32_t reached = 0;
    for (std::uint32_t i = 0; i < references; ++i)
        if (mapPage(record, i) != 0)
            reached = (i + 1) * bits;
    return reached;
}

std::vector<PageNumber> UsageMap::mapPages()
{
    std::vector<PageNumber> pages;
    const Record record = open();
    if (record.reference)
        for (std::uint32_t i = 0; 1 + 4 * (std::size_t{i} + 1) <= record.bytes.size(); ++i)
            if (const PageNumber number = mapPage(record, i))
                pages.push_back(number);
    return pages;
}

void UsageMap::set(std::uint32_t page, bool on)
{
    Record record = open();
    if (record.reference)
        return setReference(record, page, on);
    const bool before = page < record.start;
    const bool reached = !before && (page - record.start) / 8 < record.bitmap.size();
    if (!reached) {
        if (on == (free_ && !before))
            return;  // outside the bitmap it is so already
        if (!makeRoom(record, page)) {
            convert(record);
            return setReference(record, page, on);
        }
    }
    if (bitAt(record.bitmap, page - record.start) == on)
        return;
    std::uint8_t* bytes = edit(record);
    putBit(bytes + kInlineHead, page - record.start, on);
}

/// Brings a page into the reach of an inline bitmap: moves an empty one, lengthens the record.
bool UsageMap::makeRoom(Record& record, std::uint32_t page)
{
    const JetFormat& f = space_.format();
    const auto bits = static_cast<std::uint32_t>(record.bitmap.size() * 8);
    if (!free_ && firstSet(record.bitmap, 0) == bits) {
        storeLE(edit(record) + 1, page & ~7u);
        record.start = page & ~7u;
        return true;
    }
    if (page < record.start)
        return false;
    const std::size_t needed = ((page - record.start) / 32 + 1) * 4;
    // A map that grows without end would crowd out the other records of its page.
    if (needed > 2 * static_cast<std::size_t>(f.map.inlineBytes))
        return false;
    const std::size_t old = record.bytes.size();
    DataPageEditor editor(f, record.page.edit());
    if (!editor.fitsInPlace(record_.slot, kInlineHead + needed))
        return false;
    std::vector<std::uint8_t> kept(record.bytes.begin(), record.bytes.end());
    std::uint8_t* bytes = editor.resize(record_.slot, kInlineHead + needed);
    std::copy(kept.begin(), kept.end(), bytes);
    std::fill(bytes + old, bytes + kInlineHead + needed,
              static_cast<std::uint8_t>(free_ ? 255 : 0));
    record.bytes = {bytes, kInlineHead + needed};
    record.bitmap = record.bytes.subspan(kInlineHead);
    return true;
}

PageNumber UsageMap::layMapPage()
{
    const PageNumber number = space_.allocate();
    PageRef page = space_.page(number);
    std::uint8_t* bytes = page.edit();
    std::memset(bytes, 0, kMapPageHead);
    bytes[0] = page_type::kMap;
    bytes[1] = 1;
    std::memset(bytes + kMapPageHead, free_ ? 255 : 0, space_.format().pageSize - kMapPageHead);
    return number;
}

/// Rewrites an inline record as a reference map; the bits move to map pages. What lay before its
/// start was not in it, and is not now.
void UsageMap::convert(Record& record)
{
    const JetFormat& f = space_.format();
    const std::vector<std::uint8_t> bitmap(record.bitmap.begin(), record.bitmap.end());
    const std::uint32_t start = record.start;
    DataPageEditor editor(f, record.page.edit());
    const std::size_t length = newBytes(f);
    if (!editor.fitsInPlace(record_.slot, length))
        damaged();
    std::uint8_t* bytes = editor.resize(record_.slot, length);
    std::memset(bytes, 0, length);
    bytes[0] = kReference;
    record.bytes = {bytes, length};
    record.bitmap = {};
    record.reference = true;
    for (std::uint32_t bit = 0; bit < bitmap.size() * 8; ++bit)
        if (bitAt(bitmap, bit) != free_)
            setReference(record, start + bit, !free_);
    for (std::uint32_t page = 0; free_ && page < start; ++page)
        setReference(record, page, false);
}

void UsageMap::setReference(Record& record, std::uint32_t page, bool on)
{
    const JetFormat& f = space_.format();
    const std::uint32_t index = page / f.map.pageBits;
    PageNumber number = mapPage(record, index);
    if (number == 0) {
        if (on == free_)
            return;
        const std::size_t at = 1 + 4 * std::size_t{index};
        if (at + 4 > record.bytes.size())
            throw EngineError(EngineErrorNumber::DatabaseFull,
                              "The database has reached the size that its format allows.");
        number = layMapPage();
        storeLE(edit(record) + at, number);
        if (free_)  // the new map page must not hand itself out
            setReference(record, number, false);
    }
    const MapPageBits bits = openMapPage(space_, number);
    if (bitAt(bits.bits, page % f.map.pageBits) == on)
        return;
    PageRef target = space_.page(number);
    putBit(target.edit() + kMapPageHead, page % f.map.pageBits, on);
}

}  // namespace velnor::jet
