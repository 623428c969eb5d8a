#include "access/formats/jet/index_page.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kPlaceBytes = 4;  // of a record
constexpr std::size_t kChildBytes = 4;  // of a page, at the end of a node's entries

[[noreturn]] void damagedPage(std::uint32_t number)
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      "Index page " + std::to_string(number) + " is damaged.");
}

std::size_t at(int offset)
{
    return static_cast<std::size_t>(offset);
}

void setPrefix(const IndexPageLayout& layout, std::uint8_t* page, std::uint32_t prefix)
{
    if (layout.prefixBytes == 1)
        page[layout.prefix] = static_cast<std::uint8_t>(prefix);
    else
        storeLE(page + layout.prefix, static_cast<std::uint16_t>(prefix));
}

void setFree(const JetFormat& format, std::uint8_t* page, std::uint32_t used)
{
    const auto& layout = format.indexPage;
    storeLE(page + layout.freeBytes,
            static_cast<std::uint16_t>(static_cast<std::uint32_t>(layout.entryBytes) - used));
}

void setBit(std::uint8_t* mask, std::uint32_t bit)
{
    mask[bit / 8] = static_cast<std::uint8_t>(mask[bit / 8] | 1u << bit % 8);
}

void clearBit(std::uint8_t* mask, std::uint32_t bit)
{
    mask[bit / 8] = static_cast<std::uint8_t>(mask[bit / 8] & ~(1u << bit % 8));
}

}  // namespace

void IndexPageView::open(const JetFormat& format, const std::uint8_t* page, std::uint32_t number,
                         std::uint32_t owner)
{
    layout_ = &format.indexPage;
    page_ = page;
    if ((page[0] != page_type::kIndexLeaf && page[0] != page_type::kIndexNode) ||
        word(layout_->owner) != owner)
        throw EngineError(EngineErrorNumber::Corrupt,
                          "Page " + std::to_string(number) + " is no page of this index.");
    entries_ = page + layout_->entries;
    prefix_ = layout_->prefixBytes == 1 ? page[layout_->prefix]
                                        : loadLE<std::uint16_t>(page + layout_->prefix);
    readMask(number);
}

void IndexPageView::readMask(std::uint32_t number)
{
    const std::uint8_t* mask = page_ + layout_->mask;
    const std::size_t bytes = at(layout_->maskBytes);
    const auto area = static_cast<std::uint32_t>(layout_->entryBytes);
    const std::size_t least = kPlaceBytes + 1 + (leaf() ? 0 : kChildBytes);
    std::uint32_t start = 0;
    std::uint32_t shortest = area;  // of the stored entries but the first
    std::size_t n = 0;
    for (std::size_t byte = 0; byte < bytes; byte += 8) {
        std::uint64_t word64 = 0;
        std::memcpy(&word64, mask + byte, std::min<std::size_t>(8, bytes - byte));
        for (; word64 != 0; word64 &= word64 - 1) {
            const auto end = static_cast<std::uint32_t>(byte * 8) +
                             static_cast<std::uint32_t>(std::countr_zero(word64));
            ends_[n++] = static_cast<std::uint16_t>(end);
            shortest = std::min(shortest, n > 1 ? end - start : area);
            start = end;
        }
    }
    if (n > 0 && (start > area || ends_[0] < least || shortest + prefix_ < least))
        damagedPage(number);
    count_ = static_cast<int>(n);
    if (n > 1 && (prefix_ > ends_[0] || (!leaf() && prefix_ != 0)))
        damagedPage(number);
}

std::uint32_t IndexPageView::word(int offset) const
{
    return loadLE<std::uint32_t>(page_ + offset);
}

void IndexPageView::entry(int index, std::vector<std::uint8_t>& out) const
{
    const Bytes own = stored(index);
    out.clear();
    if (index > 0)
        out.insert(out.end(), entries_, entries_ + prefix_);
    out.insert(out.end(), own.begin(), own.end());
}

bool IndexPageView::equals(int index, Bytes entry) const
{
    const Bytes own = stored(index);
    const std::size_t lead = index > 0 ? prefix_ : 0;
    return entry.size() == lead + own.size() && std::memcmp(entry.data(), entries_, lead) == 0 &&
           std::memcmp(entry.data() + lead, own.data(), own.size()) == 0;
}

bool IndexPageView::hasKey(int index, Bytes key) const
{
    const Bytes own = stored(index);
    const std::size_t lead = index > 0 ? prefix_ : 0;
    if (lead + own.size() != key.size() + kPlaceBytes)
        return false;
    const std::size_t shared = std::min(lead, key.size());
    return std::memcmp(entries_, key.data(), shared) == 0 &&
           std::memcmp(own.data(), key.data() + shared, key.size() - shared) == 0;
}

std::uint32_t IndexPageView::child(int index) const
{
    if (index >= count_)
        return tail();
    const Bytes own = stored(index);
    return loadBE<std::uint32_t>(own.data() + own.size() - kChildBytes);
}

/// Compares an entry with a wanted one: the keys as bytes, the shorter one first, then the places.
/// The prefix may reach into the place.
int IndexPageView::compare(int index, Bytes wanted) const
{
    Bytes own = stored(index);
    if (!leaf())
        own = own.first(own.size() - kChildBytes);
    const std::size_t lead = index > 0 ? prefix_ : 0;
    const std::size_t key = lead + own.size() - kPlaceBytes;
    const std::size_t wantedKey = wanted.size() - kPlaceBytes;
    const std::size_t both = std::min(key, wantedKey);
    int order = std::memcmp(entries_, wanted.data(), std::min(lead, both));
    if (order == 0 && both > lead)
        order = std::memcmp(own.data(), wanted.data() + lead, both - lead);
    if (order != 0)
        return order;
    if (key != wantedKey)
        return key < wantedKey ? -1 : 1;
    if (own.size() >= kPlaceBytes)
        return std::memcmp(own.data() + own.size() - kPlaceBytes, wanted.data() + key, kPlaceBytes);
    const std::size_t split = kPlaceBytes - own.size();  // bytes of the place in the prefix
    order = std::memcmp(entries_ + lead - split, wanted.data() + key, split);
    return order != 0 ? order : std::memcmp(own.data(), wanted.data() + key + split, own.size());
}

int IndexPageView::lowerBound(Bytes wanted) const
{
    int low = 0;
    int high = count_;
    while (low < high) {
        const int middle = (low + high) / 2;
        if (compare(middle, wanted) < 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

void IndexPageContent::clear()
{
    bytes_.clear();
    ends_.clear();
    tail = 0;
}

void IndexPageContent::load(const IndexPageView& view)
{
    clear();
    for (int i = 0; i < view.count(); ++i) {
        if (i > 0) {
            const Bytes lead = view.stored(0).first(view.prefix());
            bytes_.insert(bytes_.end(), lead.begin(), lead.end());
        }
        const Bytes own = view.stored(i);
        bytes_.insert(bytes_.end(), own.begin(), own.end());
        ends_.push_back(static_cast<std::uint32_t>(bytes_.size()));
    }
    tail = view.tail();
}

void IndexPageContent::append(Bytes entry)
{
    bytes_.insert(bytes_.end(), entry.begin(), entry.end());
    ends_.push_back(static_cast<std::uint32_t>(bytes_.size()));
}

int IndexPageContent::lowerBound(int from, Bytes wanted) const
{
    int low = from;
    int high = count();
    while (low < high) {
        const int middle = (low + high) / 2;
        if (compareEntries(entry(middle), wanted) < 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

void IndexPageContent::insert(int index, Bytes entry)
{
    const std::uint32_t start = startOf(index);
    bytes_.insert(bytes_.begin() + start, entry.begin(), entry.end());
    ends_.insert(ends_.begin() + index, start);
    for (std::size_t i = at(index); i < ends_.size(); ++i)
        ends_[i] += static_cast<std::uint32_t>(entry.size());
}

void IndexPageContent::insertChild(int index, Bytes separator, std::uint32_t page)
{
    const std::uint32_t start = startOf(index);
    const auto size = static_cast<std::uint32_t>(separator.size() + kChildBytes);
    std::uint8_t child[kChildBytes];
    storeBE(child, page);
    bytes_.insert(bytes_.begin() + start, std::begin(child), std::end(child));
    bytes_.insert(bytes_.begin() + start, separator.begin(), separator.end());
    ends_.insert(ends_.begin() + index, start);
    for (std::size_t i = at(index); i < ends_.size(); ++i)
        ends_[i] += size;
}

void IndexPageContent::erase(int index)
{
    const std::uint32_t start = startOf(index);
    const std::uint32_t size = ends_[at(index)] - start;
    bytes_.erase(bytes_.begin() + start, bytes_.begin() + start + size);
    ends_.erase(ends_.begin() + index);
    for (std::size_t i = at(index); i < ends_.size(); ++i)
        ends_[i] -= size;
}

std::uint32_t IndexPageContent::child(int index) const
{
    if (index >= count())
        return tail;
    const Bytes own = entry(index);
    return loadBE<std::uint32_t>(own.data() + own.size() - kChildBytes);
}

void IndexPageContent::setChild(int index, std::uint32_t page)
{
    if (index >= count())
        tail = page;
    else
        storeBE(bytes_.data() + ends_[at(index)] - kChildBytes, page);
}

void IndexPageContent::moveTail(int from, IndexPageContent& right)
{
    right.clear();
    for (int i = from; i < count(); ++i)
        right.append(entry(i));
    right.tail = tail;
    tail = 0;
    bytes_.resize(startOf(from));
    ends_.resize(at(from));
}

std::size_t IndexPageContent::longest() const
{
    std::size_t most = 0;
    for (int i = 0; i < count(); ++i)
        most = std::max(most, entry(i).size());
    return most;
}

std::uint32_t sharedBytes(Bytes a, Bytes b)
{
    const std::size_t both = std::min(a.size(), b.size());
    std::size_t same = 0;
    while (same + 8 <= both) {
        const std::uint64_t differ =
            loadLE<std::uint64_t>(a.data() + same) ^ loadLE<std::uint64_t>(b.data() + same);
        if (differ != 0)
            return static_cast<std::uint32_t>(same) +
                   static_cast<std::uint32_t>(std::countr_zero(differ)) / 8;
        same += 8;
    }
    while (same < both && a[same] == b[same])
        ++same;
    return static_cast<std::uint32_t>(same);
}

int compareEntries(Bytes a, Bytes b)
{
    const Bytes aKey = a.first(a.size() - kPlaceBytes);
    const Bytes bKey = b.first(b.size() - kPlaceBytes);
    const int order = std::memcmp(aKey.data(), bKey.data(), std::min(aKey.size(), bKey.size()));
    if (order != 0)
        return order;
    if (aKey.size() != bKey.size())
        return aKey.size() < bKey.size() ? -1 : 1;
    return std::memcmp(a.data() + aKey.size(), b.data() + bKey.size(), kPlaceBytes);
}

std::uint32_t IndexPageContent::commonPrefix(const JetFormat& format, int from, int to) const
{
    if (to - from < 2)
        return 0;
    std::uint32_t shared = format.indexPage.prefixBytes == 1 ? 0xFF : 0xFFFF;
    // An empty key lets the place of its record follow at once: the last entry alone does not tell.
    for (int i = to - 1; i > from && shared > 0; --i)
        shared = std::min(shared, sharedBytes(entry(from), entry(i)));
    return shared;
}

std::size_t IndexPageContent::packedSize(const JetFormat& format, int from, int to) const
{
    const std::size_t plain = startOf(to) - startOf(from);
    return to - from < 2
               ? plain
               : plain - commonPrefix(format, from, to) * static_cast<std::size_t>(to - from - 1);
}

bool IndexPageContent::fits(const JetFormat& format, bool leaf) const
{
    const std::size_t area = at(format.indexPage.entryBytes);
    return plainSize() <= area || (leaf && sizeWith(commonPrefix(format)) <= area);
}

int IndexPageContent::middle(const JetFormat& format) const
{
    const std::uint32_t prefix = commonPrefix(format);
    const std::size_t half = sizeWith(prefix) / 2;
    std::size_t size = 0;
    int index = 0;
    while (index < count() - 1 && size < half) {
        size += entry(index).size() - (index > 0 ? prefix : 0);
        ++index;
    }
    return std::max(index, 1);
}

void initIndexPage(const JetFormat& format, std::uint8_t* page, std::uint8_t type,
                   std::uint8_t level, std::uint32_t owner)
{
    std::memset(page, 0, format.pageSize);
    page[0] = type;
    page[1] = 1;
    storeLE(page + format.indexPage.owner, owner);
    page[format.indexPage.level] = level;
    setFree(format, page, 0);
}

void writeIndexPage(const JetFormat& format, std::uint8_t* page, const IndexPageContent& content)
{
    const auto& layout = format.indexPage;
    const std::size_t area = at(layout.entryBytes);
    const std::uint32_t prefix = content.plainSize() <= area ? 0 : content.commonPrefix(format);
    const std::size_t size = content.sizeWith(prefix);
    if (size > area || (prefix != 0 && page[0] != page_type::kIndexLeaf))
        throw EngineError(EngineErrorNumber::Unexpected, "An index page overflows.");
    std::uint8_t* mask = page + layout.mask;
    std::uint8_t* out = page + layout.entries;
    std::memset(mask, 0, at(layout.maskBytes));
    std::uint32_t used = 0;
    for (int i = 0; i < content.count(); ++i) {
        const Bytes own = content.entry(i).subspan(i > 0 ? prefix : 0);
        std::memcpy(out + used, own.data(), own.size());
        used += static_cast<std::uint32_t>(own.size());
        setBit(mask, used);
    }
    std::memset(out + used, 0, area - used);
    setPrefix(layout, page, prefix);
    setFree(format, page, used);
    storeLE(page + layout.tail, content.tail);
}

bool insertInPlace(const JetFormat& format, std::uint8_t* page, const IndexPageView& view,
                   int index, Bytes entry)
{
    const std::uint32_t lead = view.count() > 1 ? view.prefix() : 0;
    if (lead > 0 && (entry.size() <= lead || (index == 0 && view.ends_[0] == lead) ||
                     std::memcmp(entry.data(), view.entries_, lead) != 0))
        return false;
    const Bytes own = entry.subspan(lead);
    const auto size = static_cast<std::uint32_t>(own.size());
    if (size > view.room())
        return false;
    const auto& layout = format.indexPage;
    std::uint8_t* mask = page + layout.mask;
    std::uint8_t* out = page + layout.entries;
    // A new first entry takes over the prefix that stands in the old one.
    const std::uint32_t start = index == 0 ? lead : view.startOf(index);
    const std::uint32_t used = view.used();
    std::memmove(out + start + size, out + start, used - start);
    std::memcpy(out + start, own.data(), size);
    for (int i = view.count() - 1; i >= index; --i) {
        clearBit(mask, view.ends_[at(i)]);
        setBit(mask, view.ends_[at(i)] + size);
    }
    setBit(mask, start + size);
    if (lead == 0)
        setPrefix(layout, page, 0);
    setFree(format, page, used + size);
    return true;
}

void eraseInPlace(const JetFormat& format, std::uint8_t* page, const IndexPageView& view, int index)
{
    const auto& layout = format.indexPage;
    std::uint8_t* mask = page + layout.mask;
    std::uint8_t* out = page + layout.entries;
    // The prefix that stands in the first entry stays for the one after it.
    const std::uint32_t lead = index == 0 && view.count() > 1 ? view.prefix() : 0;
    const std::uint32_t start = lead + view.startOf(index);
    const std::uint32_t end = view.ends_[at(index)];
    const std::uint32_t used = view.used();
    const std::uint32_t size = end - start;
    std::memmove(out + start, out + end, used - end);
    clearBit(mask, end);
    for (int i = index + 1; i < view.count(); ++i) {
        clearBit(mask, view.ends_[at(i)]);
        setBit(mask, view.ends_[at(i)] - size);
    }
    if (view.count() <= 2)
        setPrefix(layout, page, 0);
    setFree(format, page, used - size);
}

void setPrevious(const JetFormat& format, std::uint8_t* page, std::uint32_t number)
{
    storeLE(page + format.indexPage.previous, number);
}

void setNext(const JetFormat& format, std::uint8_t* page, std::uint32_t number)
{
    storeLE(page + format.indexPage.next, number);
}

}  // namespace velnor::jet
