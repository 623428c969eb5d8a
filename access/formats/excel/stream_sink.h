// access/formats/excel/stream_sink.h - where a workbook stream is written to: a file, in large
// pieces, or nowhere, to learn its size first.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "access/formats/excel/biff_record.h"
#include "platform/file_system.h"

namespace velnor::excel {

class StreamSink {
public:
    /// Counts only.
    StreamSink() = default;
    /// Writes one byte after the other from `at` on.
    StreamSink(File& file, std::uint64_t at) : file_(&file), at_(at), buffer_(kBuffer) {}

    void put(Bytes bytes)
    {
        size_ += bytes.size();
        if (!file_)
            return;
        if (bytes.size() > kBuffer - used_) {
            flush();
            if (bytes.size() > kBuffer) {
                file_->writeAt(at_, bytes);
                at_ += bytes.size();
                return;
            }
        }
        if (!bytes.empty())
            std::memcpy(buffer_.data() + used_, bytes.data(), bytes.size());
        used_ += bytes.size();
    }
    void record(std::uint16_t type, Bytes data)
    {
        std::uint8_t head[4];
        storeLE(head, type);
        storeLE(head + 2, static_cast<std::uint16_t>(data.size()));
        put(head);
        put(data);
    }
    void zeros(std::uint64_t count)
    {
        static constexpr std::uint8_t kZeros[4096] = {};
        for (; count > sizeof kZeros; count -= sizeof kZeros)
            put(kZeros);
        put(Bytes(kZeros, static_cast<std::size_t>(count)));
    }
    void flush()
    {
        if (used_ > 0)
            file_->writeAt(at_, Bytes(buffer_.data(), used_));
        at_ += used_;
        used_ = 0;
    }
    std::uint64_t size() const { return size_; }

private:
    static constexpr std::size_t kBuffer = 128u << 10;
    File* file_ = nullptr;
    std::uint64_t at_ = 0;
    std::uint64_t size_ = 0;
    std::vector<std::uint8_t> buffer_;
    std::size_t used_ = 0;
};

}  // namespace velnor::excel
