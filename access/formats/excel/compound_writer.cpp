#include "access/formats/excel/compound_writer.h"

#include <algorithm>
#include <cstring>

#include "access/storage/byte_reader.h"

namespace velnor::excel {
namespace {

constexpr std::size_t kHeaderSize = 512;
constexpr std::size_t kHeaderFatCount = 109;
constexpr std::uint8_t kEmptyHeader[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1, 0, 0, 0, 0,
                                         0,    0,    0,    0,    0,    0,    0,    0,    0, 0, 0, 0,
                                         0x3E, 0,    3,    0,    0xFE, 0xFF, 9,    0,    6, 0};

class Layout {
public:
    Layout(std::vector<std::uint8_t> header, std::vector<DirectoryEntry> entries,
           std::vector<std::uint32_t> miniFat, std::uint32_t sectorSize)
        : header_(std::move(header)), entries_(std::move(entries)), miniFat_(std::move(miniFat)),
          sectorSize_(sectorSize)
    {
    }

    /// The next stream lies behind those placed so far.
    void place(std::size_t entry, std::uint64_t size)
    {
        const std::uint32_t start = addChain(sectorsFor(size));
        entries_[entry].place(size == 0 ? kEndOfChain : start, size);
    }

    /// Lays out mini FAT, directory, FAT and DIFAT behind the streams, and fills the header.
    void finish()
    {
        const std::size_t words = sectorSize_ / 4;
        miniFat_.resize((miniFat_.size() + words - 1) / words * words, kFreeSector);
        const auto miniSectors = static_cast<std::uint32_t>(miniFat_.size() / words);
        const std::uint32_t miniStart = addChain(miniSectors);
        while (entries_.size() * kDirectoryEntry % sectorSize_ != 0)
            entries_.push_back(emptyEntry());
        const auto directorySectors =
            static_cast<std::uint32_t>(entries_.size() * kDirectoryEntry / sectorSize_);
        const std::uint32_t directoryStart = addChain(directorySectors);

        std::size_t fatSectors = 0, difatSectors = 0;
        for (std::size_t total = 0; total != fat_.size() + fatSectors + difatSectors;) {
            total = fat_.size() + fatSectors + difatSectors;
            fatSectors = (total + words - 1) / words;
            difatSectors = fatSectors <= kHeaderFatCount
                               ? 0
                               : (fatSectors - kHeaderFatCount + words - 2) / (words - 1);
        }
        const auto fatStart = static_cast<std::uint32_t>(fat_.size());
        const auto difatStart = static_cast<std::uint32_t>(fatStart + fatSectors);
        fat_.insert(fat_.end(), fatSectors, kFatSector);
        fat_.insert(fat_.end(), difatSectors, kDifatSector);
        fat_.resize(fatSectors * words, kFreeSector);
        listFatSectors(fatStart, fatSectors, difatStart, difatSectors, words);

        storeLE(header_.data() + 28, std::uint16_t{0xFFFE});
        storeLE(header_.data() + 40, sectorSize_ == 4096 ? directorySectors : 0u);
        storeLE(header_.data() + 44, static_cast<std::uint32_t>(fatSectors));
        storeLE(header_.data() + 48, directoryStart);
        storeLE(header_.data() + 60, miniSectors ? miniStart : kEndOfChain);
        storeLE(header_.data() + 64, miniSectors);
        storeLE(header_.data() + 68, difatSectors ? difatStart : kEndOfChain);
        storeLE(header_.data() + 72, static_cast<std::uint32_t>(difatSectors));
    }

    void writeHeader(StreamSink& sink) const
    {
        sink.put(header_);
        sink.zeros(sectorSize_ - header_.size());
    }
    /// What finish() laid out, in that order.
    void writeTables(StreamSink& sink) const
    {
        putWords(sink, miniFat_);
        for (const DirectoryEntry& entry : entries_)
            sink.put(entry.bytes);
        putWords(sink, fat_);
        putWords(sink, difat_);
    }
    /// Zeros up to a whole sector behind a stream of this size.
    void pad(StreamSink& sink, std::uint64_t size) const
    {
        sink.zeros(sectorsFor(size) * std::uint64_t{sectorSize_} - size);
    }

private:
    std::uint64_t sectorsFor(std::uint64_t size) const
    {
        return size / sectorSize_ + (size % sectorSize_ != 0);
    }

    static DirectoryEntry emptyEntry()
    {
        DirectoryEntry entry{std::vector<std::uint8_t>(kDirectoryEntry)};
        std::fill_n(entry.bytes.begin() + 68, 12, std::uint8_t{0xFF});
        return entry;
    }

    std::uint32_t addChain(std::uint64_t sectors)
    {
        const std::size_t start = fat_.size();
        if (start + sectors >= kLastMarked / 2)
            throw EngineError(EngineErrorNumber::DatabaseFull, "The workbook gets too large.");
        for (std::uint64_t i = 1; i <= sectors; ++i)
            fat_.push_back(i == sectors ? kEndOfChain : static_cast<std::uint32_t>(start + i));
        return static_cast<std::uint32_t>(start);
    }

    void listFatSectors(std::uint32_t fatStart, std::size_t fatSectors, std::uint32_t difatStart,
                        std::size_t difatSectors, std::size_t words)
    {
        const auto fatSector = [&](std::size_t i) {
            return i < fatSectors ? static_cast<std::uint32_t>(fatStart + i) : kFreeSector;
        };
        for (std::size_t i = 0; i < kHeaderFatCount; ++i)
            storeLE(header_.data() + 76 + 4 * i, fatSector(i));
        std::size_t next = kHeaderFatCount;
        for (std::size_t n = 0; n < difatSectors; ++n) {
            for (std::size_t i = 0; i + 1 < words; ++i)
                difat_.push_back(fatSector(next++));
            difat_.push_back(n + 1 < difatSectors ? static_cast<std::uint32_t>(difatStart + n + 1)
                                                  : kEndOfChain);
        }
    }

    static void putWords(StreamSink& sink, const std::vector<std::uint32_t>& words)
    {
        sink.put({reinterpret_cast<const std::uint8_t*>(words.data()), words.size() * 4});
    }

    std::vector<std::uint8_t> header_;
    std::vector<DirectoryEntry> entries_;
    std::vector<std::uint32_t> miniFat_;
    std::uint32_t sectorSize_;
    std::vector<std::uint32_t> fat_, difat_;
};

/// A stream that leaves the mini stream frees its pieces there, but for those that another one
/// uses.
std::vector<std::uint32_t> miniFatWithout(const CompoundFile& old, std::size_t leaving)
{
    std::vector<std::uint32_t> fat = old.miniFat();
    if (!old.inMiniStream(leaving))
        return fat;
    std::vector<bool> used(fat.size());
    for (std::size_t i = 1; i < old.entries().size(); ++i)
        if (i != leaving && old.entries()[i].type() == EntryType::Stream && old.inMiniStream(i))
            for (const std::uint32_t piece : old.chainOf(i))
                used[piece] = true;
    for (const std::uint32_t piece : old.chainOf(leaving))
        if (!used[piece])
            fat[piece] = kFreeSector;
    return fat;
}

DirectoryEntry newEntry(std::string_view name, EntryType type, std::uint32_t child)
{
    DirectoryEntry entry{std::vector<std::uint8_t>(kDirectoryEntry)};
    for (std::size_t i = 0; i < name.size(); ++i)
        entry.bytes[2 * i] = static_cast<std::uint8_t>(name[i]);
    storeLE(entry.bytes.data() + 64, static_cast<std::uint16_t>(2 * name.size() + 2));
    entry.bytes[66] = static_cast<std::uint8_t>(type);
    entry.bytes[67] = 1;  // black
    std::fill_n(entry.bytes.begin() + 68, 8, std::uint8_t{0xFF});
    storeLE(entry.bytes.data() + 76, child);
    entry.place(kEndOfChain, 0);
    return entry;
}

}  // namespace

void writeCompound(File& out, CompoundFile& old, std::size_t entry, std::uint64_t size,
                   const std::function<void(StreamSink&)>& writeStream)
{
    Layout layout({old.header().begin(), old.header().end()}, old.entries(),
                  miniFatWithout(old, entry), old.sectorSize());
    std::vector<std::size_t> kept;  // in normal sectors; the root is the mini stream
    for (std::size_t i = 0; i < old.entries().size(); ++i) {
        const EntryType type = old.entries()[i].type();
        const bool stream = i == 0 || (type == EntryType::Stream && !old.inMiniStream(i));
        if (stream && i != entry)
            kept.push_back(i);
    }
    const auto available = [&](std::size_t i) {
        return std::min<std::uint64_t>(old.sizeOf(i),
                                       old.chainOf(i).size() * std::uint64_t{old.sectorSize()});
    };
    for (const std::size_t i : kept)
        layout.place(i, available(i));
    layout.place(entry, size);
    layout.finish();

    StreamSink sink(out, 0);
    layout.writeHeader(sink);
    for (const std::size_t i : kept) {
        old.copy(i, sink);
        layout.pad(sink, available(i));
    }
    writeStream(sink);
    layout.pad(sink, size);
    layout.writeTables(sink);
    sink.flush();
}

void writeNewCompound(File& out, std::string_view streamName, std::uint64_t size,
                      const std::function<void(StreamSink&)>& writeStream)
{
    std::vector<std::uint8_t> header(kHeaderSize);
    std::copy(std::begin(kEmptyHeader), std::end(kEmptyHeader), header.begin());
    storeLE(header.data() + 56, kMiniCutoff);
    Layout layout(std::move(header),
                  {newEntry("Root Entry", EntryType::Root, 1),
                   newEntry(streamName, EntryType::Stream, 0xFFFFFFFF)},
                  {}, 512);
    layout.place(1, size);
    layout.finish();
    StreamSink sink(out, 0);
    layout.writeHeader(sink);
    writeStream(sink);
    layout.pad(sink, size);
    layout.writeTables(sink);
    sink.flush();
}

}  // namespace velnor::excel
