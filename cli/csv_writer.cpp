#include "cli/csv_writer.h"

#include <cstring>

#include "access/value_text.h"
#include "cli/record_text.h"

namespace velnor::cli {

CsvWriter::CsvWriter(Output& output)
    : output_(output), buffer_(new char[kSize]), p_(buffer_.get()), end_(p_ + kSize)
{
}

void CsvWriter::need(std::size_t bytes)
{
    if (static_cast<std::size_t>(end_ - p_) < bytes)
        finish();
}

void CsvWriter::finish()
{
    output_.write({buffer_.get(), static_cast<std::size_t>(p_ - buffer_.get())});
    p_ = buffer_.get();
}

void CsvWriter::text(std::string_view text)
{
    if (text.size() > kSize / 4 || needsQuotes(text)) {
        std::string quoted;
        appendCsvText(quoted, text);
        need(quoted.size());
        if (quoted.size() > kSize)
            return output_.write(quoted);
        std::memcpy(p_, quoted.data(), quoted.size());
        p_ += quoted.size();
        return;
    }
    need(text.size());
    std::memcpy(p_, text.data(), text.size());
    p_ += text.size();
}

void CsvWriter::value(ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Null:
        return;
    case ValueKind::Text:
        return text(v.asText());
    case ValueKind::Boolean:
        std::memcpy(p_, v.asBoolean() ? "True " : "False", 5);
        p_ += v.asBoolean() ? 4 : 5;
        return;
    case ValueKind::Integer:
        p_ = putInteger(p_, v.asInteger());
        return;
    case ValueKind::Decimal:
        p_ = putDecimal(p_, v);
        return;
    case ValueKind::Date:
        p_ = putIsoDate(p_, v.asDate());
        return;
    default: {
        std::string other;
        appendCsv(other, v);
        need(other.size());
        std::memcpy(p_, other.data(), other.size());
        p_ += other.size();
    }
    }
}

void CsvWriter::record(std::span<const ValueView> values)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        need(kRoomForNumber + 2);
        if (i)
            *p_++ = ',';
        value(values[i]);
    }
    need(2);
    *p_++ = '\r';
    *p_++ = '\n';
}

}  // namespace velnor::cli
