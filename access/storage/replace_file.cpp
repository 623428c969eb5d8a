#include "access/storage/replace_file.h"

#include "platform/paths.h"

namespace velnor {

FileReplacement::FileReplacement(FileSystem& files, std::string_view path)
    : files_(files), path_(path), sibling_(std::string(path) + "-new"),
      file_(files.open(sibling_, OpenMode::Replace))
{
}

FileReplacement::~FileReplacement()
{
    if (!file_)
        return;
    file_.reset();
    try {
        files_.remove(sibling_);
    } catch (const RunError&) {
        // it is overwritten by the next replacement
    }
}

void FileReplacement::commit()
{
    file_->sync();
    files_.rename(sibling_, path_);
    file_.reset();  // from here on the new file stands, whatever the folder's sync says
    files_.syncFolder(paths::folder(path_));
}

}  // namespace velnor
