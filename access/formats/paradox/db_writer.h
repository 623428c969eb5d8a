// access/formats/paradox/db_writer.h - adds, changes and removes records of one table.
//
// A call encodes all fields and tests all keys first, then stores long values, then the record and
// its index entries: a value that does not fit leaves the table as it was. A failure of the disk in
// between takes the table back to its last commit.
// Records of a table without a primary key can be added, not changed: they have nothing to be known
// by, and so it has always been.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/paradox/db_table.h"

namespace velnor::paradox {

class DbWriter final : public RowWriter {
public:
    /// 3027 for a table that is only read, 3800 for one with an index that cannot be kept right.
    explicit DbWriter(std::shared_ptr<DbTable> table);

    RowId insert(std::span<const ValueView> values) override;
    void update(RowId row, std::span<const FieldChange> changes) override;
    void remove(RowId row) override;

private:
    struct LongChange {
        const StoredField* field;
        ValueView value;
    };

    void put(const StoredField& field, ValueView value);
    void putAutonumber(const StoredField& field, ValueView value);
    void testLong(const StoredField& field, ValueView value);
    std::span<const std::uint8_t> longBytes(const LongChange& change);
    void storeLong(const LongChange& change);
    void releaseLong(const StoredField& field, const std::uint8_t* record);
    Place placeToChange(RowId row);
    template <class Work> void change(Work work);

    std::shared_ptr<DbTable> table_;
    std::vector<std::uint8_t> record_, before_;
    std::vector<LongChange> longs_;
    std::uint32_t number_ = 0;  // the autonumber to keep, 0 for none
    std::string scratch_;
};

}  // namespace velnor::paradox
