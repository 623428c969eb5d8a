// access/formats/text/record_splitter.h - one record cut into its fields. Knows no file.
//
// A field that begins with the quote goes to the next single quote, over delimiters and line ends;
// two quotes stand for one. What stands between the closing quote and the next delimiter belongs to
// the field. A quote that nothing closes before the end of the text is an ordinary character.
// A line ends with CR LF, LF or CR.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velnor::text {

/// A field as it stands, quotes included. Points into the caller's text.
struct Slice {
    std::string_view raw;
    bool quoted = false;
};

/// The value of a field: `raw` itself, its inside, or a text put together in `scratch`.
std::string_view unquoted(const Slice& slice, char quote, std::string& scratch);

class RecordSplitter {
public:
    /// `delimiter` 0: a line is one field. `quote` 0: no quotes.
    RecordSplitter(char delimiter, char quote) : delimiter_(delimiter), quote_(quote) {}

    /// Cuts the record that begins at `from`. Returns the place behind its line end, or null when
    /// it may go on behind `end`; with `final` the text ends there and every record is whole.
    const char* split(const char* from, const char* end, bool final);

    /// The first kMostColumns fields of the last record. An empty line has one empty field.
    const std::vector<Slice>& fields() const { return fields_; }
    /// All its fields, also those not kept.
    std::size_t fieldCount() const { return count_; }
    bool blankLine() const { return count_ == 1 && fields_[0].raw.empty(); }
    /// A quote was never closed.
    bool openQuote() const { return openQuote_; }

private:
    const char* endOfField(const char* from, const char* end) const;
    const char* behindQuotes(const char* from, const char* end, bool final);

    char delimiter_;
    char quote_;
    std::vector<Slice> fields_;
    std::size_t count_ = 0;
    bool openQuote_ = false;
};

}  // namespace velnor::text
