// access/model/expression_node.h - an expression as a tree: what the parser makes and the
// evaluation walks.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/model/expression.h"

namespace velnor::model {

enum class Operation {
    Constant,
    Field,
    Or,
    And,
    Xor,
    Not,
    Equal,
    Unequal,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Between,
    In,
    Like,
    IsNull,
    Add,
    Subtract,
    Multiply,
    Divide,
    Join,
    Negate,
    Date,
    Now,
    Time,
    Length,
    Year,
    Month,
    Day,
    Upper,
    Lower,
    Trim,
    Left,
    Right,
    Mid,
    Int,
    Abs,
    If,
};

struct ExpressionNode {
    Operation operation = Operation::Constant;
    Operand constant;
    std::string text;  // of a constant
    int field = -1;
    std::vector<std::unique_ptr<ExpressionNode>> parts;
};

}  // namespace velnor::model
