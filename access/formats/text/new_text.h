// access/formats/text/new_text.h - a new text file and its section in schema.ini.
#pragma once

#include <string>
#include <string_view>

#include "access/layout.h"
#include "platform/file_system.h"

namespace velnor::text {

/// Writes the section, then the file with the names of its fields: the table is there when the file
/// is. Fields separated by commas (TAB: by tabs), CR LF, UTF-8 unless a code page is asked for.
/// 3251 for a type that text files lack, and for indexes.
void createTextFile(FileSystem& files, std::string_view folder, const std::string& name,
                    const TableLayout& layout, const std::string& codePage);

}  // namespace velnor::text
