// access/formats/sheet/sheet_cursor.h - walks the records of a table on a sheet. A RowId is a row.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/sheet/sheet_table.h"

namespace velnor::sheet {

class SheetCursor final : public RowCursor {
public:
    explicit SheetCursor(std::shared_ptr<const SheetTable> table);

    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool moveTo(RowId row) override;
    bool moveToOrdinal(std::int64_t n) override;
    std::int64_t ordinal() override { return at_; }
    RowId row() const override { return table_->firstRecord() + static_cast<RowId>(at_); }
    ValueView field(int n) override;
    void fields(std::span<ValueView> out) override;

private:
    bool stand(std::int64_t n);
    std::uint32_t sheetRow() const { return static_cast<std::uint32_t>(row()); }

    std::shared_ptr<const SheetTable> table_;
    std::int64_t at_ = -1;              // -1 before the first, the count behind the last
    std::vector<std::string> scratch_;  // a field, where numbers are shown as texts
};

}  // namespace velnor::sheet
