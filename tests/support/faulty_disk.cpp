#include "tests/support/faulty_disk.h"

#include <algorithm>
#include <cstring>

#include "platform/paths.h"

namespace velnor::testing {

namespace {
constexpr std::size_t kSector = 512;

/// The key of a path: capitals, single backslashes, none at the end.
std::string keyOf(std::string_view path)
{
    std::string key;
    for (const char c : paths::foldName(path))
        if (c != '\\' || key.size() < 2 || key.back() != '\\')
            key += c;
    while (!key.empty() && key.back() == '\\')
        key.pop_back();
    return key;
}

std::string folderKey(std::string_view path)
{
    return std::string(paths::folder(keyOf(path)));
}
}  // namespace

struct FaultyDisk::Change {
    std::uint64_t at;  // the new length, for a change of length
    Bytes bytes;
    bool length;

    void apply(Bytes& content) const
    {
        if (length)
            return content.resize(at);
        write(content, 0, bytes.size());
    }
    void write(Bytes& content, std::size_t from, std::size_t to) const
    {
        if (from >= to)
            return;
        if (content.size() < at + to)
            content.resize(at + to);
        std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                  bytes.begin() + static_cast<std::ptrdiff_t>(to),
                  content.begin() + static_cast<std::ptrdiff_t>(at + from));
    }
};

struct FaultyDisk::Content {
    Bytes now;
    Bytes safe;
    std::vector<Change> unsafe;
    std::map<const Handle*, LockKind> locks;

    void change(Change change)
    {
        change.apply(now);
        unsafe.push_back(std::move(change));
    }
    void sync()
    {
        for (const Change& change : unsafe)
            change.apply(safe);
        unsafe.clear();
    }
};

class FaultyDisk::Handle final : public File {
public:
    Handle(FaultyDisk& disk, const Entry& entry, bool writable)
        : disk_(disk), content_(entry.content), name_(entry.name), life_(disk.life_),
          writable_(writable)
    {
    }
    ~Handle() override { content_->locks.erase(this); }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> out) override
    {
        check();
        const Bytes& bytes = content_->now;
        if (offset >= bytes.size())
            return 0;
        const std::size_t count = std::min<std::size_t>(out.size(), bytes.size() - offset);
        std::memcpy(out.data(), bytes.data() + offset, count);
        return count;
    }

    void writeAt(std::uint64_t offset, ByteSpan bytes) override
    {
        checkWritable();
        const bool grows = offset + bytes.size() > content_->now.size();
        disk_.change(grows ? Room::Taken : Room::NotTaken, name_, [&] {
            const std::size_t part = bytes.empty() ? 0 : disk_.random_() % bytes.size();
            if (part > 0 && disk_.chance(50))
                put(offset, bytes.first(part));
        });
        put(offset, bytes);
    }

    std::uint64_t size() override
    {
        check();
        return content_->now.size();
    }

    void resize(std::uint64_t bytes) override
    {
        checkWritable();
        const bool grows = bytes > content_->now.size();
        disk_.change(grows ? Room::Taken : Room::NotTaken, name_, [] {});
        content_->change({bytes, {}, true});
    }

    void sync() override
    {
        check();
        disk_.change(Room::NotTaken, name_, [] {});
        content_->sync();
    }

    bool tryLock(LockKind kind) override
    {
        check();
        for (const auto& [other, held] : content_->locks)
            if (other != this && (kind == LockKind::Exclusive || held == LockKind::Exclusive))
                return false;
        content_->locks[this] = kind;
        return true;
    }

    void unlock() override { content_->locks.erase(this); }

private:
    void put(std::uint64_t offset, ByteSpan bytes)
    {
        content_->change({offset, Bytes(bytes.begin(), bytes.end()), false});
    }
    void check() const
    {
        disk_.needPower();
        if (life_ != disk_.life_)
            throw RunError(RunErrorNumber::DeviceIo, name_ + " was opened before the power cut");
    }
    void checkWritable() const
    {
        check();
        if (!writable_)
            throw RunError(RunErrorNumber::PathFileAccess, name_ + " is open for reading");
    }

    FaultyDisk& disk_;
    std::shared_ptr<Content> content_;
    std::string name_;
    unsigned life_;
    bool writable_;
};

FaultyDisk::FaultyDisk(unsigned seed) : random_(seed), folders_{"C:"} {}

FaultyDisk::~FaultyDisk() = default;

void FaultyDisk::failAt(long n, RunErrorNumber error, Lasts lasts)
{
    failIn_ = n;
    failWith_ = error;
    failLasts_ = lasts;
    failed_ = false;
}

void FaultyDisk::cutAt(long n)
{
    cutAt_ = changes_ + n;
}

void FaultyDisk::clearFaults()
{
    cutAt_ = failIn_ = kNever;
    failed_ = dead_ = false;
}

template <class Part> void FaultyDisk::change(Room room, std::string_view path, Part part)
{
    needPower();
    if (++changes_ >= cutAt_) {
        part();
        dead_ = true;
        needPower();
    }
    const bool counts = failWith_ != RunErrorNumber::DiskFull || room == Room::Taken;
    if (failIn_ == kNever || !counts || --failIn_ > 0)
        return;
    failIn_ = failLasts_ == Lasts::Once ? kNever : 1;
    failed_ = true;
    part();
    throw RunError(failWith_, std::string(path) + ": the disk refuses, as it was told");
}

void FaultyDisk::needPower() const
{
    if (dead_)
        throw RunError(RunErrorNumber::DeviceIo, "the power is cut");
}

/// Each change by itself: nothing promises that unsynced changes reach the disk in their order.
void FaultyDisk::settle(Content& content, unsigned keep, unsigned tear)
{
    for (const Change& change : content.unsafe) {
        if (!change.length && chance(tear)) {
            for (std::size_t at = 0; at < change.bytes.size(); at += kSector)
                if (chance(50))
                    change.write(content.safe, at, std::min(at + kSector, change.bytes.size()));
        } else if (chance(keep)) {
            change.apply(content.safe);
        }
    }
    content.unsafe.clear();
    content.now = content.safe;
    content.locks.clear();
}

void FaultyDisk::restart()
{
    clearFaults();
    ++life_;
    static constexpr unsigned kChances[][2] = {{0, 0}, {100, 0}, {50, 0}, {50, 50}, {80, 10}};
    const auto& [keep, tear] = kChances[random_() % std::size(kChances)];
    for (const NameChange& change : nameChanges_)
        if (chance(keep))
            apply(change, safeNames_);
    nameChanges_.clear();
    names_ = safeNames_;
    std::set<Content*> settled;
    for (auto& [key, entry] : names_)
        if (settled.insert(entry.content.get()).second)
            settle(*entry.content, keep, tear);
}

void FaultyDisk::put(std::string_view path, ByteSpan content)
{
    for (std::string folder = folderKey(path); !folder.empty(); folder = paths::folder(folder))
        folders_.insert(folder);
    auto made = std::make_shared<Content>();
    made->now = made->safe = Bytes(content.begin(), content.end());
    names_[keyOf(path)] = safeNames_[keyOf(path)] = {std::string(paths::fileName(path)), made};
}

FaultyDisk::Bytes FaultyDisk::content(std::string_view path) const
{
    return existing(path).content->now;
}

std::map<std::string, FaultyDisk::Bytes> FaultyDisk::snapshot() const
{
    std::map<std::string, Bytes> files;
    for (const auto& [key, entry] : names_)
        files[key] = entry.content->now;
    return files;
}

const FaultyDisk::Entry& FaultyDisk::existing(std::string_view path) const
{
    const auto found = names_.find(keyOf(path));
    if (found == names_.end())
        throw RunError(RunErrorNumber::FileNotFound, std::string(path) + " does not exist");
    return found->second;
}

void FaultyDisk::apply(const NameChange& change, Names& names)
{
    if (!change.from.empty() && names.erase(change.from) == 0)
        return;  // it never became safe
    if (!change.to.empty())
        names[change.to] = change.entry;
}

void FaultyDisk::changeName(NameChange change)
{
    apply(change, names_);
    nameChanges_.push_back(std::move(change));
}

std::unique_ptr<File> FaultyDisk::open(std::string_view path, OpenMode mode)
{
    needPower();
    const std::string key = keyOf(path);
    if (!folders_.contains(folderKey(path)))
        throw RunError(RunErrorNumber::PathNotFound, std::string(path) + " has no folder");
    if (folders_.contains(key))
        throw RunError(RunErrorNumber::PathFileAccess, std::string(path) + " is a folder");
    const bool known = names_.contains(key);
    if (known && mode == OpenMode::CreateNew)
        throw RunError(RunErrorNumber::FileExists, std::string(path) + " exists");
    if (!known && (mode == OpenMode::CreateNew || mode == OpenMode::Replace)) {
        change(Room::Taken, path, [] {});
        const Entry entry{std::string(paths::fileName(path)), std::make_shared<Content>()};
        changeName({folderKey(path), "", key, entry});
    }
    auto handle = std::make_unique<Handle>(*this, existing(path), mode != OpenMode::Read);
    if (known && mode == OpenMode::Replace)
        handle->resize(0);
    return handle;
}

std::optional<FileInfo> FaultyDisk::info(std::string_view path)
{
    needPower();
    const std::string key = keyOf(path);
    if (folders_.contains(key))
        return FileInfo{.name = std::string(paths::fileName(path)), .folder = true};
    const auto found = names_.find(key);
    if (found == names_.end())
        return std::nullopt;
    return FileInfo{.name = found->second.name, .size = found->second.content->now.size()};
}

std::vector<FileInfo> FaultyDisk::list(std::string_view folder)
{
    needPower();
    const std::string key = keyOf(folder);
    if (!folders_.contains(key))
        throw RunError(RunErrorNumber::PathNotFound, std::string(folder) + " is no folder");
    std::vector<FileInfo> entries;
    for (const auto& [path, entry] : names_)
        if (paths::folder(path) == key)
            entries.push_back({.name = entry.name, .size = entry.content->now.size()});
    for (const std::string& path : folders_)
        if (paths::folder(path) == key)
            entries.push_back({.name = std::string(paths::fileName(path)), .folder = true});
    return entries;
}

void FaultyDisk::remove(std::string_view path)
{
    needPower();
    existing(path);
    change(Room::NotTaken, path, [] {});
    changeName({folderKey(path), keyOf(path), "", {}});
}

void FaultyDisk::rename(std::string_view from, std::string_view to)
{
    needPower();
    Entry entry = existing(from);
    change(Room::NotTaken, from, [] {});
    entry.name = paths::fileName(to);
    changeName({folderKey(to), keyOf(from), keyOf(to), entry});
}

void FaultyDisk::makeFolder(std::string_view path)
{
    needPower();
    if (!folders_.insert(keyOf(path)).second)
        throw RunError(RunErrorNumber::FileExists, std::string(path) + " exists");
}

void FaultyDisk::removeFolder(std::string_view path)
{
    needPower();
    if (!list(path).empty())
        throw RunError(RunErrorNumber::PathFileAccess, std::string(path) + " is not empty");
    folders_.erase(keyOf(path));
}

void FaultyDisk::syncFolder(std::string_view folder)
{
    needPower();
    change(Room::NotTaken, folder, [] {});
    const std::string key = keyOf(folder);
    const auto inFolder = [&](const NameChange& change) { return change.folder == key; };
    for (const NameChange& change : nameChanges_)
        if (inFolder(change))
            apply(change, safeNames_);
    std::erase_if(nameChanges_, inFolder);
}

}  // namespace velnor::testing
