#include "access/formats/jet/data_page.h"

#include <cstring>

namespace velnor::jet {
namespace {

[[noreturn]] void damaged()
{
    throw EngineError(EngineErrorNumber::Corrupt, "A data page is damaged; repair the database.");
}

}  // namespace

int DataPage::deliveredRows() const
{
    int n = 0;
    for (int slot = 0, count = rowCount(); slot < count; ++slot)
        n += delivered(slot);
    return n;
}

std::optional<std::span<const std::uint8_t>> DataPage::row(int slot) const
{
    const int count = rowCount();
    if (slot < 0 || slot >= count)
        return std::nullopt;
    const int from = entry(slot) & row_flag::kOffset;
    const int to = end(slot);
    if (from > to || to > static_cast<int>(format_->pageSize) ||
        from < format_->data.rowTable + 2 * count)
        return std::nullopt;
    return std::span(page_ + from, static_cast<std::size_t>(to - from));
}

int DataPage::freeBytes() const
{
    const int count = rowCount();
    const int lowest = end(count);
    return lowest - (format_->data.rowTable + 2 * count);
}

bool DataPage::empty() const
{
    for (int slot = 0, count = rowCount(); slot < count; ++slot)
        if ((entry(slot) & row_flag::kDeleted) != row_flag::kDeleted)
            return false;
    return true;
}

DataPageEditor::DataPageEditor(const JetFormat& format, std::uint8_t* page)
    : DataPage(format, page), bytes_(page)
{
    // Only the ends are looked at: each row checks its own offsets when it is met.
    const int count = half(format.data.rowCount);
    if (!isData() || count > maxRows() || end(count) > static_cast<int>(format.pageSize) ||
        freeBytes() < 0)
        damaged();
}

DataPageEditor DataPageEditor::lay(const JetFormat& format, std::uint8_t* page, std::uint32_t owner)
{
    std::memset(page, 0, format.pageSize);
    page[0] = page_type::kData;
    page[1] = 1;
    storeLE(page + format.data.owner, owner);
    DataPageEditor editor(format, page);
    editor.updateFree();
    return editor;
}

std::uint8_t* DataPageEditor::append(std::size_t bytes, std::uint16_t flags)
{
    const int slot = rowCount();
    const int from = end(slot) - static_cast<int>(bytes);
    setEntry(slot, static_cast<std::uint16_t>(from | flags));
    storeLE(bytes_ + format_->data.rowCount, static_cast<std::uint16_t>(slot + 1));
    updateFree();
    return bytes_ + from;
}

bool DataPageEditor::fitsInPlace(int slot, std::size_t bytes) const
{
    const auto old = row(slot);
    return old && freeBytes() + static_cast<int>(old->size()) >= static_cast<int>(bytes);
}

std::uint8_t* DataPageEditor::resize(int slot, std::size_t bytes, std::uint16_t flags)
{
    const auto old = row(slot);
    if (!old)
        damaged();
    const int count = rowCount();
    const int from = entry(slot) & row_flag::kOffset;
    const int grow = static_cast<int>(bytes) - static_cast<int>(old->size());
    if (grow != 0) {
        const int lowest = end(count);
        for (int later = slot + 1; later < count; ++later) {
            const std::uint16_t value = entry(later);
            const int offset = value & row_flag::kOffset;
            if (offset > from || offset < lowest)
                damaged();
        }
        std::memmove(bytes_ + lowest - grow, bytes_ + lowest, from - lowest);
        for (int later = slot + 1; later < count; ++later)
            setEntry(later, static_cast<std::uint16_t>(entry(later) - grow));
    }
    setEntry(slot, static_cast<std::uint16_t>((from - grow) | flags));
    updateFree();
    return bytes_ + from - grow;
}

void DataPageEditor::erase(int slot)
{
    resize(slot, 0, row_flag::kDeleted);
}

void DataPageEditor::setLongValueStamp(std::uint32_t stamp)
{
    if (format_->data.longValueStamp >= 0)
        storeLE(bytes_ + format_->data.longValueStamp, stamp);
}

void DataPageEditor::updateFree()
{
    storeLE(bytes_ + format_->data.freeBytes, static_cast<std::uint16_t>(freeBytes()));
}

}  // namespace velnor::jet
