// access/formats/xbase/expression_words.h - the letters, marks and functions of index expressions.
#pragma once

#include <string_view>

#include "access/formats/xbase/expression_part.h"

namespace velnor::xbase {

bool isLetter(char c);
bool isDigit(char c);
/// Without blanks around.
std::string_view trimmed(std::string_view text);
/// ":Long Name:" and "\"Long Name\"" without their marks.
std::string_view unquoted(std::string_view text);

struct FunctionRow {
    std::string_view name;
    ExpressionOperator op;
    int least, most;  ///< arguments
};
/// Null when there is none of this name. Names may be cut to four letters.
const FunctionRow* functionOf(std::string_view name);

}  // namespace velnor::xbase
