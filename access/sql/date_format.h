// access/sql/date_format.h - Format(): dates by y m d h n s and AM/PM, numbers by 0 # , . % and
// the named forms.
#pragma once

#include <string>
#include <string_view>

#include "access/value.h"

namespace velnor::sql {

std::string_view monthName(int month);      ///< 1 is January
std::string_view weekdayName(int weekday);  ///< 1 is Sunday

/// A plain value in the form of `format`; a text stays as it is unless the form is "<" or ">".
void appendFormatted(std::string& out, ValueView plain, std::string_view format);

}  // namespace velnor::sql
