// access/model/expression_parser.h - text to the tree of an expression.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "access/model/expression_node.h"

namespace velnor::model {

/// Null when a part of the text is not understood.
std::unique_ptr<ExpressionNode> parseExpression(std::string_view text,
                                                const std::vector<FieldDef>& fields, int own);

}  // namespace velnor::model
