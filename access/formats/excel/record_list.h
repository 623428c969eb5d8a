// access/formats/excel/record_list.h - records that are being changed: those of the globals.
#pragma once

#include <algorithm>
#include <vector>

#include "access/formats/excel/biff_record.h"
#include "access/formats/excel/stream_sink.h"

namespace velnor::excel {

class RecordList {
public:
    struct Entry {
        std::uint16_t type = 0;
        Bytes view;  ///< of the old stream; where `own` is not used
        std::vector<std::uint8_t> own;
        bool changed = false;
        std::size_t at = 0;  ///< of its head in the old stream

        Bytes data() const { return changed ? Bytes(own) : view; }
        /// The data to write to.
        std::vector<std::uint8_t>& edit()
        {
            if (!changed)
                own.assign(view.begin(), view.end());
            changed = true;
            return own;
        }
    };

    /// The records of a substream, up to the EOF that ends it.
    void read(Bytes stream, std::size_t at)
    {
        RecordReader reader(stream, at);
        Record record;
        int depth = 0;
        while (reader.next(record)) {
            entries_.push_back({record.type, record.data, {}, false, record.at});
            depth += isBof(record.type) ? 1 : 0;
            depth -= record.type == rec::kEof ? 1 : 0;
            if (depth == 0)
                return;
        }
    }

    std::vector<Entry>& entries() { return entries_; }
    static Entry made(std::uint16_t type, std::vector<std::uint8_t> data)
    {
        return {type, {}, std::move(data), true, 0};
    }
    void insert(std::size_t at, Entry entry)
    {
        entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(at), std::move(entry));
    }
    /// The place behind the last record of a type; npos when there is none.
    std::size_t behindLast(std::uint16_t type) const
    {
        for (std::size_t i = entries_.size(); i > 0; --i)
            if (entries_[i - 1].type == type)
                return i;
        return npos;
    }
    std::size_t find(std::uint16_t type, std::size_t from = 0) const
    {
        for (std::size_t i = from; i < entries_.size(); ++i)
            if (entries_[i].type == type)
                return i;
        return npos;
    }
    void remove(std::uint16_t type)
    {
        std::erase_if(entries_, [&](const Entry& e) { return e.type == type; });
    }
    std::uint64_t size() const
    {
        std::uint64_t bytes = 0;
        for (const Entry& e : entries_)
            bytes += 4 + e.data().size();
        return bytes;
    }
    void write(StreamSink& sink) const
    {
        for (const Entry& e : entries_)
            sink.record(e.type, e.data());
    }

    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

private:
    std::vector<Entry> entries_;
};

}  // namespace velnor::excel
