// access/formats/xbase/field_name.h - field names of new tables.
#pragma once

#include <string>
#include <string_view>

namespace velnor::xbase {

/// A field name as the dBASE and FoxPro kinds take it: ten characters of A-Z 0-9 _, first a letter.
std::string cleanFieldName(std::string_view utf8);

}  // namespace velnor::xbase
