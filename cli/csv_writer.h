// cli/csv_writer.h - records as CSV, quickly: the form is that of record_text.h.
#pragma once

#include <memory>
#include <span>

#include "access/value.h"
#include "cli/output.h"

namespace velnor::cli {

/// Writes through a buffer of its own; call finish() at the end.
class CsvWriter {
public:
    explicit CsvWriter(Output& output);
    void record(std::span<const ValueView> values);
    void finish();

private:
    void need(std::size_t bytes);
    void value(ValueView v);
    void text(std::string_view text);

    static constexpr std::size_t kSize = 1u << 17;
    Output& output_;
    std::unique_ptr<char[]> buffer_;
    char* p_;
    char* end_;
};

}  // namespace velnor::cli
