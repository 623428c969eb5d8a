// access/storage/replace_file.h - whole-file rewriting: a sibling "NAME.EXT-new", sync, rename, sync of the
// folder. Until the rename the old file is untouched; after it the new one is complete.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace velnor {

class FileReplacement {
public:
    /// Opens the sibling; one left over from a crash is overwritten.
    FileReplacement(FileSystem& files, std::string_view path);
    ~FileReplacement();  // without commit() the sibling is removed
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    File& file() { return *file_; }
    const std::string& siblingPath() const { return sibling_; }
    void commit();

private:
    FileSystem& files_;
    std::string path_;
    std::string sibling_;
    std::unique_ptr<File> file_;
};

}  // namespace velnor
