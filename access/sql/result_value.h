// access/sql/result_value.h - what the statement machine gives, in the kind of the result's field.
#pragma once

#include <string>

#include "access/sql/translation.h"

namespace velnor::sql {

/// A text that is made lies in `scratch`; any other one where `plain` has it.
ValueView resultValue(const OutputColumn& column, ValueView plain, std::string& scratch);

}  // namespace velnor::sql
