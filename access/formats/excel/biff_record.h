// access/formats/excel/biff_record.h - the records of a workbook stream.
//
// A record is its type and length (two bytes each) and its data. Content longer than a record goes
// on in CONTINUE records. A record that passes the end of the stream is the end.
#pragma once

#include <cstdint>
#include <span>

#include "access/storage/byte_reader.h"

namespace velnor::excel {

using Bytes = std::span<const std::uint8_t>;

namespace rec {
inline constexpr std::uint16_t kDimensions2 = 0x0000, kBlank2 = 0x0001, kInteger2 = 0x0002,
                               kNumber2 = 0x0003, kLabel2 = 0x0004, kBoolErr2 = 0x0005,
                               kFormula = 0x0006, kString2 = 0x0007, kRow2 = 0x0008, kBof2 = 0x0009,
                               kEof = 0x000A, kExternSheet = 0x0017, kName = 0x0018,
                               kFormat2 = 0x001E, kDate1904 = 0x0022, kFilePass = 0x002F,
                               kFont = 0x0031, kContinue = 0x003C, kWindow1 = 0x003D,
                               kCodePage = 0x0042, kXf2 = 0x0043, kWriteAccess = 0x005C,
                               kColInfo = 0x007D, kRk3 = 0x007E, kBoundSheet = 0x0085,
                               kBundleHeader = 0x008F, kMulRk = 0x00BD, kMulBlank = 0x00BE,
                               kRString = 0x00D6, kDbCell = 0x00D7, kXf = 0x00E0,
                               kInterfaceHdr = 0x00E1, kSst = 0x00FC, kLabelSst = 0x00FD,
                               kExtSst = 0x00FF, kTabId = 0x013D, kSupBook = 0x01AE,
                               kDimensions = 0x0200, kBlank = 0x0201, kNumber = 0x0203,
                               kLabel = 0x0204, kBoolErr = 0x0205, kFormula3 = 0x0206,
                               kString = 0x0207, kRow = 0x0208, kBof3 = 0x0209, kIndex = 0x020B,
                               kArray = 0x0221, kTable = 0x0236, kXf3 = 0x0243, kRk = 0x027E,
                               kStyle = 0x0293, kFormula4 = 0x0406, kBof4 = 0x0409,
                               kFormat = 0x041E, kXf4 = 0x0443, kShrFmla = 0x04BC, kBof = 0x0809;
}  // namespace rec

inline bool isBof(std::uint16_t type)
{
    return type == rec::kBof || type == rec::kBof4 || type == rec::kBof3 || type == rec::kBof2;
}

struct Record {
    std::uint16_t type = 0;
    std::size_t at = 0;  ///< of its head in the stream
    Bytes data;
    std::size_t end() const { return at + 4 + data.size(); }
};

class RecordReader {
public:
    explicit RecordReader(Bytes stream, std::size_t at = 0) : stream_(stream), at_(at) {}

    /// False at the end of the stream, and at a record that does not fit into it (then cutOff()).
    bool next(Record& record)
    {
        if (at_ > stream_.size() || stream_.size() - at_ < 4)
            return false;
        const std::size_t length = loadLE<std::uint16_t>(stream_.data() + at_ + 2);
        if (length > stream_.size() - at_ - 4) {
            cutOff_ = true;
            return false;
        }
        record.type = loadLE<std::uint16_t>(stream_.data() + at_);
        record.at = at_;
        record.data = stream_.subspan(at_ + 4, length);
        at_ += 4 + length;
        return true;
    }
    std::size_t at() const { return at_; }
    bool cutOff() const { return cutOff_; }
    /// The type of the next record; 0xFFFF when there is none.
    std::uint16_t peek() const
    {
        return at_ <= stream_.size() && stream_.size() - at_ >= 4
                   ? loadLE<std::uint16_t>(stream_.data() + at_)
                   : 0xFFFF;
    }

private:
    Bytes stream_;
    std::size_t at_;
    bool cutOff_ = false;
};

/// What differs between the versions of the format.
struct BiffForm {
    int version;                ///< 2, 3, 4, 5 (also called 7), 8
    std::size_t longestRecord;  ///< bytes of data
    std::uint32_t rows;         ///< of a sheet
    std::size_t longestText;    ///< characters in a cell; bytes before version 8
    bool written;               ///< by us
};
/// The form of a version; of 8 for a number that is none.
const BiffForm& biffForm(int version);

}  // namespace velnor::excel
