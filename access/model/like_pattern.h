// access/model/like_pattern.h - the patterns of Like.
#pragma once

#include <string_view>

namespace velnor::model {

/// Whether a text fits a pattern of * ? # [a-z] [!a-z]; blind to case.
bool likePattern(std::string_view text, std::string_view pattern);

}  // namespace velnor::model
