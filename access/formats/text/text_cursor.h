// access/formats/text/text_cursor.h - walks the records of a text file in their order.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/text/record_reader.h"
#include "access/formats/text/text_table.h"

namespace velnor::text {

class TextCursor final : public RowCursor {
public:
    explicit TextCursor(std::shared_ptr<TextTable> table);

    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool moveTo(RowId row) override;
    bool moveToOrdinal(std::int64_t n) override;
    std::int64_t ordinal() override;
    RowId row() const override { return place_; }
    ValueView field(int n) override;
    void fields(std::span<ValueView> out) override;

private:
    enum class Standing { Before, Record, Behind };

    void dropStale();
    /// Stands on the record that begins at this byte, or on the next one.
    bool standFrom(std::uint64_t offset);
    bool standBefore(std::uint64_t offset);
    void gather(std::uint64_t offset);
    ValueView value(std::size_t n);

    std::shared_ptr<TextTable> table_;
    RecordReader reader_;
    std::uint64_t generation_;
    Standing standing_ = Standing::Before;
    std::uint64_t place_ = 0;   // of the current record
    std::uint64_t behind_ = 0;  // the one after it begins here
    // Places of the records right in front of this one, while the walk goes back.
    std::vector<std::uint64_t> gathered_;
    struct Scratch {
        std::string unquoted, decoded;
    };
    std::vector<Scratch> scratch_;  // of each field
};

}  // namespace velnor::text
