// access/formats/jet/index_keys.h - the bytes under which a record stands in an index. Keys of all
// columns are put together; comparing them as plain bytes is the order of the index.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "access/formats/jet/text_collation.h"
#include "access/value.h"

namespace velnor::jet {

/// One column of an index.
struct KeyColumn {
    std::uint8_t type =
        0;  ///< type code of the column (1 Boolean ... 10 Text, 12 Memo, 15 GUID, 16 Decimal)
    bool descending = false;
    std::uint8_t scale = 0;  ///< of a Decimal column: the magnitude is stored at this scale
    SortOrder order;         ///< of a Text or Memo column
};

/// Builds keys into one buffer of its own: no allocation a key once it is warm.
class KeyBuilder {
public:
    KeyBuilder(bool jet3, const CodePage* codePage, std::span<const KeyColumn> columns);

    /// The key of a record: one value a column, each of its column's kind. A search may give fewer:
    /// the key then is the beginning of the keys it looks for. 3464 when a value is not of its
    /// column's kind, 3421 when it does not fit. The bytes are good until the next build.
    std::span<const std::uint8_t> build(std::span<const ValueView> values);

    /// The key of the last build is known for sure. Never write one that is not.
    bool sure() const { return sure_; }
    /// Of the last build: how many values were Null.
    int nulls() const { return nulls_; }
    bool allNull() const { return nulls_ == given_; }

    /// Whether a key of this value could be written; by column of the index.
    bool canEncode(int column, ValueView value);
    int columns() const { return static_cast<int>(columns_.size()); }

private:
    struct Column {
        KeyColumn as;
        TextCollation text;
    };
    void append(Column& column, ValueView value);

    std::vector<Column> columns_;
    KeyBytes key_;
    bool sure_ = true;
    int nulls_ = 0;
    int given_ = 0;
};

/// Keys have at most 510 bytes; a longer one keeps 508 and a check value over the rest.
inline constexpr std::size_t kLongestKey = 510;
void shortenKey(KeyBytes& key);

}  // namespace velnor::jet
