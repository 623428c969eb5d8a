// access/formats/text/text_scan.h - one pass over a text file: how many records, where they begin,
// and what the columns hold.
//
// The type of a column is decided by all its values, so that none is lost: Long, Double, Date or
// Boolean when every value reads as such, else Text, Memo when one is longer than 255 characters.
// A value in quotes is a text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "access/formats/text/record_places.h"
#include "access/formats/text/text_form.h"
#include "access/storage/page_file.h"

namespace velnor::text {

struct ColumnFacts {
    unsigned kinds = ~0u;   ///< kLong ... that all values have
    bool any = false;       ///< a value that is not Null
    bool longText = false;  ///< more than 255 characters
};

struct ScanResult {
    std::vector<std::string> names;  ///< of the header, in the characters of the file
    std::vector<ColumnFacts> columns;
    RecordPlaces places;
    std::uint64_t firstRecord = 0;  ///< offset
    std::size_t mostFields = 0;     ///< of any record, also those not kept
    bool headerMissing = false;     ///< the file should have one, and is empty
    bool utf8 = true;
    bool endsWithLineEnd = true;
    bool blankLinesCount = false;  ///< an empty line is a record: there is one column only
    bool blankLines = false;       ///< there are some, behind the header
};

ScanResult scanText(PageFile& file, const TextForm& form, std::uint64_t end);

FieldType typeOf(const ColumnFacts& facts);

/// Guesses the delimiter from the start of a file: the one that most lines have equally often.
/// 0 when there is none.
char guessDelimiter(std::string_view head, bool wholeFile);
/// The first line end; CR LF when there is none.
std::string guessLineEnd(std::string_view head);

}  // namespace velnor::text
