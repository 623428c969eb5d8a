// access/sql/scan_test.h - a condition on one field that is tested in the table's own cursor,
// before a record reaches the statement machine.
#pragma once

#include <cstdint>
#include <vector>

#include "access/formats/driver.h"
#include "access/sql/plain_value.h"

namespace velnor::sql {

enum class TestOp : std::uint8_t {
    Equal,
    Different,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    IsNull,
    NotNull,
    OneOf,
};

class ScanTest {
public:
    ScanTest(int field, TestOp op) : field_(field), op_(op) {}
    /// A plain value, which is copied. Several for OneOf.
    void add(ValueView plain) { values_.emplace_back(plain); }
    /// After the last value of OneOf.
    void sortList();

    int field() const { return field_; }
    TestOp op() const { return op_; }
    ValueView value() const { return values_.front().view(); }
    /// A comparison with Null is true for no record.
    bool passesNone() const;
    bool passes(RowCursor& cursor) const { return passesPlain(plainValue(cursor.field(field_))); }
    bool passesPlain(ValueView plain) const;

private:
    int field_;
    TestOp op_;
    std::vector<Value> values_;
};

}  // namespace velnor::sql
