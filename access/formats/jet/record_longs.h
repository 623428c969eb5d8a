// access/formats/jet/record_longs.h - the memo and OLE values of a record that is changed: those it
// had, and the new ones, which are written before the row and may stand in it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "access/formats/jet/jet_table.h"
#include "access/formats/jet/long_value.h"

namespace velnor::jet {

class RecordLongs {
public:
    explicit RecordLongs(JetTable& table);

    bool has(int field) const { return ofField_[static_cast<std::size_t>(field)] >= 0; }

    /// The record is new: none of its values stands.
    void startEmpty();
    /// The record has the values of this row.
    void start(const RowReader& row);
    /// All fields get new values, by field.
    void setAll(std::span<const ValueView> values);
    /// Some do.
    void setChanged(std::span<const ValueView> values, const std::vector<bool>& changed);
    /// The record goes, and all its values.
    void setNone();

    /// Bytes that new values take in the row: as many of them inline as can be, and none.
    struct Sizes {
        std::size_t inRow = 0, outside = 0;
    };
    Sizes sizes();
    /// Stores the new values, and puts what stands of them in the row into `row`.
    void write(bool mayInline, RowWriterBuffer& row);
    void undoWrite();
    /// Frees the values that are replaced.
    void eraseOld();

private:
    struct Part {
        int field = 0;
        std::unique_ptr<LongValueColumn> column;
        bool set = false;  // the change gives a value
        ValueView value;
        std::string stored;  // header and inline bytes of the new value
        std::string old;     // of the value replaced
        bool written = false;
    };
    void encode(const Part& part, std::string& bytes, std::size_t& plain) const;
    void encodeText(const Part& part, std::string& bytes, std::size_t& plain) const;

    JetTable& table_;
    std::vector<Part> parts_;
    std::vector<int> ofField_;  // -1
    std::string encoded_;
};

}  // namespace velnor::jet
