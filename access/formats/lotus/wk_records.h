// access/formats/lotus/wk_records.h - the records of a worksheet file: numbers of types, reading
// them one after the other, putting new ones together. Memory: a window, and one record of at
// most 64 KiB.
//
// A file is a stream of records: type and length, 16 bits each, then the data. BOF comes first,
// EOF last; what stands behind EOF (old formats, leftovers) is no part of the sheet and stays as
// it is.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "access/storage/byte_reader.h"
#include "platform/file_system.h"

namespace velnor::lotus {

using Bytes = std::vector<std::uint8_t>;

/// Types in WK3, WK4 and 123 files.
namespace wk {
inline constexpr std::uint16_t kBof = 0x00, kEof = 0x01, kPassword = 0x02, kCalcSet = 0x03,
                               kWindowSet = 0x04, kSheetCell = 0x05, kSheetLayout = 0x06,
                               kUserRange = 0x09, kZeroForce = 0x0B, kFormat = 0x13, kErr = 0x14,
                               kNa = 0x15, kLabel = 0x16, kNumber = 0x17, kSmallNumber = 0x18,
                               kFormula = 0x19, kFormulaText = 0x1A, kExtended = 0x1B,
                               kColumnBounds = 0x1F, kUnknown21 = 0x21, kSheetName123 = 0x23,
                               kPackedNumber = 0x25, kDouble = 0x27, kDoubleFormula = 0x28,
                               kStyleName123 = 0x204;
inline constexpr std::uint16_t kSheetNameKind = 0x36B0;  // of kExtended and kSheetName123
}  // namespace wk

/// Types in WKS and WK1 files.
namespace wk1 {
inline constexpr std::uint16_t kRange = 0x06, kWindow = 0x07, kName = 0x0B, kBlank = 0x0C,
                               kInteger = 0x0D, kNumber = 0x0E, kLabel = 0x0F, kFormula = 0x10,
                               kText = 0x33, kLongName = 0x47, kPassword = 0x4B;
}  // namespace wk1

struct Record {
    std::uint16_t type = 0;
    std::uint64_t at = 0;  ///< place in the file
    std::span<const std::uint8_t> data;

    std::size_t size() const { return data.size(); }
    std::uint8_t u8(std::size_t offset) const { return data[offset]; }
    std::uint16_t u16(std::size_t offset) const { return loadLE<std::uint16_t>(&data[offset]); }
    std::uint64_t behind() const { return at + 4 + data.size(); }
};

/// Reads a file from its start. The data of a record is good until the next one is read.
class RecordStream {
public:
    explicit RecordStream(File& file);

    /// False behind EOF, and where the file ends without it.
    bool next(Record& record);
    /// EOF was met.
    bool complete() const { return complete_; }
    /// Behind the last record that was read.
    std::uint64_t position() const { return start_ + at_; }

private:
    bool need(std::size_t bytes);

    File& file_;
    Bytes buffer_;
    std::uint64_t start_ = 0;  // of the buffer, in the file
    std::size_t at_ = 0;
    std::size_t filled_ = 0;
    bool complete_ = false;
};

/// Writes a file from its start through a buffer.
class RecordSink {
public:
    explicit RecordSink(File& file) : file_(file) {}
    void put(std::uint16_t type, std::span<const std::uint8_t> data);
    void put(const Record& record) { put(record.type, record.data); }
    /// Bytes as they are.
    void raw(std::span<const std::uint8_t> bytes);
    void flush();

private:
    File& file_;
    Bytes buffer_;
    std::uint64_t written_ = 0;
};

/// A place of WK3, WK4 and 123 files: row u16, sheet u8, column u8.
struct CellPlace {
    std::uint8_t sheet = 0;
    std::uint16_t row = 0;
    std::uint8_t column = 0;

    auto operator<=>(const CellPlace&) const = default;
};
inline CellPlace placeOf(const Record& record)
{
    return {record.u8(2), record.u16(0), record.u8(3)};
}
/// True for cells that hold a value of their own, not for the text of a formula.
bool isCell(std::uint16_t type);
inline void storePlace(std::uint8_t* to, CellPlace place)
{
    storeLE(to, place.row);
    to[2] = place.sheet;
    to[3] = place.column;
}
inline void append16(Bytes& out, unsigned value)
{
    const std::size_t at = out.size();
    out.resize(at + 2);
    storeLE(&out[at], static_cast<std::uint16_t>(value));
}

}  // namespace velnor::lotus
