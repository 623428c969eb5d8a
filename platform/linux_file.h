// platform/linux_file.h - one open file of the Linux file system. Included by linux_file_system.cpp
// only.
#pragma once

#include <string>

#include "platform/file_system.h"

namespace velnor {

class LinuxFile final : public File {
public:
    /// Takes over the handle. `path` is for error texts only.
    LinuxFile(int handle, std::string path) : handle_(handle), path_(std::move(path)) {}
    ~LinuxFile() override;
    LinuxFile(const LinuxFile&) = delete;
    LinuxFile& operator=(const LinuxFile&) = delete;

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> out) override;
    void writeAt(std::uint64_t offset, ByteSpan bytes) override;
    std::uint64_t size() override;
    void resize(std::uint64_t bytes) override;
    void sync() override;
    bool tryLock(LockKind kind) override;
    void unlock() override;

private:
    [[noreturn]] void fail(int number) const;

    int handle_;
    std::string path_;
};

}  // namespace velnor
