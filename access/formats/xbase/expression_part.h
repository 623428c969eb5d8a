// access/formats/xbase/expression_part.h - a parsed expression: operators over the parts in front
// of them.
#pragma once

#include <cstdint>
#include <string>

#include "access/formats/xbase/index_expression.h"

namespace velnor::xbase {

enum class ExpressionOperator : std::uint8_t {
    Field,
    TextLiteral,
    NumberLiteral,
    TruthLiteral,
    Join,
    JoinTrimmed,
    Add,
    Subtract,
    Multiply,
    Divide,
    Negate,
    Equal,
    Same,
    Different,
    Less,
    Greater,
    LessEqual,
    GreaterEqual,
    Within,
    And,
    Or,
    Not,
    Upper,
    Lower,
    TrimLeft,
    TrimRight,
    TrimBoth,
    Left,
    Right,
    Substring,
    NumberText,
    NumberOfText,
    DayText,
    DayShown,
    DayOfText,
    Deleted,
    RecordNumber,
    Empty,
    Choose,
    PadLeft,
    PadRight,
    Space,
    Year,
    Month,
    Day,
    Character,
    Absolute,
    Whole,
    Descend,
};

struct ExpressionPart {
    ExpressionOperator op = ExpressionOperator::NumberLiteral;
    ExpressionType type = ExpressionType::Number;
    std::uint32_t width = 0;  ///< most bytes of its text
    std::uint32_t place = 0;  ///< where its text goes, when it makes one
    int a = -1, b = -1, c = -1;
    std::size_t field = 0;
    double number = 0;
    std::string literal;
};

}  // namespace velnor::xbase
