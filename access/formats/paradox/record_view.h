// access/formats/paradox/record_view.h - the values of one record, long ones fetched from the MB
// file.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "access/formats/paradox/db_table.h"

namespace velnor::paradox {

class RecordView {
public:
    /// The table outlives it.
    explicit RecordView(DbTable& table);

    /// `record`: good until the next show(); null for none.
    void show(const std::uint8_t* record) { record_ = record; }
    const std::uint8_t* record() const { return record_; }
    /// 3021 without a record, or for a field that is not there.
    ValueView field(std::size_t n);
    void fields(std::span<ValueView> out);

private:
    ValueView value(std::size_t n, const StoredField& field);
    ValueView longValue(std::size_t n, const StoredField& field);

    DbTable& table_;
    const std::uint8_t* record_ = nullptr;
    std::vector<std::string> texts_, bytes_;  // one a field: reading another does not end a view
};

/// The bytes of a long field of a record: those in the leader, or those in the MB file. What cannot
/// be found there is shown by its beginning. False for Null. `why` says what is wrong, if anything.
bool readLongValue(DbTable& table, const StoredField& field, const std::uint8_t* record,
                   std::string& out, std::string& why);

}  // namespace velnor::paradox
