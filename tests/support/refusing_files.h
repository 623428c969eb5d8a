// tests/support/refusing_files.h - a disk on which files don't open, for the reason given: none of
// them, or only for writing.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "access/engine_error.h"
#include "platform/file_system.h"
#include "platform/run_error.h"

namespace velnor::testing {

class RefusingFiles final : public FileSystem {
public:
    /// While it is off, this is a disk like any other.
    bool refuses = true;

    /// No file opens.
    RefusingFiles(FileSystem& files, EngineErrorNumber reason) : files_(files), reason_(reason) {}
    /// Files may only be read.
    explicit RefusingFiles(FileSystem& files) : files_(files) {}
    std::unique_ptr<File> open(std::string_view path, OpenMode mode) override
    {
        if (!refuses)
            return files_.open(path, mode);
        if (reason_)
            throw EngineError(*reason_, "refused");
        if (mode != OpenMode::Read)
            throw RunError(RunErrorNumber::PermissionDenied, "refused");
        return files_.open(path, mode);
    }
    std::optional<FileInfo> info(std::string_view path) override { return files_.info(path); }
    std::vector<FileInfo> list(std::string_view folder) override { return files_.list(folder); }
    void remove(std::string_view path) override { files_.remove(path); }
    void rename(std::string_view from, std::string_view to) override { files_.rename(from, to); }
    void makeFolder(std::string_view path) override { files_.makeFolder(path); }
    void removeFolder(std::string_view path) override { files_.removeFolder(path); }
    void syncFolder(std::string_view folder) override { files_.syncFolder(folder); }

private:
    FileSystem& files_;
    std::optional<EngineErrorNumber> reason_;
};

}  // namespace velnor::testing
