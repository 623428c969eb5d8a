// access/formats/jet/row_codec.h - a stored row to values, field by field on demand, and back.
//
// What a table's rows have in common is worked out once, in a RowPlan; a row is opened with a look
// at its ends, and each field checks its own bytes when it is asked for. A field whose bytes don't
// lie in the row reads as Null: one damaged record must not hide the others.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "access/formats/jet/jet_format.h"
#include "access/formats/jet/table_def.h"
#include "access/value.h"

namespace velnor::jet {

/// Where a field of a table stands in its rows.
struct FieldPlan {
    std::uint8_t type = 0;
    bool fixed = false;
    bool compress = false;  // Jet 4: the column's wish
    std::uint8_t scale = 0;
    std::uint16_t id = 0;
    std::uint16_t place = 0;   // offset in the fixed part, or variable slot
    std::uint16_t length = 0;  // bytes, of the column
    int column = 0;            // place in TableDef::columns

    bool longValue() const { return type == column_type::kMemo || type == column_type::kOle; }
};

/// Fields in the order in which people see them.
struct RowPlan {
    const JetFormat* format = nullptr;
    const CodePage* codePage = nullptr;  // Jet 3
    std::vector<FieldPlan> fields;
    std::uint32_t columnIds = 0;      // ids ever given: the null mask of new rows
    std::uint32_t variableSlots = 0;  // slots ever given
    std::uint16_t firstVariableId = 0xFFFF;
    std::uint32_t fixedBytes = 0;  // of the fixed part of new rows

    RowPlan() = default;
    RowPlan(const JetFormat& format, const CodePage& codePage, const TableDef& table);
    /// The field of a column id; -1 when there is none.
    int fieldOfId(std::uint16_t id) const;
};

/// Reads one row at a time; the row's bytes are held by the caller.
class RowReader {
public:
    explicit RowReader(const RowPlan& plan) : plan_(&plan) {}

    /// False when the row's ends don't fit its length: a damaged record.
    bool open(std::span<const std::uint8_t> row);
    bool isNull(int field) const;
    /// The stored bytes of a field; nothing for Null, and for bytes outside the row.
    std::optional<std::span<const std::uint8_t>> raw(int field) const;
    /// The value of any field but a long one. Text may lie in the row or in `scratch`.
    ValueView value(int field, std::string& scratch) const;
    /// True when every field's bytes lie in the row.
    bool sound() const;

private:
    bool openWide();
    bool openNarrow();
    std::optional<std::span<const std::uint8_t>> variable(std::uint16_t slot) const;
    std::uint32_t offset(std::uint16_t slot) const;

    const RowPlan* plan_;
    const std::uint8_t* row_ = nullptr;
    std::uint32_t size_ = 0;
    std::uint32_t columns_ = 0;
    const std::uint8_t* mask_ = nullptr;
    std::uint32_t slots_ = 0;
    std::uint32_t offsetsAt_ = 0;  // where the offset of slot 0 stands; further slots below
    std::uint32_t jumps_ = 0;      // Jet 3: jump bytes
    std::uint32_t dataEnd_ = 0;    // what may be data lies below
};

/// Builds rows. All buffers are kept from row to row.
class RowWriterBuffer {
public:
    explicit RowWriterBuffer(const RowPlan& plan);

    /// All fields Null.
    void clear();
    void setNull(int field) { cells_[field].present = false; }
    /// Encodes a value of any field but a long one. 3421 when its kind is wrong, 3163 when it is
    /// too long for the column.
    void set(int field, ValueView value);
    /// Takes stored bytes as they are.
    void setRaw(int field, std::span<const std::uint8_t> bytes);
    /// Bytes of the row as it stands now.
    std::size_t size() const;
    /// The row; good until the next change. 3047 when it is larger than a row may be.
    std::span<const std::uint8_t> build();

private:
    struct Cell {
        std::uint32_t at = 0, length = 0;
        bool present = false;
    };
    std::uint8_t* room(int field, std::size_t bytes);
    void setText(int field, ValueView value);
    void setFixedText(int field, std::string_view stored);
    template <class T> void setNumber(int field, T value);
    void setInteger(int field, ValueView value);
    void setDecimal(int field, ValueView value);
    std::size_t dataBytes() const;
    std::size_t jumpBytes(std::size_t withoutJumps) const;
    std::uint8_t* fixedPart(std::uint8_t* row);
    std::uint8_t* variablePart(std::uint8_t* at, const std::uint8_t* row);
    void wideEnd(std::uint8_t* at);
    void narrowEnd(std::uint8_t* at, std::size_t jumps);
    void nullMask(std::uint8_t* mask) const;

    const RowPlan* plan_;
    std::vector<Cell> cells_;          // by field
    std::vector<int> fieldOfSlot_;     // -1: the slot of a dropped column
    std::vector<std::uint32_t> ends_;  // offsets of the slots of the row being built
    std::vector<std::uint8_t> bytes_;  // stored values
    std::vector<std::uint8_t> row_;
    std::string text_;
};

/// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" of 16 stored bytes, and back (nothing for another
/// text).
std::string_view guidText(std::span<const std::uint8_t, 16> stored, std::string& out);
std::optional<std::array<std::uint8_t, 16>> guidBytes(std::string_view text);

/// The double that a Single shows: the one of its shortest decimal, so that 0.1 stays 0.1.
double shortestDouble(float single);

}  // namespace velnor::jet
