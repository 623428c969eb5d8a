// access/model/expression.h - expressions of validation rules and default values, evaluated.
//
// Understood: numbers, "texts", #dates#, True and False, [Fields], + - * / & , the comparisons,
// Between, In, Like, Is Null, And, Or, Xor, Not, and a few functions (Date, Now, Time, Len, IsNull,
// Year, Month, Day, UCase, LCase, Trim, Left, Right, Mid, Int, Abs, IIf). Texts compare blind to
// case. A Null makes a comparison Null, which is neither true nor false. What is not understood is
// not guessed at: there is no expression then.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/layout.h"
#include "access/value.h"

namespace velnor::model {

/// A value by the number of its field.
using FieldReader = std::function<ValueView(int)>;

/// What an expression comes to. Truth is a number: 0 is false, all else true; dates are days.
struct Operand {
    enum class Kind { Null, Number, Text };
    Kind kind = Kind::Null;
    double number = 0;
    std::string_view text;  // in the record, the expression, or the scratch of the evaluation
};

struct ExpressionNode;

class Expression {
public:
    /// `own` is the field that a rule is about, which it need not name (">0"); -1 for none.
    static std::optional<Expression> parse(std::string_view text,
                                           const std::vector<FieldDef>& fields, int own);
    Expression(Expression&&) noexcept;
    Expression& operator=(Expression&&) noexcept;
    ~Expression();

    /// The value for a record; a text is good until the next evaluation.
    Operand evaluate(const FieldReader& fields) const;
    /// Whether the record breaks this rule: it comes to false. (Null does not refuse.)
    bool refuses(const FieldReader& fields) const;

private:
    explicit Expression(std::unique_ptr<ExpressionNode> root);
    std::unique_ptr<ExpressionNode> root_;
    mutable std::deque<std::string> scratch_;
};

}  // namespace velnor::model
