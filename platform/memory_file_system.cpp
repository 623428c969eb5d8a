#include "platform/memory_file_system.h"

#include <algorithm>
#include <cstring>

#include "platform/path_parts.h"
#include "platform/paths.h"

namespace velnor {

/// Bytes left, shared by all files and the handles that outlive their file system.
struct MemoryFileSystem::Budget {
    std::uint64_t left;
};

struct MemoryFileSystem::Content {
    explicit Content(std::shared_ptr<Budget> b) : budget(std::move(b)) {}
    ~Content() { budget->left += bytes.size(); }
    Content(const Content&) = delete;
    Content& operator=(const Content&) = delete;

    void resize(std::uint64_t size, std::string_view path)
    {
        if (size > bytes.size() && size - bytes.size() > budget->left)
            throw pathError(RunErrorNumber::DiskFull, path);
        budget->left += bytes.size();
        if (size > bytes.capacity())
            bytes.reserve(std::max<std::size_t>(size, bytes.capacity() * 2));
        bytes.resize(size);
        budget->left -= size;
    }

    std::vector<std::uint8_t> bytes;
    std::shared_ptr<Budget> budget;
    std::int64_t modified = 0;
    bool readOnly = false;
    const Handle* exclusive = nullptr;
    std::vector<const Handle*> sharing;
};

/// A name in a folder: a file when it has content, else a folder.
struct MemoryFileSystem::Node {
    std::string name;
    std::shared_ptr<Content> content;
    std::map<std::string, std::unique_ptr<Node>> children;  // by folded name

    bool folder() const { return !content; }
    FileInfo info() const
    {
        FileInfo info;
        info.name = name;
        info.folder = folder();
        info.hidden = name.starts_with('.');
        if (content) {
            info.size = content->bytes.size();
            info.modified = content->modified;
            info.readOnly = content->readOnly;
        }
        return info;
    }
};

/// Where a path leads: its folder when that exists, its node when that exists.
struct MemoryFileSystem::Place {
    Node* folder = nullptr;
    Node* node = nullptr;
    std::string name;  // as spelled in the path; empty for a root
};

class MemoryFileSystem::Handle final : public File {
public:
    Handle(std::shared_ptr<Content> content, std::shared_ptr<std::int64_t> time, std::string path,
           bool writes)
        : content_(std::move(content)), time_(std::move(time)), path_(std::move(path)),
          writes_(writes)
    {
    }
    ~Handle() override { unlock(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> out) override
    {
        const auto& bytes = content_->bytes;
        if (offset >= bytes.size() || out.empty())
            return 0;
        const auto count = std::min<std::uint64_t>(out.size(), bytes.size() - offset);
        std::memcpy(out.data(), bytes.data() + offset, count);
        return count;
    }

    void writeAt(std::uint64_t offset, ByteSpan bytes) override
    {
        requireWrite();
        if (bytes.empty())
            return;
        const std::uint64_t end = offset + bytes.size();
        if (end < offset)
            throw pathError(RunErrorNumber::DiskFull, path_);
        if (end > content_->bytes.size())
            content_->resize(end, path_);
        std::memcpy(content_->bytes.data() + offset, bytes.data(), bytes.size());
    }

    std::uint64_t size() override { return content_->bytes.size(); }

    void resize(std::uint64_t bytes) override
    {
        requireWrite();
        content_->resize(bytes, path_);
    }

    void sync() override {}

    bool tryLock(LockKind kind) override
    {
        Content& c = *content_;
        if (c.exclusive && c.exclusive != this)
            return false;
        const auto mine = std::ranges::count(c.sharing, this);
        if (kind == LockKind::Exclusive && c.sharing.size() > static_cast<std::size_t>(mine))
            return false;
        if (kind == LockKind::Exclusive && !writes_)
            throw pathError(RunErrorNumber::PermissionDenied, path_);
        unlock();
        if (kind == LockKind::Exclusive)
            c.exclusive = this;
        else
            c.sharing.push_back(this);
        return true;
    }

    void unlock() override
    {
        if (content_->exclusive == this)
            content_->exclusive = nullptr;
        std::erase(content_->sharing, this);
    }

private:
    void requireWrite()
    {
        if (!writes_)
            throw pathError(RunErrorNumber::PermissionDenied, path_);
        content_->modified = *time_;
    }

    std::shared_ptr<Content> content_;
    std::shared_ptr<std::int64_t> time_;
    std::string path_;
    bool writes_;
};

MemoryFileSystem::MemoryFileSystem(std::uint64_t capacity)
    : budget_(std::make_shared<Budget>(Budget{capacity})), time_(std::make_shared<std::int64_t>(0))
{
    addRoot("C:");
}

MemoryFileSystem::~MemoryFileSystem() = default;

void MemoryFileSystem::addRoot(std::string_view root)
{
    auto node = std::make_unique<Node>();
    node->name = cutPath(root).root;
    std::string key = paths::foldName(node->name);
    roots_.try_emplace(std::move(key), std::move(node));
}

MemoryFileSystem::Place MemoryFileSystem::place(std::string_view path) const
{
    const PathParts cut = cutPath(path);
    const auto root = roots_.find(paths::foldName(cut.root));
    if (root == roots_.end())
        throw pathError(cut.root.starts_with('\\') ? RunErrorNumber::PathNotFound
                                                   : RunErrorNumber::DeviceUnavailable,
                        path);
    Place at{nullptr, root->second.get(), {}};
    for (const std::string_view part : cut.parts) {
        at.folder = at.node && at.node->folder() ? at.node : nullptr;
        at.name = part;
        at.node = nullptr;
        if (!at.folder)
            continue;
        const auto child = at.folder->children.find(paths::foldName(part));
        if (child != at.folder->children.end())
            at.node = child->second.get();
    }
    return at;
}

MemoryFileSystem::Place MemoryFileSystem::existing(std::string_view path,
                                                   RunErrorNumber missing) const
{
    const Place at = place(path);
    if (!at.node)
        throw pathError(at.folder ? missing : RunErrorNumber::PathNotFound, path);
    return at;
}

std::unique_ptr<File> MemoryFileSystem::open(std::string_view path, OpenMode mode)
{
    const bool mustExist = mode == OpenMode::Read || mode == OpenMode::ReadWrite;
    Place at = mustExist ? existing(path, RunErrorNumber::FileNotFound) : place(path);
    if (at.node && mode == OpenMode::CreateNew)
        throw pathError(RunErrorNumber::FileExists, path);
    if (at.node && at.node->folder())
        throw pathError(RunErrorNumber::PathFileAccess, path);
    if (at.node && at.node->content->readOnly && mode != OpenMode::Read)
        throw pathError(RunErrorNumber::PermissionDenied, path);
    if (!at.node) {
        if (!at.folder)
            throw pathError(RunErrorNumber::PathNotFound, path);
        auto made = std::make_unique<Node>();
        made->name = at.name;
        made->content = std::make_shared<Content>(budget_);
        made->content->modified = *time_;
        at.node = made.get();
        at.folder->children.emplace(paths::foldName(at.name), std::move(made));
    }
    if (mode == OpenMode::Replace) {
        at.node->content->resize(0, path);
        at.node->content->modified = *time_;
    }
    return std::make_unique<Handle>(at.node->content, time_, std::string(path),
                                    mode != OpenMode::Read);
}

std::optional<FileInfo> MemoryFileSystem::info(std::string_view path)
{
    const Place at = place(path);
    if (!at.node)
        return std::nullopt;
    return at.node->info();
}

std::vector<FileInfo> MemoryFileSystem::list(std::string_view folder)
{
    const Place at = existing(folder, RunErrorNumber::PathNotFound);
    if (!at.node->folder())
        throw pathError(RunErrorNumber::PathNotFound, folder);
    std::vector<FileInfo> entries;
    entries.reserve(at.node->children.size());
    for (const auto& [key, child] : at.node->children)
        entries.push_back(child->info());
    return entries;
}

void MemoryFileSystem::remove(std::string_view path)
{
    const Place at = existing(path, RunErrorNumber::FileNotFound);
    if (at.node->folder())
        throw pathError(RunErrorNumber::PathFileAccess, path);
    at.folder->children.erase(paths::foldName(at.name));
}

void MemoryFileSystem::rename(std::string_view from, std::string_view to)
{
    const Place source = existing(from, RunErrorNumber::FileNotFound);
    const Place target = place(to);
    if (!target.folder && target.node)
        throw pathError(RunErrorNumber::FileExists, to);
    if (!target.folder)
        throw pathError(RunErrorNumber::PathNotFound, to);
    const bool same = source.node == target.node;
    if (target.node && !same && (target.node->folder() || source.node->folder()))
        throw pathError(RunErrorNumber::FileExists, to);
    if (!source.folder || startsWith(cutPath(to), cutPath(from)) != same)
        throw pathError(RunErrorNumber::BadFileName, to);  // a folder into itself
    // A file that is replaced hands its spelling on, as on the disk.
    std::string name = target.node && !same ? target.node->name : target.name;
    auto moved = std::move(source.folder->children.extract(paths::foldName(source.name)).mapped());
    moved->name = std::move(name);
    target.folder->children[paths::foldName(target.name)] = std::move(moved);
}

void MemoryFileSystem::makeFolder(std::string_view path)
{
    const Place at = place(path);
    if (at.node)
        throw pathError(RunErrorNumber::FileExists, path);
    if (!at.folder)
        throw pathError(RunErrorNumber::PathNotFound, path);
    auto made = std::make_unique<Node>();
    made->name = at.name;
    at.folder->children.emplace(paths::foldName(at.name), std::move(made));
}

void MemoryFileSystem::removeFolder(std::string_view path)
{
    const Place at = existing(path, RunErrorNumber::PathNotFound);
    if (!at.node->folder())
        throw pathError(RunErrorNumber::PathNotFound, path);
    if (!at.node->children.empty() || !at.folder)
        throw pathError(RunErrorNumber::PathFileAccess, path);
    at.folder->children.erase(paths::foldName(at.name));
}

void MemoryFileSystem::syncFolder(std::string_view folder)
{
    existing(folder, RunErrorNumber::PathNotFound);
}

void MemoryFileSystem::put(std::string_view path, ByteSpan content)
{
    const PathParts cut = cutPath(path);
    std::string folder = cut.root;
    for (std::size_t i = 0; i + 1 < cut.parts.size(); ++i) {
        folder.append("\\").append(cut.parts[i]);
        if (!exists(folder))
            makeFolder(folder);
    }
    open(path, OpenMode::Replace)->writeAt(0, content);
}

std::vector<std::uint8_t> MemoryFileSystem::content(std::string_view path) const
{
    const Place at = existing(path, RunErrorNumber::FileNotFound);
    if (at.node->folder())
        throw pathError(RunErrorNumber::PathFileAccess, path);
    return at.node->content->bytes;
}

void MemoryFileSystem::setReadOnly(std::string_view path, bool readOnly)
{
    const Place at = existing(path, RunErrorNumber::FileNotFound);
    if (!at.node->folder())
        at.node->content->readOnly = readOnly;
}

}  // namespace velnor
