// access/formats/excel/compound_file.h - reads the container of workbooks: streams in a file of
// sectors.
//
// A file system in a file: a header, sectors of 512 or 4096 bytes chained by a table (FAT), a
// directory of 128-byte entries. Streams below 4096 bytes lie in 64-byte pieces of one further
// stream, chained by a table of their own (mini FAT).
//
// Everything is taken from the file with distrust: chains end at a repeated sector, at one that the
// file does not have, and after as many sectors as there are; a stream shorter than its size is
// given as far as it goes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/excel/stream_sink.h"
#include "platform/file_system.h"

namespace velnor::excel {

inline constexpr std::uint32_t kLastMarked = 0xFFFFFFFA;  // sector numbers are below
inline constexpr std::uint32_t kDifatSector = 0xFFFFFFFC;
inline constexpr std::uint32_t kFatSector = 0xFFFFFFFD;
inline constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
inline constexpr std::uint32_t kFreeSector = 0xFFFFFFFF;
inline constexpr std::uint32_t kMiniCutoff = 4096;
inline constexpr std::uint32_t kMiniSector = 64;
inline constexpr std::size_t kDirectoryEntry = 128;

enum class EntryType : std::uint8_t { Empty = 0, Storage = 1, Stream = 2, Root = 5 };

/// An entry of the directory; `bytes` are all of it, as they stand.
struct DirectoryEntry {
    std::vector<std::uint8_t> bytes;
    EntryType type() const { return static_cast<EntryType>(bytes[66]); }
    std::uint32_t start() const;
    /// In files of 512-byte sectors only the low half counts; the high one may be rubbish.
    std::uint64_t size(bool wide) const;
    void place(std::uint32_t start, std::uint64_t size);
    /// The name in capitals for ASCII letters; other characters as "?".
    std::string name() const;
};

class CompoundFile {
public:
    static bool looksLikeOne(ByteSpan head);

    /// Reads header, tables and directory. 3274 when they cannot be followed. `file` must stay.
    explicit CompoundFile(File& file);

    const std::vector<DirectoryEntry>& entries() const { return entries_; }
    /// The stream of this name (in capitals): in the root storage, else anywhere.
    std::optional<std::size_t> find(std::string_view name) const;
    /// The content of a stream, as far as it is there.
    std::vector<std::uint8_t> read(std::size_t entry);
    /// The sectors (in the mini stream: mini sectors) of a stream, cut to its size.
    std::vector<std::uint32_t> chainOf(std::size_t entry) const;
    bool inMiniStream(std::size_t entry) const;

    /// Copies the content of a stream in normal sectors, with zeros where the file ends before it.
    void copy(std::size_t entry, StreamSink& sink);
    std::uint64_t sizeOf(std::size_t entry) const { return entries_[entry].size(wide_); }

    std::uint32_t sectorSize() const { return sectorSize_; }
    ByteSpan header() const { return header_; }
    const std::vector<std::uint32_t>& miniFat() const { return miniFat_; }
    /// Words for people about what is wrong with the container; empty when nothing is.
    const std::vector<std::string>& faults() const { return faults_; }

private:
    void readHeader();
    void readFat();
    void readDirectory();
    std::vector<std::uint32_t> chain(std::uint32_t start, std::uint64_t most) const;
    std::vector<std::uint8_t> readChain(std::uint32_t start, std::uint64_t size);
    void readSectors(const std::vector<std::uint32_t>& sectors, std::vector<std::uint8_t>& out);
    std::vector<std::uint32_t> readWords(std::uint32_t sector);
    void fault(std::string text);

    File& file_;
    std::vector<std::uint8_t> header_;
    std::uint32_t sectorSize_ = 512;
    std::uint32_t sectorCount_ = 0;
    bool wide_ = false;  // 4096-byte sectors, sizes of 64 bits
    std::vector<std::uint32_t> fat_;
    std::vector<std::uint32_t> miniFat_;
    std::vector<DirectoryEntry> entries_;
    std::vector<std::uint8_t> miniStream_;
    std::vector<std::string> faults_;
};

}  // namespace velnor::excel
