#include "access/formats/jet/whole_file.h"

#include <algorithm>
#include <vector>

#include "access/engine_error.h"
#include "access/storage/undo_journal.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

constexpr std::size_t kCopyBytes = 1u << 20;

EngineErrorNumber engineNumberOf(const RunError& error)
{
    switch (error.code()) {
    case RunErrorNumber::DiskFull:
        return EngineErrorNumber::DiskFull;
    case RunErrorNumber::PathNotFound:
    case RunErrorNumber::BadFileName:
    case RunErrorNumber::DeviceUnavailable:
        return EngineErrorNumber::PathInvalid;
    default:
        return EngineErrorNumber::CannotOpen;
    }
}

/// The first failure is what people are told, not that of cleaning up after it.
void dropQuietly(FileSystem& files, const std::string& path)
{
    try {
        if (files.fileExists(path))
            files.remove(path);
    } catch (const RunError&) {
    }
}

/// Does a step; when it fails nothing is left under `path`.
template <class Step> void orNothing(FileSystem& files, const std::string& path, Step step)
{
    try {
        step();
    } catch (const RunError& error) {
        dropQuietly(files, path);
        throw EngineError(engineNumberOf(error), error.what());
    } catch (...) {
        dropQuietly(files, path);
        throw;
    }
}

}  // namespace

void makeWholeFile(FileSystem& files, const std::string& path,
                   std::span<const std::uint8_t> firstPages,
                   const std::function<void(const std::string& sibling)>& fill)
{
    const std::string sibling = path + "-new";
    orNothing(files, sibling, [&] {
        // A journal that a crash left of an earlier sibling would be undone into this one.
        if (files.fileExists(journalPath(sibling)))
            files.remove(journalPath(sibling));
        {
            const auto file = files.open(sibling, OpenMode::Replace);
            file->writeAt(0, firstPages);
        }
        fill(sibling);
        files.open(sibling, OpenMode::ReadWrite)->sync();
        files.rename(sibling, path);
        files.syncFolder(paths::folder(path));
    });
}

void copyWholeFile(FileSystem& files, const std::string& from, const std::string& to)
{
    orNothing(files, to, [&] {
        const auto source = files.open(from, OpenMode::Read);
        const auto target = files.open(to, OpenMode::CreateNew);
        std::vector<std::uint8_t> buffer(kCopyBytes);
        std::uint64_t at = 0;
        while (const std::size_t count = source->readAt(at, buffer)) {
            target->writeAt(at, {buffer.data(), count});
            at += count;
        }
        target->sync();
        files.syncFolder(paths::folder(to));
    });
}

}  // namespace velnor::jet
