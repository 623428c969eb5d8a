// access/formats/excel/biff_text.h - texts in records: Unicode from version 8 on, bytes of a code
// page before.
//
// A Unicode text is a count of UTF-16 units, flags, perhaps a count of formatting runs and the size
// of phonetic data, then the units: one byte each when they are all below 256, else two. It may go
// on in CONTINUE records: then each of them begins with flags anew, of which only the width counts,
// so that the width may change within a text. Runs and phonetic data go on without flags.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "access/formats/excel/biff_record.h"
#include "access/storage/code_page.h"

namespace velnor::excel {

/// The code page of a CODEPAGE record's number; 1252 for numbers that are unknown or wrong.
const CodePage& codePageOfRecord(int number);

/// Reads one Unicode text after the other through a record and its CONTINUE records.
class UnicodeReader {
public:
    /// The parts' bytes must stay.
    UnicodeReader(std::vector<Bytes> parts, std::size_t at) : parts_(std::move(parts)), at_(at) {}

    /// The next text, its count in `countBytes` (1 or 2) bytes; good until the next call. False at
    /// the end of the data; cutOff() tells that it came within a text.
    bool next(std::string_view& text, int countBytes = 2);
    /// The characters of a text whose count is known; its flags come first.
    bool body(std::string_view& text, std::size_t count);
    bool cutOff() const { return cutOff_; }
    /// The last text has formatting runs or phonetic data.
    bool rich() const { return rich_; }

private:
    std::size_t left() const { return part_ < parts_.size() ? parts_[part_].size() - at_ : 0; }
    bool nextPart();
    bool number(std::uint32_t& value, int bytes);
    bool characters(std::string_view& text, std::size_t count, bool wide);
    bool skip(std::uint64_t bytes);

    std::vector<Bytes> parts_;
    std::size_t part_ = 0;
    std::size_t at_ = 0;
    std::vector<std::uint8_t> units_;
    std::string scratch_;
    bool rich_ = false;
    bool cutOff_ = false;
};

/// A Unicode text within one record, or bytes of a code page, at `at`; `at` moves behind it. An
/// empty text when it does not fit.
std::string textAt(Bytes data, std::size_t& at, int countBytes, const BiffForm& form,
                   const CodePage& page);

/// A text as UTF-16LE units, for writing; `narrow` when all are below 256.
struct Units {
    std::string bytes;  ///< two a unit
    bool narrow = true;
    std::size_t count() const { return bytes.size() / 2; }
    /// Appends the units from `first` on, as narrow or wide ones.
    void append(std::vector<std::uint8_t>& out, std::size_t first, std::size_t count) const;
};
void unitsOf(std::string_view utf8, Units& units);

}  // namespace velnor::excel
