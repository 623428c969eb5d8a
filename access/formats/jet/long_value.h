// access/formats/jet/long_value.h - memo and OLE values: in the row, in a row of their own, or in a
// chain of rows over several pages.
//
// In the record stands a header of 12 bytes; an inline value follows it. Values of a column live on
// long-value pages that only this column uses, named by two maps of the table's definition.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "access/formats/jet/jet_format.h"
#include "access/formats/jet/page_space.h"
#include "access/formats/jet/table_def.h"
#include "access/formats/jet/usage_map.h"

namespace velnor::jet {

enum class LongValueKind : std::uint8_t { Chain = 0, Single = 1, Inline = 2 };

struct LongValueHeader {
    static constexpr std::size_t kBytes = 12;

    LongValueKind kind = LongValueKind::Inline;
    std::uint32_t length = 0;
    RowPointer first;
    std::uint32_t stamp = 0;

    /// Nothing when there are fewer bytes, or a kind that is not known.
    static std::optional<LongValueHeader> read(std::span<const std::uint8_t> stored);
    void write(std::uint8_t* to) const;
};

/// The bytes of a stored value: in the row itself, or gathered in `scratch`. Nothing when a part is
/// missing or damaged.
std::optional<std::span<const std::uint8_t>>
readLongValue(PageSpace& space, std::span<const std::uint8_t> stored, std::string& scratch);

/// Writes and removes the long values of one column.
class LongValueColumn {
public:
    LongValueColumn(PageSpace& space, const LongValueMaps& maps)
        : space_(space), owned_(space, maps.owned), free_(space, maps.space)
    {
    }

    /// Stores a value and puts header and inline bytes into `stored`. It goes inline when
    /// `mayInline` and its plain size (before compression) is small enough; into a chain when that
    /// is large.
    void write(std::span<const std::uint8_t> bytes, std::size_t plainBytes, bool mayInline,
               std::string& stored);
    /// Frees the rows of a stored value; damaged parts are left where they are.
    void erase(std::span<const std::uint8_t> stored);
    /// Frees every page of values: the table, or the column, is dropped. The maps stay.
    void releaseAll();

private:
    RowPointer writeSingle(std::span<const std::uint8_t> bytes);
    RowPointer writeChain(std::span<const std::uint8_t> bytes, std::uint32_t stamp);
    PageNumber writeChunk(std::span<const std::uint8_t> data, std::uint32_t stamp);
    void linkChunk(PageNumber from, PageNumber to);
    PageNumber pageWithRoom(std::size_t bytes);
    PageNumber newPage();
    void eraseRow(RowPointer row);

    PageSpace& space_;
    UsageMap owned_;
    UsageMap free_;
    PageNumber last_ = 0;  // where the last single value went
};

}  // namespace velnor::jet
