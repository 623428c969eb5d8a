// access/formats/text/field_names.h - the names of fields from the first line of a file.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velnor::text {

/// Control characters become blanks; . ! [ ] ` become # $ ( ) '; cut at 64 characters; blanks
/// around go. Blank and repeated names (blind to case) are F1, F2 ... by their column.
std::vector<std::string> cleanNames(const std::vector<std::string>& raw, std::size_t columns);

}  // namespace velnor::text
