// access/formats/folder/folder_tables.h - the tables of a folder: its files of one extension.
//
// A table's name is the name of its file up to the last dot. Names are blind to case; the file is
// found as it is spelled on the disk.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/layout.h"
#include "platform/file_system.h"

namespace velnor {

/// 3044 when there is no folder of that name.
void needFolder(FileSystem& files, const std::string& name);

class FolderTables {
public:
    /// `extension` as new files get it: "DBF".
    FolderTables(FileSystem& files, std::string folder, std::string_view extension)
        : files_(files), folder_(std::move(folder)), extension_(extension)
    {
    }

    const std::string& folder() const { return folder_; }
    std::vector<TableEntry> catalogue() const;
    /// The path of a table as spelled on the disk; nothing when there is none.
    std::optional<std::string> pathOf(std::string_view table) const;
    /// The same; 3078 when there is none.
    std::string needPath(std::string_view table) const;

    struct NewTable {
        std::string name, path;
    };
    /// What a table that is asked for as "orders" or "orders.dbf" is called, and its file. 3125
    /// when no file could have that name, 3010 when there is such a table.
    NewTable newTable(const std::string& asked) const;

private:
    FileSystem& files_;
    std::string folder_;
    std::string_view extension_;
};

}  // namespace velnor
