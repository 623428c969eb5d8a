#include "access/storage/undo_journal.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"
#include "platform/paths.h"

namespace velnor {

namespace {
constexpr char kUndoMagic[] = "VELUNDO1", kReplaceMagic[] = "VELMOVE1";
constexpr std::size_t kMagicSize = 8;
constexpr std::size_t kHeadStart = kMagicSize + 4;  // magic, length of the head
constexpr std::size_t kLongestHead = 64u << 10;
constexpr std::size_t kEntryHead = 24;
constexpr std::size_t kFlushAt = 1u << 20;

std::uint64_t mix(std::uint64_t hash, std::uint64_t word)
{
    hash = (hash ^ word) * 0x9FB21C651E98DF25u;
    return hash ^ (hash >> 32);
}

std::uint64_t checksum(std::uint64_t seed, std::span<const std::uint8_t> bytes)
{
    std::uint64_t hash = mix(seed, bytes.size());
    const std::uint8_t* p = bytes.data();
    std::size_t left = bytes.size();
    for (; left >= 8; p += 8, left -= 8)
        hash = mix(hash, loadLE<std::uint64_t>(p));
    std::uint64_t rest = 0;
    if (left > 0)
        std::memcpy(&rest, p, left);
    return mix(mix(hash, rest), 0x5645u);
}

/// Over the place and the content of an entry.
std::uint64_t entryChecksum(std::uint64_t mark, const std::uint8_t* entry, std::size_t length)
{
    const std::uint64_t place = checksum(mark, {entry, 16});
    return checksum(place, {entry + kEntryHead, length});
}

class HeadWriter {
public:
    template <class T> void number(T value)
    {
        bytes_.resize(bytes_.size() + sizeof value);
        storeLE<T>(bytes_.data() + bytes_.size() - sizeof value, value);
    }
    void text(std::string_view text)
    {
        number(static_cast<std::uint16_t>(text.size()));
        bytes_.insert(bytes_.end(), text.begin(), text.end());
    }
    std::vector<std::uint8_t>& bytes() { return bytes_; }

private:
    std::vector<std::uint8_t> bytes_;
};

class HeadReader {
public:
    explicit HeadReader(std::span<const std::uint8_t> bytes) : reader_(bytes, "The undo journal") {}
    template <class T> T number()
    {
        const T value = loadLE<T>(reader_.bytes(at_, sizeof(T)).data());
        at_ += sizeof(T);
        return value;
    }
    std::string text()
    {
        const auto length = number<std::uint16_t>();
        const std::string_view found = reader_.text(at_, length);
        at_ += length;
        return std::string(found);
    }

private:
    ByteReader reader_;
    std::size_t at_ = kHeadStart;
};

/// "*.DBT" for a companion of the same base name.
std::string nameInJournal(std::string_view path, std::string_view mainPath)
{
    const std::string_view base = paths::baseName(path);
    if (!paths::sameName(base, paths::baseName(mainPath)))
        return std::string(paths::fileName(path));
    std::string name("*");
    name += paths::fileName(path).substr(base.size());
    return name;
}

std::string pathFromJournal(std::string_view name, std::string_view mainPath)
{
    if (name.find_first_of("\\/:") != std::string_view::npos || name.empty() || name == "..")
        throw EngineError(EngineErrorNumber::UnexpectedFormat, "The undo journal names a folder");
    std::string file(name);
    if (file.front() == '*')
        file.replace(0, 1, paths::baseName(mainPath));
    return paths::join(paths::folder(mainPath), file);
}

const char* magicOf(JournalHead::Kind kind)
{
    return kind == JournalHead::Kind::Undo ? kUndoMagic : kReplaceMagic;
}

JournalHead parseHead(std::span<const std::uint8_t> bytes, std::string_view mainPath)
{
    HeadReader in(bytes);
    JournalHead head;
    head.length = bytes.size();
    head.mark = in.number<std::uint64_t>();
    head.owner.process = in.number<std::uint32_t>();
    head.owner.startTime = in.number<std::uint64_t>();
    head.owner.bootId = in.text();
    const auto count = in.number<std::uint16_t>();
    for (unsigned i = 0; i < count; ++i) {
        FileBefore file;
        file.missing = in.number<std::uint8_t>() != 0;
        file.size = in.number<std::uint64_t>();
        file.path = pathFromJournal(in.text(), mainPath);
        head.files.push_back(std::move(file));
    }
    return head;
}
}  // namespace

std::uint64_t newJournalMark()
{
    static std::uint64_t count = 0;
    const auto now = std::chrono::system_clock::now().time_since_epoch().count();
    const JournalOwner& self = JournalOwner::thisProcess();
    return mix(mix(mix(++count, self.process), self.startTime), static_cast<std::uint64_t>(now));
}

std::string journalPath(std::string_view mainPath)
{
    return std::string(mainPath) + "-undo";
}

std::vector<std::uint8_t> journalHeadBytes(const JournalHead& head, std::string_view mainPath)
{
    HeadWriter out;
    const char* magic = magicOf(head.kind);
    out.bytes().assign(magic, magic + kMagicSize);
    out.number(std::uint32_t{0});
    out.number(head.mark);
    out.number(head.owner.process);
    out.number(head.owner.startTime);
    out.text(head.owner.bootId);
    out.number(static_cast<std::uint16_t>(head.files.size()));
    for (const FileBefore& file : head.files) {
        out.number(static_cast<std::uint8_t>(file.missing));
        out.number(file.size);
        out.text(nameInJournal(file.path, mainPath));
    }
    std::vector<std::uint8_t>& bytes = out.bytes();
    storeLE(bytes.data() + kMagicSize, static_cast<std::uint32_t>(bytes.size() + 8));
    out.number(checksum(head.mark, bytes));
    return std::move(bytes);
}

std::optional<JournalHead> readJournalHead(File& journal, std::string_view mainPath)
{
    std::uint8_t start[kHeadStart + 8];
    if (journal.readAt(0, start) != sizeof start)
        return std::nullopt;
    const bool replaces = std::memcmp(start, kReplaceMagic, kMagicSize) == 0;
    if (!replaces && std::memcmp(start, kUndoMagic, kMagicSize) != 0)
        return std::nullopt;
    const auto length = loadLE<std::uint32_t>(start + kMagicSize);
    if (length < sizeof start + 8 || length > kLongestHead)
        return std::nullopt;
    std::vector<std::uint8_t> bytes(length);
    if (journal.readAt(0, bytes) != length)
        return std::nullopt;
    const std::size_t summed = length - 8;
    const auto mark = loadLE<std::uint64_t>(bytes.data() + kHeadStart);
    if (checksum(mark, {bytes.data(), summed}) != loadLE<std::uint64_t>(bytes.data() + summed))
        return std::nullopt;
    try {
        JournalHead head = parseHead({bytes.data(), summed}, mainPath);
        head.length = length;
        head.kind = replaces ? JournalHead::Kind::Replace : JournalHead::Kind::Undo;
        return head;
    } catch (const EngineError&) {
        return std::nullopt;  // not of our making
    }
}

namespace {
/// The files of a journal, opened as they are needed.
class FilesToPutBack {
public:
    FilesToPutBack(FileSystem& files, const JournalHead& head)
        : files_(files), before_(head.files), open_(head.files.size())
    {
    }

    /// Null for one that is gone, or that the commit made.
    File* file(std::size_t number)
    {
        const FileBefore& before = before_[number];
        if (!open_[number] && !before.missing && files_.fileExists(before.path))
            open_[number] = files_.open(before.path, OpenMode::ReadWrite);
        return open_[number].get();
    }
    void finish(std::string_view folder)
    {
        bool removed = false;
        for (std::size_t i = 0; i < before_.size(); ++i) {
            if (File* kept = file(i)) {
                if (kept->size() != before_[i].size)
                    kept->resize(before_[i].size);
                kept->sync();
            } else if (before_[i].missing && files_.fileExists(before_[i].path)) {
                files_.remove(before_[i].path);
                removed = true;
            }
        }
        if (removed)
            files_.syncFolder(folder);
    }

private:
    FileSystem& files_;
    const std::vector<FileBefore>& before_;
    std::vector<std::unique_ptr<File>> open_;
};
}  // namespace

void undoFiles(FileSystem& files, std::string_view mainPath, File& journal, const JournalHead& head)
{
    FilesToPutBack targets(files, head);
    std::vector<std::uint8_t> entry(kEntryHead);
    std::uint64_t at = head.length;
    while (journal.readAt(at, {entry.data(), kEntryHead}) == kEntryHead) {
        const auto file = loadLE<std::uint32_t>(entry.data());
        const auto length = loadLE<std::uint32_t>(entry.data() + 4);
        const auto offset = loadLE<std::uint64_t>(entry.data() + 8);
        if (file >= head.files.size() || length > UndoJournal::kLongestPiece)
            break;
        const std::uint64_t before = head.files[file].size;
        if (offset > before || length > before - offset)
            break;
        entry.resize(std::max<std::size_t>(entry.size(), kEntryHead + length));
        const std::span<std::uint8_t> content{entry.data() + kEntryHead, length};
        if (journal.readAt(at + kEntryHead, content) != length ||
            entryChecksum(head.mark, entry.data(), length) !=
                loadLE<std::uint64_t>(entry.data() + 16))
            break;
        if (File* target = targets.file(file))
            target->writeAt(offset, content);
        at += kEntryHead + length;
    }
    targets.finish(paths::folder(mainPath));
}

UndoJournal::UndoJournal(FileSystem& files, std::string_view mainPath,
                         std::vector<FileBefore> before)
    : files_(files), mainPath_(mainPath), path_(journalPath(mainPath))
{
    head_.mark = newJournalMark();
    head_.owner = JournalOwner::thisProcess();
    head_.files = std::move(before);
    buffer_ = journalHeadBytes(head_, mainPath_);
    head_.length = buffer_.size();
    file_ = files_.open(path_, OpenMode::Replace);
}

void UndoJournal::save(std::uint32_t file, File& from, std::uint64_t offset, std::uint64_t length)
{
    const std::size_t at = buffer_.size();
    buffer_.resize(at + kEntryHead + length);
    std::uint8_t* entry = buffer_.data() + at;
    storeLE(entry, file);
    storeLE(entry + 4, static_cast<std::uint32_t>(length));
    storeLE(entry + 8, offset);
    if (from.readAt(offset, {entry + kEntryHead, length}) != length)
        throw EngineError(EngineErrorNumber::Corrupt,
                          head_.files[file].path + " was made shorter by another program");
    storeLE(entry + 16, entryChecksum(head_.mark, entry, length));
    if (buffer_.size() >= kFlushAt)
        flush();
}

void UndoJournal::flush()
{
    file_->writeAt(end_, buffer_);
    end_ += buffer_.size();
    buffer_.clear();
}

void UndoJournal::seal()
{
    flush();
    file_->sync();
    files_.syncFolder(paths::folder(mainPath_));
    buffer_ = {};
}

void UndoJournal::cut()
{
    file_->resize(0);
    cut_ = true;
    try {
        file_->sync();
    } catch (const RunError&) {
        // Without the name there is no journal either.
        file_.reset();
        files_.remove(path_);
        files_.syncFolder(paths::folder(mainPath_));
    }
}

void UndoJournal::undo()
{
    undoFiles(files_, mainPath_, *file_, head_);
    cut();
}

void UndoJournal::remove() noexcept
{
    try {
        if (file_ && !cut_)
            file_->resize(0);
    } catch (const RunError&) {
        // removing it does the same
    }
    try {
        file_.reset();
        if (files_.fileExists(path_))
            files_.remove(path_);
    } catch (const RunError&) {
        // 2. an empty journal says nothing, and the next commit takes its place
    }
}

}  // namespace velnor
