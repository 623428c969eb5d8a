// access/formats/jet/data_page.h - one data page: its row table and the bytes of its rows.
//
// Rows are stored from the end of the page downwards, row i directly below row i-1; the row table
// grows upwards behind the header. The two classes work on bytes that the caller holds.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "access/formats/jet/jet_format.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {

/// Reads a data page; every offset is checked against the page.
class DataPage {
public:
    DataPage() = default;
    DataPage(const JetFormat& format, const std::uint8_t* page) : format_(&format), page_(page) {}

    bool isData() const { return page_[0] == page_type::kData; }
    std::uint32_t owner() const { return word(format_->data.owner); }
    std::uint32_t longValueStamp() const
    {
        return format_->data.longValueStamp < 0 ? 0 : word(format_->data.longValueStamp);
    }
    /// Rows, deleted ones counted; 0 when the row table does not fit the page.
    int rowCount() const
    {
        const int count = half(format_->data.rowCount);
        return count <= maxRows() ? count : 0;
    }
    /// Flags and offset of a row; the slot must be below rowCount().
    std::uint16_t entry(int slot) const { return half(format_->data.rowTable + 2 * slot); }
    /// A row that a scan delivers at this place: live, or moved away.
    bool delivered(int slot) const { return (entry(slot) & row_flag::kHidden) == 0; }
    bool moved(int slot) const { return (entry(slot) & row_flag::kDeleted) == row_flag::kMoved; }
    int deliveredRows() const;
    /// The bytes of a row, whatever its flags; nothing when its offsets are damaged.
    std::optional<std::span<const std::uint8_t>> row(int slot) const;
    /// Free bytes between the row table and the lowest row.
    int freeBytes() const;
    /// Rows that hold something: live, moved, or targets of moves.
    bool empty() const;

protected:
    int maxRows() const
    {
        return (static_cast<int>(format_->pageSize) - format_->data.rowTable) / 2;
    }
    std::uint16_t half(int at) const { return loadLE<std::uint16_t>(page_ + at); }
    std::uint32_t word(int at) const { return loadLE<std::uint32_t>(page_ + at); }
    int end(int slot) const
    {
        return slot == 0 ? static_cast<int>(format_->pageSize)
                         : entry(slot - 1) & row_flag::kOffset;
    }

    const JetFormat* format_ = nullptr;
    const std::uint8_t* page_ = nullptr;
};

/// Changes a data page. The page must be sound: 3197 when its row table is not.
class DataPageEditor : public DataPage {
public:
    DataPageEditor(const JetFormat& format, std::uint8_t* page);
    /// Lays an empty data page.
    static DataPageEditor lay(const JetFormat& format, std::uint8_t* page, std::uint32_t owner);

    /// Whether a further row of so many bytes fits.
    bool fits(std::size_t bytes) const
    {
        return rowCount() < kMaxRowsPerPage && freeBytes() >= static_cast<int>(bytes) + 2;
    }
    /// Adds a row and gives room for its bytes; `flags` of row_flag. It must fit.
    std::uint8_t* append(std::size_t bytes, std::uint16_t flags = 0);
    /// Whether a row can be replaced by one of so many bytes.
    bool fitsInPlace(int slot, std::size_t bytes) const;
    /// Makes a row so long, keeps its place, and gives room for its bytes. It must fit.
    std::uint8_t* resize(int slot, std::size_t bytes, std::uint16_t flags = 0);
    /// Deletes a row: its slot stays, marked, without bytes.
    void erase(int slot);
    void setLongValueStamp(std::uint32_t stamp);

private:
    void setEntry(int slot, std::uint16_t value)
    {
        storeLE(bytes_ + format_->data.rowTable + 2 * slot, value);
    }
    void updateFree();

    std::uint8_t* bytes_;
};

}  // namespace velnor::jet
