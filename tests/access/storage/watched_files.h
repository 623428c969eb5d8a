// tests/access/storage/watched_files.h - a file system that writes down what changes it, in order.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/memory_file_system.h"
#include "platform/paths.h"

namespace velnor::testing {

class WatchedFiles final : public FileSystem {
public:
    explicit WatchedFiles(FileSystem& files) : files_(files) {}

    /// "ORDERS.DBF write 0+80", "ORDERS.DBF sync", "remove ORDERS.DBF-undo", "sync folder" ...
    std::vector<std::string> log;
    std::vector<std::string> of(std::string_view part) const
    {
        std::vector<std::string> found;
        for (const std::string& line : log)
            if (line.find(part) != std::string::npos)
                found.push_back(line);
        return found;
    }

    std::unique_ptr<File> open(std::string_view path, OpenMode mode) override
    {
        std::string name(paths::fileName(path));
        if (mode == OpenMode::Replace || mode == OpenMode::CreateNew)
            log.push_back(name + " make");
        return std::make_unique<Watched>(files_.open(path, mode), std::move(name), log);
    }
    std::optional<FileInfo> info(std::string_view path) override { return files_.info(path); }
    std::vector<FileInfo> list(std::string_view folder) override { return files_.list(folder); }
    void remove(std::string_view path) override
    {
        log.push_back("remove " + std::string(paths::fileName(path)));
        files_.remove(path);
    }
    void rename(std::string_view from, std::string_view to) override
    {
        log.push_back("rename " + std::string(paths::fileName(from)));
        files_.rename(from, to);
    }
    void makeFolder(std::string_view path) override { files_.makeFolder(path); }
    void removeFolder(std::string_view path) override { files_.removeFolder(path); }
    void syncFolder(std::string_view folder) override
    {
        log.push_back("sync folder");
        files_.syncFolder(folder);
    }

private:
    class Watched final : public File {
    public:
        Watched(std::unique_ptr<File> file, std::string name, std::vector<std::string>& log)
            : file_(std::move(file)), name_(std::move(name)), log_(log)
        {
        }
        std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> out) override
        {
            return file_->readAt(offset, out);
        }
        void writeAt(std::uint64_t offset, ByteSpan bytes) override
        {
            log_.push_back(name_ + " write " + std::to_string(offset) + "+" +
                           std::to_string(bytes.size()));
            file_->writeAt(offset, bytes);
        }
        std::uint64_t size() override { return file_->size(); }
        void resize(std::uint64_t bytes) override
        {
            log_.push_back(name_ + " resize " + std::to_string(bytes));
            file_->resize(bytes);
        }
        void sync() override
        {
            log_.push_back(name_ + " sync");
            file_->sync();
        }
        bool tryLock(LockKind kind) override { return file_->tryLock(kind); }
        void unlock() override { file_->unlock(); }

    private:
        std::unique_ptr<File> file_;
        std::string name_;
        std::vector<std::string>& log_;
    };

    FileSystem& files_;
};

}  // namespace velnor::testing
