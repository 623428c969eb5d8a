// platform/paths.h - the parts of a path "C:\folder\file.ext". Plain text work, no disk.
#pragma once

#include <string>
#include <string_view>

namespace velnor::paths {

/// Text before the last "\"; empty when there is none. "C:\A.DBF" gives "C:".
std::string_view folder(std::string_view path);
/// Text behind the last "\", the whole path when there is none.
std::string_view fileName(std::string_view path);
/// Text behind the last "." of the file name, as spelled; empty when there is none.
std::string_view extension(std::string_view path);
/// The file name without its extension and dot.
std::string_view baseName(std::string_view path);
/// folder + "\" + name; no second "\" when the folder ends in one; name alone for an empty folder.
std::string join(std::string_view folder, std::string_view name);
/// The path with another extension ("C:\A.DBF", "DBT" gives "C:\A.DBT"). When the old extension is
/// all lower case, the new one is made lower case as well.
std::string withExtension(std::string_view path, std::string_view extension);
/// Equal but for upper and lower case (letters of all alphabets with simple case pairs).
bool sameName(std::string_view a, std::string_view b);
/// The text in the form that sameName compares: simple case folding to upper case.
std::string foldName(std::string_view name);
/// True when the name fits a pattern with * and ?, blind to case. "*.*" and "*" fit every name.
bool matches(std::string_view name, std::string_view pattern);

}  // namespace velnor::paths
