// access/formats/xbase/dbf_writer.h - adds, changes and removes records of one table.
//
// A call encodes all fields first, then stores memos, then the record: a value that does not fit
// leaves the table as it was.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/xbase/dbf_table.h"

namespace velnor::xbase {

class DbfWriter final : public RowWriter {
public:
    /// 3027 for a table that is only read, 3800 when it has indexes that nobody here keeps right.
    explicit DbfWriter(std::shared_ptr<DbfTable> table);

    RowId insert(std::span<const ValueView> values) override;
    void update(RowId row, std::span<const FieldChange> changes) override;
    void remove(RowId row) override;

private:
    struct PendingMemo {
        const DbfField* field;
        ValueView value;
    };

    void put(const DbfField& field, ValueView value);
    void putAutonumber(std::size_t n, ValueView value);
    void checkMemo(const DbfField& field, ValueView value);
    void storeMemos();
    std::span<const std::uint8_t> memoBytes(ValueView value);
    void readLive(RowId row);

    std::shared_ptr<DbfTable> table_;
    std::vector<std::uint8_t> blank_;
    std::vector<std::uint8_t> record_;
    std::vector<std::uint8_t> before_;
    std::vector<PendingMemo> memos_;
    std::vector<std::pair<std::size_t, std::uint32_t>> numbers_;  // next autonumbers, kept back
    std::string scratch_;
};

}  // namespace velnor::xbase
