// access/sql/like_pattern.h - the patterns of LIKE: * any text, ? one character, # one digit, [a-c]
// [!a-c] one of them or none of them, [*] the sign itself. Blind to case.
#pragma once

#include <string_view>

namespace velnor::sql {

/// Whether every bracket of the pattern ends.
bool isPattern(std::string_view pattern);

/// 3075 for a pattern whose bracket does not end, when the match comes to it.
bool isLike(std::string_view text, std::string_view pattern);

}  // namespace velnor::sql
