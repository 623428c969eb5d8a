#include "core/file_commands.h"

#include <algorithm>
#include <vector>

#include "core/text.h"
#include "platform/host.h"
#include "platform/path_parts.h"
#include "platform/paths.h"

namespace velnor {
namespace {

constexpr std::size_t kCopyBlock = std::size_t{1} << 20;

bool isWild(std::string_view name)
{
    return name.find_first_of("*?") != std::string_view::npos;
}

bool counts(const FileInfo& entry, int attributes)
{
    return !entry.folder || (attributes & kAttributeFolder) != 0;
}

/// What `found` gives, or nothing when a folder on the way is missing. A missing drive stays an
/// error.
template <class Find> auto ifThere(Find&& find) -> decltype(find())
{
    try {
        return find();
    } catch (const RunError& error) {
        if (error.code() != RunErrorNumber::PathNotFound)
            throw;
        return {};
    }
}

std::vector<std::string> dirNames(const QString& pattern, int attributes)
{
    const std::string full = fullPath(pattern).toStdString();
    const std::string_view name = paths::fileName(full);
    FileSystem& files = *host().files;
    if (!name.empty() && !isWild(name)) {
        const auto found = ifThere([&] { return files.info(full); });
        if (found && counts(*found, attributes))
            return {found->name};
        return {};
    }
    const std::string_view wanted = name.empty() ? "*" : name;
    std::vector<std::string> names;
    for (FileInfo& entry : ifThere([&] { return files.list(paths::folder(full)); })) {
        const bool shown = !entry.hidden || (attributes & kAttributeHidden) != 0;
        if (shown && counts(entry, attributes) && paths::matches(entry.name, wanted))
            names.push_back(std::move(entry.name));
    }
    return names;
}

/// Clears up after a failure, whose own error is the one to tell.
void removeQuietly(FileSystem& files, const std::string& path)
{
    try {
        files.remove(path);
    } catch (const RunError&) {
        // the next file written here replaces it
    }
}

bool before(const std::string& a, const std::string& b)
{
    const std::string foldedA = paths::foldName(a);
    const std::string foldedB = paths::foldName(b);
    return foldedA != foldedB ? foldedA < foldedB : a < b;
}

FileInfo existing(const QString& path)
{
    const auto found = path.isEmpty() ? std::optional<FileInfo>()
                                      : host().files->info(fullPath(path).toStdString());
    if (!found)
        throw pathError(RunErrorNumber::FileNotFound, path.toStdString());
    return *found;
}

/// Copies into a file that is made new, and takes it away again when that fails.
void copyInto(const std::string& from, const std::string& to)
{
    FileSystem& files = *host().files;
    const auto source = files.open(from, OpenMode::Read);
    auto target = files.open(to, OpenMode::CreateNew);
    try {
        std::vector<std::uint8_t> block(kCopyBlock);
        std::uint64_t at = 0;
        while (const std::size_t got = source->readAt(at, block)) {
            target->writeAt(at, ByteSpan(block).first(got));
            at += got;
        }
        target->sync();
    } catch (const RunError&) {
        target.reset();
        files.remove(to);
        throw;
    }
}

}  // namespace

QString Dir(const QString& pattern, int attributes)
{
    const std::vector<std::string> names = dirNames(pattern, attributes);
    const auto first = std::ranges::min_element(names, before);
    return first == names.end() ? QString() : QString::fromStdString(*first);
}

QStringList dirAll(const QString& pattern, int attributes)
{
    std::vector<std::string> names = dirNames(pattern, attributes);
    std::ranges::sort(names, before);
    QStringList all;
    all.reserve(static_cast<qsizetype>(names.size()));
    for (const std::string& name : names)
        all << QString::fromStdString(name);
    return all;
}

QString currentFolder()
{
    return QString::fromStdString(host().currentFolder);
}

void changeFolder(const QString& folder)
{
    QString full = fullPath(folder);
    while (full.size() > 3 && full.endsWith(u'\\'))
        full.chop(1);
    const std::string path = full.toStdString();
    const auto found = host().files->info(path);
    if (!found || !found->folder)
        throw pathError(RunErrorNumber::PathNotFound, path);
    host().currentFolder = path;
}

QString fullPath(const QString& path)
{
    const bool drive = path.size() >= 2 && path[1] == u':';
    if (drive || path.startsWith("\\\\"))
        return path;
    if (path.startsWith(u'\\')) {
        const std::string root = cutPath(host().currentFolder).root;
        return QString::fromStdString(root) + path;
    }
    return QString::fromStdString(paths::join(host().currentFolder, path.toStdString()));
}

qint64 fileLength(const QString& path)
{
    return static_cast<qint64>(existing(path).size);
}

QString fileDateTime(const QString& path)
{
    const LocalTime time = host().clock->local(existing(path).modified);
    const auto padded = [](int n) { return QString::number(n).rightJustified(2, u'0'); };
    return QString::number(time.month) + "/" + QString::number(time.day) + "/" +
           padded(time.year % 100) + " " + QString::number(time.hour) + ":" + padded(time.minute) +
           ":" + padded(time.second);
}

void removeFile(const QString& path)
{
    host().files->remove(fullPath(path).toStdString());
}

void renameFile(const QString& from, const QString& to)
{
    FileSystem& files = *host().files;
    const std::string source = fullPath(from).toStdString();
    const std::string target = fullPath(to).toStdString();
    if (!paths::sameName(source, target) && files.exists(target))
        throw pathError(RunErrorNumber::FileExists, target);
    files.rename(source, target);
}

void copyFile(const QString& from, const QString& to)
{
    FileSystem& files = *host().files;
    const std::string target = fullPath(to).toStdString();
    const std::string sibling = target + "-new";
    if (files.exists(sibling))
        files.remove(sibling);
    copyInto(fullPath(from).toStdString(), sibling);
    try {
        files.rename(sibling, target);
    } catch (const RunError&) {
        files.remove(sibling);
        throw;
    }
    files.syncFolder(paths::folder(target));
}

void copyFileNew(const QString& from, const QString& to)
{
    const std::string target = fullPath(to).toStdString();
    copyInto(fullPath(from).toStdString(), target);
    host().files->syncFolder(paths::folder(target));
}

QString readTextFile(const QString& path, qint64 longest)
{
    const auto file = host().files->open(fullPath(path).toStdString(), OpenMode::Read);
    const auto wanted = std::min<std::uint64_t>(file->size(), static_cast<std::uint64_t>(longest));
    QByteArray bytes(static_cast<qsizetype>(wanted), '\0');
    const std::size_t read = file->readAt(
        0, {reinterpret_cast<std::uint8_t*>(bytes.data()), static_cast<std::size_t>(wanted)});
    bytes.truncate(static_cast<qsizetype>(read));
    return bytes.isValidUtf8() ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
}

void replaceTextFile(const QString& path, const QString& content)
{
    FileSystem& files = *host().files;
    const std::string target = fullPath(path).toStdString();
    const std::string sibling = target + "-new";
    const std::string bytes = content.toStdString();
    auto file = files.open(sibling, OpenMode::Replace);
    try {
        file->writeAt(0, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        file->sync();
        file.reset();
        files.rename(sibling, target);
    } catch (const RunError&) {
        file.reset();
        removeQuietly(files, sibling);
        throw;
    }
    files.syncFolder(paths::folder(target));
}

}  // namespace velnor
