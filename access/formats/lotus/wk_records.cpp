#include "access/formats/lotus/wk_records.h"

#include <algorithm>
#include <cstring>

namespace velnor::lotus {
namespace {

constexpr std::size_t kWindow = 128u << 10;  // more than the longest record
constexpr std::size_t kSinkBytes = 64u << 10;
constexpr std::size_t kHead = 4;

}  // namespace

RecordStream::RecordStream(File& file) : file_(file) {}

/// So many bytes from the next record on are in the buffer; false when the file has fewer.
bool RecordStream::need(std::size_t bytes)
{
    if (filled_ - at_ >= bytes)
        return true;
    if (buffer_.empty())
        buffer_.resize(kWindow);
    std::memmove(buffer_.data(), buffer_.data() + at_, filled_ - at_);
    start_ += at_;
    filled_ -= at_;
    at_ = 0;
    filled_ += file_.readAt(start_ + filled_, std::span(buffer_).subspan(filled_));
    return filled_ >= bytes;
}

bool RecordStream::next(Record& record)
{
    if (complete_ || !need(kHead))
        return false;
    const std::size_t length = loadLE<std::uint16_t>(&buffer_[at_ + 2]);
    if (!need(kHead + length))
        return false;
    record.type = loadLE<std::uint16_t>(&buffer_[at_]);
    record.at = position();
    record.data = std::span(buffer_).subspan(at_ + kHead, length);
    at_ += kHead + length;
    complete_ = record.type == wk::kEof;
    return true;
}

void RecordSink::put(std::uint16_t type, std::span<const std::uint8_t> data)
{
    append16(buffer_, type);
    append16(buffer_, static_cast<unsigned>(data.size()));
    raw(data);
}

void RecordSink::raw(std::span<const std::uint8_t> bytes)
{
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    if (buffer_.size() >= kSinkBytes)
        flush();
}

void RecordSink::flush()
{
    file_.writeAt(written_, buffer_);
    written_ += buffer_.size();
    buffer_.clear();
}

bool isCell(std::uint16_t type)
{
    switch (type) {
    case wk::kErr:
    case wk::kNa:
    case wk::kLabel:
    case wk::kNumber:
    case wk::kSmallNumber:
    case wk::kFormula:
    case wk::kPackedNumber:
    case wk::kDouble:
    case wk::kDoubleFormula:
        return true;
    default:
        return false;
    }
}

}  // namespace velnor::lotus
