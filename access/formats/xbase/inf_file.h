// access/formats/xbase/inf_file.h - which index files belong to a table: the production index, and
// the files that a text NAME.INF lists.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace velnor::xbase {

struct DbfHeader;

/// The index files beside a table: the production index that its header tells of, and those that
/// its INF file lists. Names without folder, only files that are there.
std::vector<std::string> indexFilesOf(FileSystem& files, std::string_view tablePath,
                                      const DbfHeader& header);

/// Whether the file NAME.INF beside a table lists index files; others have that extension, too.
bool infListsIndexes(FileSystem& files, std::string_view tablePath);

/// Enters an index file into the INF file of a dBASE III table, which is made when it is not there.
void listInInf(FileSystem& files, std::string_view tablePath, std::string_view indexFile,
               bool unique);
/// Takes it out; the INF file goes with its last line.
void unlistInInf(FileSystem& files, std::string_view tablePath, std::string_view indexFile);

}  // namespace velnor::xbase
