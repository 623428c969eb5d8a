// access/formats/xbase/dbf_cursor.h - walks the records of a table in their order in the file.
//
// The cursor has a block of records of its own, read past the page cache; it grows while the walk
// goes straight on and is read again when any writer of the table has changed something.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/xbase/dbf_table.h"

namespace velnor::xbase {

class DbfCursor final : public RowCursor {
public:
    /// The table outlives the cursor.
    explicit DbfCursor(std::shared_ptr<DbfTable> table);

    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool moveTo(RowId row) override;
    bool moveToOrdinal(std::int64_t n) override;
    std::int64_t ordinal() override;
    RowId row() const override { return number_; }
    ValueView field(int n) override;
    void fields(std::span<ValueView> out) override;

private:
    bool forwardFrom(std::uint64_t number);
    bool backFrom(std::uint64_t number);
    /// The record's bytes when it is live, else null.
    const std::uint8_t* liveRecord(std::uint32_t number);
    const std::uint8_t* recordAt(std::uint32_t number);
    void load(std::uint32_t number);
    void loadLone(std::uint32_t number);
    void dropStaleBlock();
    ValueView memoField(std::size_t n, const DbfField& field);

    std::shared_ptr<DbfTable> table_;
    const std::uint8_t* record_ = nullptr;  // of the current record, in block_
    std::uint32_t number_ = 0;              // 0: before the first
    bool beyond_ = false;  // the end was passed; number_ is behind the last one then
    std::vector<std::uint8_t> block_;
    std::uint32_t blockFirst_ = 1;
    std::uint32_t blockRecords_ = 0;
    std::size_t window_;
    std::uint64_t generation_;
    std::vector<std::string> texts_;  // decoded text of each field
    std::vector<std::string> memos_;  // bytes of each memo
};

}  // namespace velnor::xbase
