#include "access/formats/excel/compound_file.h"

#include <algorithm>
#include <cstring>

#include "access/storage/byte_reader.h"

namespace velnor::excel {
namespace {

constexpr std::uint8_t kMagic[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr std::size_t kHeaderSize = 512;
constexpr std::size_t kHeaderFatAt = 76;
constexpr std::size_t kHeaderFatCount = 109;
constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;

[[noreturn]] void refuse(const char* why)
{
    throw EngineError(EngineErrorNumber::UnexpectedFormat,
                      std::string("Not a workbook that can be read: ") + why + ".");
}

}  // namespace

std::uint32_t DirectoryEntry::start() const
{
    return loadLE<std::uint32_t>(bytes.data() + 116);
}

std::uint64_t DirectoryEntry::size(bool wide) const
{
    return wide ? loadLE<std::uint64_t>(bytes.data() + 120)
                : loadLE<std::uint32_t>(bytes.data() + 120);
}

void DirectoryEntry::place(std::uint32_t start, std::uint64_t size)
{
    storeLE(bytes.data() + 116, start);
    storeLE(bytes.data() + 120, size);
}

std::string DirectoryEntry::name() const
{
    const std::size_t length = std::min<std::size_t>(loadLE<std::uint16_t>(bytes.data() + 64), 64);
    std::string name;
    for (std::size_t at = 0; at + 2 < length + 1 && at + 1 < 64; at += 2) {
        const auto c = loadLE<std::uint16_t>(bytes.data() + at);
        if (c == 0)
            break;
        const char small = c < 0x80 ? static_cast<char>(c) : '?';
        name += small >= 'a' && small <= 'z' ? static_cast<char>(small - 'a' + 'A') : small;
    }
    return name;
}

bool CompoundFile::looksLikeOne(ByteSpan head)
{
    return head.size() >= sizeof kMagic && std::memcmp(head.data(), kMagic, sizeof kMagic) == 0;
}

CompoundFile::CompoundFile(File& file) : file_(file)
{
    readHeader();
    readFat();
    readDirectory();
}

void CompoundFile::fault(std::string text)
{
    constexpr std::size_t kMost = 100;
    if (faults_.size() < kMost)
        faults_.push_back(std::move(text));
}

void CompoundFile::readHeader()
{
    header_.resize(kHeaderSize);
    if (file_.readAt(0, header_) < kHeaderSize || !looksLikeOne(header_))
        refuse("its head is cut off");
    const auto shift = loadLE<std::uint16_t>(header_.data() + 30);
    if (shift != 9 && shift != 12)
        refuse("its sectors have no known size");
    if (loadLE<std::uint16_t>(header_.data() + 28) != 0xFFFE)
        fault("the byte order mark is wrong");
    sectorSize_ = 1u << shift;
    wide_ = shift == 12;
    const std::uint64_t size = file_.size();
    const std::uint64_t sectors =
        size <= sectorSize_ ? 0 : (size - sectorSize_ + sectorSize_ - 1) / sectorSize_;
    sectorCount_ = static_cast<std::uint32_t>(std::min<std::uint64_t>(sectors, kLastMarked));
}

std::vector<std::uint32_t> CompoundFile::readWords(std::uint32_t sector)
{
    std::vector<std::uint32_t> words(sectorSize_ / 4, kFreeSector);
    file_.readAt((std::uint64_t{sector} + 1) * sectorSize_,
                 {reinterpret_cast<std::uint8_t*>(words.data()), sectorSize_});
    return words;
}

/// The FAT's own sectors stand in the header, and from the 110th on in a chain of sectors (DIFAT).
void CompoundFile::readFat()
{
    std::vector<std::uint32_t> sectors;
    for (std::size_t i = 0; i < kHeaderFatCount; ++i)
        sectors.push_back(loadLE<std::uint32_t>(header_.data() + kHeaderFatAt + 4 * i));
    auto next = loadLE<std::uint32_t>(header_.data() + 68);
    for (std::uint32_t steps = 0; next < sectorCount_; ++steps) {
        if (steps > sectorCount_) {
            fault("the list of FAT sectors runs in a circle");
            break;
        }
        std::vector<std::uint32_t> words = readWords(next);
        next = words.back();
        words.pop_back();
        sectors.insert(sectors.end(), words.begin(), words.end());
        if (sectors.size() > sectorCount_ + kHeaderFatCount + sectorSize_)
            break;
    }
    for (const std::uint32_t sector : sectors) {
        if (sector == kFreeSector)
            continue;
        if (sector >= sectorCount_) {
            fault("a FAT sector lies behind the end of the file");
            continue;
        }
        if (fat_.size() >= sectorCount_)
            break;  // a longer table says nothing about this file
        const std::vector<std::uint32_t> words = readWords(sector);
        fat_.insert(fat_.end(), words.begin(), words.end());
    }
}

/// At most `most` sectors. Ends before a sector that cannot be: what was there is given.
std::vector<std::uint32_t> CompoundFile::chain(std::uint32_t start, std::uint64_t most) const
{
    std::vector<std::uint32_t> sectors;
    std::vector<bool> seen(sectorCount_);
    for (std::uint32_t at = start; at < sectorCount_ && !seen[at] && sectors.size() < most;
         at = at < fat_.size() ? fat_[at] : kEndOfChain) {
        seen[at] = true;
        sectors.push_back(at);
    }
    return sectors;
}

void CompoundFile::readSectors(const std::vector<std::uint32_t>& sectors,
                               std::vector<std::uint8_t>& out)
{
    for (std::size_t i = 0; i < sectors.size();) {
        std::size_t run = 1;
        while (i + run < sectors.size() && sectors[i + run] == sectors[i] + run)
            ++run;
        const std::size_t at = out.size();
        out.resize(at + run * sectorSize_);
        file_.readAt((std::uint64_t{sectors[i]} + 1) * sectorSize_,
                     {out.data() + at, run * sectorSize_});
        i += run;
    }
}

std::vector<std::uint8_t> CompoundFile::readChain(std::uint32_t start, std::uint64_t size)
{
    const std::vector<std::uint32_t> sectors =
        chain(start, size / sectorSize_ + (size % sectorSize_ != 0));
    std::vector<std::uint8_t> out;
    out.reserve(sectors.size() * sectorSize_);
    readSectors(sectors, out);
    if (out.size() > size)
        out.resize(static_cast<std::size_t>(size));
    return out;
}

void CompoundFile::readDirectory()
{
    const auto start = loadLE<std::uint32_t>(header_.data() + 48);
    const std::vector<std::uint32_t> sectors = chain(start, sectorCount_);
    std::vector<std::uint8_t> bytes;
    readSectors(sectors, bytes);
    for (std::size_t at = 0; at + kDirectoryEntry <= bytes.size(); at += kDirectoryEntry) {
        const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        entries_.push_back({{first, first + kDirectoryEntry}});
    }
    if (entries_.empty())
        refuse("it has no directory");
    const auto mini = loadLE<std::uint32_t>(header_.data() + 60);
    for (const std::uint32_t sector : chain(mini, sectorCount_)) {
        const std::vector<std::uint32_t> words = readWords(sector);
        miniFat_.insert(miniFat_.end(), words.begin(), words.end());
    }
}

std::optional<std::size_t> CompoundFile::find(std::string_view name) const
{
    // The siblings below the root are a tree; a file with a broken one still has its entries.
    std::vector<bool> seen(entries_.size());
    std::vector<std::uint32_t> open{loadLE<std::uint32_t>(entries_[0].bytes.data() + 76)};
    while (!open.empty()) {
        const std::uint32_t at = open.back();
        open.pop_back();
        if (at == kNoEntry || at >= entries_.size() || seen[at])
            continue;
        seen[at] = true;
        if (entries_[at].type() == EntryType::Stream && entries_[at].name() == name)
            return at;
        open.push_back(loadLE<std::uint32_t>(entries_[at].bytes.data() + 68));
        open.push_back(loadLE<std::uint32_t>(entries_[at].bytes.data() + 72));
    }
    for (std::size_t i = 0; i < entries_.size(); ++i)
        if (entries_[i].type() == EntryType::Stream && entries_[i].name() == name)
            return i;
    return std::nullopt;
}

bool CompoundFile::inMiniStream(std::size_t entry) const
{
    return entry != 0 && entries_[entry].size(wide_) < kMiniCutoff;
}

std::vector<std::uint32_t> CompoundFile::chainOf(std::size_t entry) const
{
    const std::uint64_t size = entries_[entry].size(wide_);
    const std::uint32_t start = entries_[entry].start();
    if (!inMiniStream(entry))
        return chain(start, size / sectorSize_ + (size % sectorSize_ != 0));
    std::vector<std::uint32_t> pieces;
    std::vector<bool> seen(miniFat_.size());
    for (std::uint32_t at = start;
         at < miniFat_.size() && !seen[at] && pieces.size() * kMiniSector < size;
         at = miniFat_[at]) {
        seen[at] = true;
        pieces.push_back(at);
    }
    return pieces;
}

void CompoundFile::copy(std::size_t entry, StreamSink& sink)
{
    constexpr std::size_t kAtOnce = 128;  // sectors
    std::uint64_t left = sizeOf(entry);
    const std::vector<std::uint32_t> sectors = chainOf(entry);
    std::vector<std::uint8_t> piece;
    for (std::size_t i = 0; i < sectors.size() && left > 0; i += kAtOnce) {
        const auto first = sectors.begin() + static_cast<std::ptrdiff_t>(i);
        const auto count = std::min(kAtOnce, sectors.size() - i);
        piece.clear();
        readSectors({first, first + static_cast<std::ptrdiff_t>(count)}, piece);
        const auto used = static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), left));
        sink.put(Bytes(piece.data(), used));
        left -= used;
    }
}

std::vector<std::uint8_t> CompoundFile::read(std::size_t entry)
{
    const std::uint64_t size = entries_[entry].size(wide_);
    if (!inMiniStream(entry))
        return readChain(entries_[entry].start(), size);
    if (miniStream_.empty())
        miniStream_ = readChain(entries_[0].start(), sizeOf(0));
    std::vector<std::uint8_t> out;
    for (const std::uint32_t piece : chainOf(entry)) {
        const std::size_t at = std::size_t{piece} * kMiniSector;
        if (at >= miniStream_.size())
            break;
        const std::size_t count = std::min<std::size_t>(kMiniSector, miniStream_.size() - at);
        const auto first = miniStream_.begin() + static_cast<std::ptrdiff_t>(at);
        out.insert(out.end(), first, first + static_cast<std::ptrdiff_t>(count));
    }
    if (out.size() > size)
        out.resize(static_cast<std::size_t>(size));
    return out;
}

}  // namespace velnor::excel
