#include "access/formats/text/record_reader.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/text/encoding.h"
#include "access/storage/byte_reader.h"
#include "access/value_text.h"

namespace velnor::text {
namespace {

constexpr std::size_t kSmallestWindow = 8u << 10;
constexpr std::size_t kLargestWindow = 256u << 10;
constexpr std::size_t kMostRecordBytes = 64u << 20;

/// The first half of a pair must wait for its second.
bool isHighSurrogate(const std::uint8_t* unit, Units units)
{
    const auto value =
        units == Units::Utf16Big ? loadBE<std::uint16_t>(unit) : loadLE<std::uint16_t>(unit);
    return value >= 0xD800 && value < 0xDC00;
}

/// The first `characters` of a text: bytes of an 8-bit page, characters of UTF-8.
std::string_view cut(std::string_view text, std::size_t characters, bool utf8)
{
    if (!utf8)
        return text.substr(0, characters);
    return textPrefix(text, characters);
}

std::string_view withoutClosingBlanks(std::string_view text)
{
    const std::size_t last = text.find_last_not_of(' ');
    return text.substr(0, last == text.npos ? 0 : last + 1);
}

}  // namespace

RecordReader::RecordReader(PageFile& file, const TextForm& form, std::uint64_t end)
    : file_(file), form_(form),
      splitter_(form.fixed ? 0 : form.delimiter, form.fixed ? 0 : form.quote), end_(end),
      window_(kSmallestWindow)
{
    refresh(end);
}

void RecordReader::refresh(std::uint64_t end)
{
    end_ = form_.encoding.wide() ? end - (end - form_.encoding.markBytes) % 2 : end;
    buffer_.clear();
    at_ = 0;
    next_ = loaded_ = 0;
    window_ = kSmallestWindow;
}

/// Stands in front of a record that the buffer may hold already.
void RecordReader::locate(std::uint64_t offset)
{
    if (offset == next_)
        return;
    const std::uint64_t first = next_ - at_;
    if (!form_.encoding.wide() && offset >= first && offset < loaded_) {
        at_ = static_cast<std::size_t>(offset - first);
    } else {
        buffer_.clear();
        at_ = 0;
        loaded_ = offset;
        window_ = kSmallestWindow;
    }
    next_ = offset;
}

void RecordReader::append(std::uint64_t from, std::size_t bytes)
{
    if (!form_.encoding.wide()) {
        const std::size_t old = buffer_.size();
        buffer_.resize(old + bytes);
        const std::span out(reinterpret_cast<std::uint8_t*>(buffer_.data()) + old, bytes);
        bytes = file_.readAt(from, out);
        buffer_.resize(old + bytes);
        loaded_ = from + bytes;
        end_ = bytes < out.size() ? loaded_ : end_;
        return;
    }
    std::vector<std::uint8_t> units(bytes & ~std::size_t{1});
    units.resize(file_.readAt(from, units) & ~std::size_t{1});
    if (from + units.size() < end_ && units.size() > 2 &&
        isHighSurrogate(&units[units.size() - 2], form_.encoding.units))
        units.resize(units.size() - 2);
    appendUtf8(form_.encoding.units, units, buffer_);
    loaded_ = from + units.size();
    end_ = units.empty() ? loaded_ : end_;
}

/// More of the file behind what is there; what lies in front of the next record goes.
void RecordReader::fill()
{
    buffer_.erase(0, at_);
    at_ = 0;
    if (buffer_.size() > kMostRecordBytes)
        throw EngineError(EngineErrorNumber::RecordTooLarge,
                          "A record is longer than 64 MiB; perhaps a quote is not closed.");
    window_ = std::min(window_ * 4, kLargestWindow);
    const std::uint64_t want = std::max<std::uint64_t>(window_, buffer_.size());
    append(loaded_, static_cast<std::size_t>(std::min<std::uint64_t>(want, end_ - loaded_)));
}

void RecordReader::cutColumns()
{
    fixed_.clear();
    const bool utf8 = form_.encoding.wide() || !form_.encoding.page ||
                      form_.encoding.page->number() == utf8Page().number();
    std::string_view rest = line_;
    for (const ColumnDef& column : form_.columns) {
        const std::string_view field = cut(rest, static_cast<std::size_t>(column.width), utf8);
        rest.remove_prefix(field.size());
        fixed_.push_back({withoutClosingBlanks(field), false});
    }
}

const char* RecordReader::split(const char* from, const char* end, bool final)
{
    const char* behind = splitter_.split(from, end, final);
    if (behind && form_.fixed) {
        line_ = splitter_.fields()[0].raw;
        cutColumns();
    }
    return behind;
}

bool RecordReader::readAt(std::uint64_t offset)
{
    locate(offset);
    const char* behind = nullptr;
    while (!behind) {
        const bool final = loaded_ >= end_;
        if (final && at_ == buffer_.size())
            return false;
        if (at_ < buffer_.size())
            behind = split(buffer_.data() + at_, buffer_.data() + buffer_.size(), final);
        if (!behind)
            fill();
    }
    const char* from = buffer_.data() + at_;
    whole_ = {from, static_cast<std::size_t>(behind - from)};
    start_ = offset;
    behind_ = offset + (form_.encoding.wide() ? 2 * textLength(whole_) : whole_.size());
    at_ += whole_.size();
    next_ = behind_;
    return true;
}

}  // namespace velnor::text
