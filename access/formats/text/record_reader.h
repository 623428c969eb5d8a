// access/formats/text/record_reader.h - the records of a text file, one after the other or from any
// place. Memory: a window of the file, or one record when that is longer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "access/formats/text/record_splitter.h"
#include "access/formats/text/text_form.h"
#include "access/storage/page_file.h"

namespace velnor::text {

class RecordReader {
public:
    /// The file and the form outlive the reader. `end`: where the records end, in bytes.
    RecordReader(PageFile& file, const TextForm& form, std::uint64_t end);

    /// The file has changed: its records end here now.
    void refresh(std::uint64_t end);
    /// Reads the record that begins at this byte; false at the end. 3047 for a record of more than
    /// 64 MiB.
    bool readAt(std::uint64_t offset);
    bool next() { return readAt(behind_); }

    /// Place of the last record, and of the one behind it.
    std::uint64_t start() const { return start_; }
    std::uint64_t behind() const { return behind_; }
    /// An empty line.
    bool blank() const { return form_.fixed ? line_.empty() : splitter_.blankLine(); }
    bool openQuote() const { return !form_.fixed && splitter_.openQuote(); }

    /// Fields that the record has, also those not kept.
    std::size_t fieldCount() const { return form_.fixed ? fixed_.size() : splitter_.fieldCount(); }
    /// The first fields; good until the next record is read.
    const std::vector<Slice>& fields() const { return form_.fixed ? fixed_ : splitter_.fields(); }
    /// A field without its quotes, in the characters of the file (UTF-8 where the file is UTF-16).
    std::string_view raw(std::size_t n, std::string& scratch) const
    {
        return unquoted(fields()[n], form_.quote, scratch);
    }
    /// All of the record as it stands, with its line end.
    std::string_view whole() const { return whole_; }

private:
    void locate(std::uint64_t offset);
    void fill();
    void append(std::uint64_t from, std::size_t bytes);
    void cutColumns();
    const char* split(const char* from, const char* end, bool final);

    PageFile& file_;
    const TextForm& form_;
    RecordSplitter splitter_;
    std::vector<Slice> fixed_;
    std::string_view line_;
    std::string_view whole_;
    std::uint64_t end_;
    std::uint64_t start_ = 0;
    std::uint64_t behind_ = 0;

    std::string buffer_;        // text of the file from next_ - at_ on
    std::size_t at_ = 0;        // the next record in the buffer
    std::uint64_t next_ = 0;    // and in the file
    std::uint64_t loaded_ = 0;  // the buffer ends here, in the file
    std::size_t window_;
};

}  // namespace velnor::text
