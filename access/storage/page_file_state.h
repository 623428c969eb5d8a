// access/storage/page_file_state.h - what a PageFile is, for this room's own files.
#pragma once

#include "access/storage/page_file.h"
#include "access/storage/stored_file.h"

namespace velnor {

struct PageFile::State : StoredFile {
    using StoredFile::StoredFile;
};

}  // namespace velnor
