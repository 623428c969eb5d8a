#include "access/formats/jet/long_value.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "access/formats/jet/data_page.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kPointer = 4;
// A page with less room than this is not tried for another value.
constexpr int kWorthwhileRoom = 256;

/// A row of a long-value page, with the page held.
struct Part {
    PageRef page;
    Bytes bytes;
};

std::optional<Part> openPart(PageSpace& space, RowPointer row)
{
    if (row.page == 0 || row.page >= space.pageCount())
        return std::nullopt;
    Part part{space.page(row.page), {}};
    const DataPage page(space.format(), part.page.data());
    if (!page.isData() || page.owner() != kLongValueOwner || row.slot >= page.rowCount() ||
        (page.entry(row.slot) & row_flag::kDeleted) == row_flag::kDeleted)
        return std::nullopt;
    const auto bytes = page.row(row.slot);
    if (!bytes)
        return std::nullopt;
    part.bytes = *bytes;
    return part;
}

/// Visits the rows of a value that is not inline, in order, until `visit` says false. False when a
/// part is missing or damaged. The data is without the pointer to the next part.
template <class Visit>
bool walkLongValue(PageSpace& space, const LongValueHeader& header, Visit visit)
{
    if (header.kind == LongValueKind::Single) {
        const auto part = openPart(space, header.first);
        return part && part->bytes.size() >= header.length &&
               visit(header.first, part->bytes.first(header.length));
    }
    std::uint32_t left = header.length;
    RowPointer at = header.first;
    while (left > 0) {
        const auto part = openPart(space, at);
        if (!part || part->bytes.size() <= kPointer)
            return false;
        const RowPointer here = at;
        at = RowPointer::fromWord(loadLE<std::uint32_t>(part->bytes.data()));
        Bytes data = part->bytes.subspan(kPointer);
        data = data.first(std::min<std::size_t>(data.size(), left));
        left -= static_cast<std::uint32_t>(data.size());
        if (!visit(here, data))
            return true;
    }
    return true;
}

}  // namespace

std::optional<LongValueHeader> LongValueHeader::read(Bytes stored)
{
    if (stored.size() < kBytes)
        return std::nullopt;
    LongValueHeader header;
    const auto word = loadLE<std::uint32_t>(stored.data());
    const std::uint32_t kind = word >> 30;
    if (kind > 2)
        return std::nullopt;
    header.kind = static_cast<LongValueKind>(kind);
    header.length = word & kMaxLongValue;
    header.first = RowPointer::fromWord(loadLE<std::uint32_t>(stored.data() + 4));
    header.stamp = loadLE<std::uint32_t>(stored.data() + 8);
    return header;
}

void LongValueHeader::write(std::uint8_t* to) const
{
    storeLE(to, length | static_cast<std::uint32_t>(kind) << 30);
    storeLE(to + 4, first.word());
    storeLE(to + 8, stamp);
}

std::optional<Bytes> readLongValue(PageSpace& space, Bytes stored, std::string& scratch)
{
    const auto header = LongValueHeader::read(stored);
    if (!header)
        return std::nullopt;
    if (header->kind == LongValueKind::Inline) {
        const Bytes data = stored.subspan(LongValueHeader::kBytes);
        if (data.size() < header->length)
            return std::nullopt;
        return data.first(header->length);
    }
    // No value is longer than its file: a damaged length must not ask for memory.
    if (header->length > std::uint64_t{space.pageCount()} * space.format().pageSize)
        return std::nullopt;
    scratch.clear();
    scratch.reserve(header->length);
    const bool whole = walkLongValue(space, *header, [&](RowPointer, Bytes data) {
        scratch.append(reinterpret_cast<const char*>(data.data()), data.size());
        return true;
    });
    if (!whole)
        return std::nullopt;
    return Bytes(reinterpret_cast<const std::uint8_t*>(scratch.data()), scratch.size());
}

void LongValueColumn::write(Bytes bytes, std::size_t plainBytes, bool mayInline,
                            std::string& stored)
{
    const LongValueLayout& limits = space_.format().longValue;
    if (bytes.size() > kMaxLongValue)
        throw EngineError(EngineErrorNumber::ValueTooLong, "The value is too long for its field.");
    LongValueHeader header;
    header.length = static_cast<std::uint32_t>(bytes.size());
    stored.assign(LongValueHeader::kBytes, '\0');
    if (bytes.empty() || (mayInline && plainBytes <= static_cast<std::size_t>(limits.maxInline))) {
        stored.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    } else if (std::max(bytes.size(), plainBytes) <= static_cast<std::size_t>(limits.maxSingle)) {
        header.kind = LongValueKind::Single;
        header.first = writeSingle(bytes);
    } else {
        header.kind = LongValueKind::Chain;
        // Any number but 0 does; the length keeps it the same for the same work.
        if (space_.format().data.longValueStamp >= 0)
            header.stamp = header.length | 0x01000000;
        header.first = writeChain(bytes, header.stamp);
    }
    header.write(reinterpret_cast<std::uint8_t*>(stored.data()));
}

PageNumber LongValueColumn::newPage()
{
    const PageNumber number = space_.allocate();
    PageRef page = space_.page(number);
    DataPageEditor::lay(space_.format(), page.edit(), kLongValueOwner);
    try {
        owned_.add(number);
    } catch (const EngineError&) {
        space_.release(number, page_type::kFreed);
        throw;
    }
    return number;
}

PageNumber LongValueColumn::pageWithRoom(std::size_t bytes)
{
    constexpr int kTries = 4;
    // After a failed commit the page may belong to something else.
    if (last_ != 0 && !owned_.contains(last_))
        last_ = 0;
    PageNumber candidate = last_ ? last_ : free_.next(1);
    for (int tries = 0; candidate != 0 && tries < kTries; ++tries) {
        if (candidate < space_.pageCount()) {
            PageRef page = space_.page(candidate);
            const DataPage view(space_.format(), page.data());
            if (view.isData() && view.owner() == kLongValueOwner && view.longValueStamp() == 0) {
                if (view.rowCount() < kMaxRowsPerPage &&
                    view.freeBytes() >= static_cast<int>(bytes) + 2)
                    return candidate;
                if (view.freeBytes() < kWorthwhileRoom || view.rowCount() >= kMaxRowsPerPage)
                    free_.remove(candidate);
            }
        }
        candidate = candidate == last_ && tries == 0 ? free_.next(1) : free_.next(candidate + 1);
    }
    const PageNumber number = newPage();
    free_.add(number);
    return number;
}

RowPointer LongValueColumn::writeSingle(Bytes bytes)
{
    last_ = pageWithRoom(bytes.size());
    PageRef page = space_.page(last_);
    DataPageEditor editor(space_.format(), page.edit());
    const auto slot = static_cast<std::uint8_t>(editor.rowCount());
    std::memcpy(editor.append(bytes.size()), bytes.data(), bytes.size());
    return {last_, slot};
}

RowPointer LongValueColumn::writeChain(Bytes bytes, std::uint32_t stamp)
{
    const auto chunk = static_cast<std::size_t>(space_.format().longValue.chunk);
    RowPointer first;
    PageNumber before = 0;
    std::size_t done = 0;
    try {
        while (done < bytes.size()) {
            const Bytes data = bytes.subspan(done, std::min(chunk, bytes.size() - done));
            const PageNumber number = writeChunk(data, done == 0 ? stamp : 0);
            if (before == 0)
                first = {number, 0};
            else
                linkChunk(before, number);
            before = number;
            done += data.size();
        }
    } catch (...) {
        // The file is full: what was written of the value goes again.
        LongValueHeader header{LongValueKind::Chain, static_cast<std::uint32_t>(done), first, 0};
        std::uint8_t stored[LongValueHeader::kBytes];
        header.write(stored);
        erase(stored);
        throw;
    }
    return first;
}

/// A chunk on a page of its own; it points to no other yet.
PageNumber LongValueColumn::writeChunk(Bytes data, std::uint32_t stamp)
{
    const PageNumber number = newPage();
    PageRef page = space_.page(number);
    DataPageEditor editor(space_.format(), page.edit());
    if (stamp != 0)
        editor.setLongValueStamp(stamp);
    std::uint8_t* row = editor.append(kPointer + data.size());
    storeLE(row, std::uint32_t{0});
    std::memcpy(row + kPointer, data.data(), data.size());
    return number;
}

void LongValueColumn::linkChunk(PageNumber from, PageNumber to)
{
    PageRef page = space_.page(from);
    std::uint8_t* bytes = page.edit();
    const DataPage view(space_.format(), bytes);
    storeLE(bytes + (view.entry(0) & row_flag::kOffset), RowPointer{to, 0}.word());
}

void LongValueColumn::erase(Bytes stored)
{
    const auto header = LongValueHeader::read(stored);
    if (!header || header->kind == LongValueKind::Inline || header->length == 0)
        return;
    if (header->length > std::uint64_t{space_.pageCount()} * space_.format().pageSize)
        return;
    std::vector<RowPointer> rows;
    walkLongValue(space_, *header, [&](RowPointer row, Bytes) {
        rows.push_back(row);
        return rows.size() <= space_.pageCount();  // a chain has one row a page
    });
    // A page that went with an earlier row is no longer owned, so a loop does no harm.
    for (const RowPointer row : rows)
        if (owned_.contains(row.page))
            eraseRow(row);
}

void LongValueColumn::eraseRow(RowPointer row)
{
    bool empty = false;
    {
        PageRef page = space_.page(row.page);
        DataPageEditor editor(space_.format(), page.edit());
        editor.erase(row.slot);
        empty = editor.empty();
    }
    if (empty) {
        if (last_ == row.page)
            last_ = 0;
        owned_.remove(row.page);
        free_.remove(row.page);
        space_.release(row.page, page_type::kFreed);
    } else {
        free_.add(row.page);
    }
}

void LongValueColumn::releaseAll()
{
    for (PageNumber number = owned_.next(1); number != 0; number = owned_.next(number + 1))
        if (number < space_.pageCount()) {
            const PageRef page = space_.page(number);
            const DataPage view(space_.format(), page.data());
            if (view.isData() && view.owner() == kLongValueOwner)
                space_.release(number, page_type::kFreed);
        }
}

}  // namespace velnor::jet
