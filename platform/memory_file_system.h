// platform/memory_file_system.h - a FileSystem that lives in memory: for fuzzers, for tests of
// faults, and wherever a file is worked on before it has a place on the disk.
//
// It behaves as the Linux one: names blind to case, the same error numbers, locks between handles,
// a removed file that stays readable through its open handles. Not for use from several threads at
// once.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace velnor {

class MemoryFileSystem final : public FileSystem {
public:
    /// Holds an empty drive "C:". Growing beyond `capacity` bytes of content is error 61.
    explicit MemoryFileSystem(std::uint64_t capacity = std::uint64_t{1} << 30);
    ~MemoryFileSystem() override;

    std::unique_ptr<File> open(std::string_view path, OpenMode mode) override;
    std::optional<FileInfo> info(std::string_view path) override;
    std::vector<FileInfo> list(std::string_view folder) override;
    void remove(std::string_view path) override;
    void rename(std::string_view from, std::string_view to) override;
    void makeFolder(std::string_view path) override;
    void removeFolder(std::string_view path) override;
    void syncFolder(std::string_view folder) override;

    /// Adds an empty drive or share: "D:", "\\server\share".
    void addRoot(std::string_view root);
    /// Makes or replaces a file with this content, and the folders on its way.
    void put(std::string_view path, ByteSpan content);
    /// The content of a file; 53 when there is none.
    std::vector<std::uint8_t> content(std::string_view path) const;
    /// The time stamp that writing gives a file from now on.
    void setTime(std::int64_t secondsUtc) { *time_ = secondsUtc; }
    void setReadOnly(std::string_view path, bool readOnly);

private:
    struct Content;
    struct Node;
    struct Budget;
    class Handle;
    struct Place;

    Place place(std::string_view path) const;
    Place existing(std::string_view path, RunErrorNumber missing) const;

    std::map<std::string, std::unique_ptr<Node>> roots_;  // by folded name
    std::shared_ptr<Budget> budget_;
    std::shared_ptr<std::int64_t> time_;
};

}  // namespace velnor
