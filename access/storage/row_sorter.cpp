#include "access/storage/row_sorter.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor {
namespace {

constexpr std::size_t kMostRows = 1u << 16;    // of a chunk: an item has 16 bits for the row
constexpr std::size_t kChunkBytes = 1u << 20;  // what stays in the cache
constexpr std::size_t kHeadBytes = 6;          // of the key, in an item
constexpr std::size_t kFewItems = 192;         // sorted by comparing
constexpr std::size_t kFileBuffer = 128u << 10;
constexpr std::uint64_t kRowMask = 0xFFFF;

/// The first eight bytes of a key from `at` on, as a number that compares as they do.
std::uint64_t leadingBytes(const std::uint8_t* key, std::size_t at, std::size_t length)
{
    if (at + 8 <= length)
        return loadBE<std::uint64_t>(key + at);
    std::uint8_t bytes[8] = {};
    if (at < length)
        std::memcpy(bytes, key + at, length - at);
    return loadBE<std::uint64_t>(bytes);
}

}  // namespace

/// The smallest of the runs, again and again: a tree of losers.
class RowSorter::Merge {
public:
    Merge(File* file, std::span<const Run> runs, std::size_t keyBytes, std::size_t rowBytes)
        : file_(file), keyBytes_(keyBytes), rowBytes_(rowBytes)
    {
        for (const Run& run : runs) {
            Cursor cursor;
            cursor.from = run.from;
            cursor.to = run.to;
            cursor.at = run.rows.data();
            cursor.end = run.rows.data() + run.rows.size();
            cursors_.push_back(std::move(cursor));
        }
        while (width_ < cursors_.size())
            width_ *= 2;
        cursors_.resize(width_);
        for (Cursor& cursor : cursors_)
            load(cursor);
        losers_.resize(width_);
        winner_ = play(1);
    }

    bool isEmpty() const { return !cursors_[winner_].on; }
    const std::uint8_t* row() const { return cursors_[winner_].at; }
    void next()
    {
        Cursor& cursor = cursors_[winner_];
        cursor.at += rowBytes_;
        load(cursor);
        std::size_t now = winner_;
        for (std::size_t game = (width_ + winner_) / 2; game > 0; game /= 2)
            if (less(losers_[game], now))
                std::swap(losers_[game], now);
        winner_ = now;
    }

private:
    struct Cursor {
        const std::uint8_t* at = nullptr;
        const std::uint8_t* end = nullptr;
        std::uint64_t head = 0;
        bool on = false;
        std::uint64_t from = 0, to = 0;  // what is still in the file
        std::vector<std::uint8_t> buffer;
    };

    void load(Cursor& cursor)
    {
        if (cursor.at == cursor.end && cursor.from < cursor.to)
            refill(cursor);
        cursor.on = cursor.at != cursor.end;
        if (cursor.on)
            cursor.head = leadingBytes(cursor.at, 0, keyBytes_);
    }

    void refill(Cursor& cursor)
    {
        const std::size_t most = std::max<std::size_t>(kFileBuffer / rowBytes_, 1) * rowBytes_;
        cursor.buffer.resize(
            static_cast<std::size_t>(std::min<std::uint64_t>(most, cursor.to - cursor.from)));
        if (file_->readAt(cursor.from, cursor.buffer) != cursor.buffer.size())
            throw EngineError(EngineErrorNumber::Corrupt, "A file for sorting was cut short.");
        cursor.from += cursor.buffer.size();
        cursor.at = cursor.buffer.data();
        cursor.end = cursor.at + cursor.buffer.size();
    }

    /// Equal keys of an earlier run came first.
    bool less(std::size_t a, std::size_t b) const
    {
        const Cursor& one = cursors_[a];
        const Cursor& two = cursors_[b];
        if (!one.on || !two.on)
            return one.on;
        if (one.head != two.head)
            return one.head < two.head;
        const int by = keyBytes_ > 8 ? std::memcmp(one.at + 8, two.at + 8, keyBytes_ - 8) : 0;
        return by ? by < 0 : a < b;
    }

    std::size_t play(std::size_t game)
    {
        if (game >= width_)
            return game - width_;
        const std::size_t a = play(2 * game), b = play(2 * game + 1);
        const bool first = less(a, b);
        losers_[game] = first ? b : a;
        return first ? a : b;
    }

    File* file_;
    std::size_t keyBytes_, rowBytes_;
    std::vector<Cursor> cursors_;
    std::size_t width_ = 1;
    std::vector<std::size_t> losers_;
    std::size_t winner_ = 0;
};

RowSorter::RowSorter(FileSystem& files, std::string spillPath, std::size_t keyBytes,
                     std::size_t rowBytes, std::size_t mostBytes)
    : files_(files), spillPath_(std::move(spillPath)), keyBytes_(keyBytes), rowBytes_(rowBytes),
      mostRows_(std::clamp<std::size_t>(kChunkBytes / rowBytes_, 1, kMostRows)),
      mostBytes_(mostBytes)
{
}

RowSorter::~RowSorter() = default;

std::uint8_t* RowSorter::add()
{
    if (rows_ == mostRows_)
        endChunk();
    if (chunk_.empty())
        chunk_.resize(mostRows_ * rowBytes_);
    return chunk_.data() + rows_++ * rowBytes_;
}

std::uint64_t RowSorter::head(std::size_t row, std::size_t at) const
{
    return leadingBytes(rowAt(row), at, keyBytes_) & ~kRowMask;
}

/// Byte by byte from the last one: each pass keeps the order of the one before.
void RowSorter::sortByHeads(std::span<std::uint64_t> items)
{
    std::array<std::array<std::uint32_t, 256>, kHeadBytes> counts{};
    for (const std::uint64_t item : items)
        for (std::size_t b = 0; b < kHeadBytes; ++b)
            ++counts[b][item >> (16 + 8 * b) & 0xFF];
    other_.resize(std::max(other_.size(), items.size()));
    std::uint64_t* from = items.data();
    std::uint64_t* to = other_.data();
    for (std::size_t b = 0; b < kHeadBytes; ++b) {
        const std::size_t shift = 16 + 8 * b;
        if (counts[b][items[0] >> shift & 0xFF] == items.size())
            continue;
        std::array<std::uint32_t, 256> places;
        std::uint32_t place = 0;
        for (std::size_t value = 0; value < 256; ++value) {
            places[value] = place;
            place += counts[b][value];
        }
        for (std::size_t i = 0; i < items.size(); ++i)
            to[places[from[i] >> shift & 0xFF]++] = from[i];
        std::swap(from, to);
    }
    if (from != items.data())
        std::copy_n(from, items.size(), items.data());
}

/// Items are in the order of their rows where the keys agree in front of `at`.
void RowSorter::sortFrom(std::span<std::uint64_t> items, std::size_t at)
{
    if (at >= keyBytes_)
        return;
    for (std::uint64_t& item : items)
        item = head(item & kRowMask, at) | (item & kRowMask);
    if (items.size() > kFewItems)
        sortByHeads(items);
    else
        std::sort(items.begin(), items.end());
    for (std::size_t from = 0; from < items.size();) {
        std::size_t end = from + 1;
        while (end < items.size() && (items[end] ^ items[from]) <= kRowMask)
            ++end;
        if (end - from > 1)
            sortFrom(items.subspan(from, end - from), at + kHeadBytes);
        from = end;
    }
}

void RowSorter::endChunk()
{
    if (rows_ == 0)
        return;
    items_.resize(rows_);
    for (std::size_t i = 0; i < rows_; ++i)
        items_[i] = i;
    sortFrom(items_, 0);
    Run run;
    run.rows.resize(rows_ * rowBytes_);
    std::uint8_t* to = run.rows.data();
    for (const std::uint64_t item : items_) {
        std::memcpy(to, rowAt(item & kRowMask), rowBytes_);
        to += rowBytes_;
    }
    runBytes_ += run.rows.size();
    runs_.push_back(std::move(run));
    rows_ = 0;
    if (runBytes_ > mostBytes_)
        spill();
}

void RowSorter::openFile()
{
    if (file_)
        return;
    file_ = files_.open(spillPath_, OpenMode::Replace);
    files_.remove(spillPath_);
}

/// The runs in memory become one run of the file.
void RowSorter::spill()
{
    const auto inMemory =
        std::find_if(runs_.begin(), runs_.end(), [](const Run& run) { return !run.rows.empty(); });
    try {
        openFile();
        Run run;
        run.from = run.to = fileEnd_;
        std::vector<std::uint8_t> buffer;
        const auto flush = [&] {
            file_->writeAt(run.to, buffer);
            run.to += buffer.size();
            buffer.clear();
        };
        for (Merge merge(nullptr, std::span(inMemory, runs_.end()), keyBytes_, rowBytes_); !merge.isEmpty();
             merge.next()) {
            buffer.insert(buffer.end(), merge.row(), merge.row() + rowBytes_);
            if (buffer.size() >= kFileBuffer)
                flush();
        }
        flush();
        fileEnd_ = run.to;
        runs_.erase(inMemory, runs_.end());
        runs_.push_back(std::move(run));
        runBytes_ = 0;
    } catch (const RunError& error) {
        throw EngineError(error.code() == RunErrorNumber::DiskFull ? EngineErrorNumber::DiskFull
                                                                   : EngineErrorNumber::CannotOpen,
                          error.what());
    }
}

const std::uint8_t* RowSorter::row()
{
    if (!merge_) {
        endChunk();
        chunk_ = {};
        items_ = other_ = {};
        merge_ = std::make_unique<Merge>(file_.get(), runs_, keyBytes_, rowBytes_);
    }
    return merge_->isEmpty() ? nullptr : merge_->row();
}

void RowSorter::next()
{
    merge_->next();
}

}  // namespace velnor
