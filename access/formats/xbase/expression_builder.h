// access/formats/xbase/expression_builder.h - puts a parsed expression together: operators over
// parts that are there, their types and the widths of their texts.
#pragma once

#include <array>
#include <string_view>

#include "access/formats/xbase/expression_part.h"
#include "access/formats/xbase/index_expression.h"

namespace velnor::xbase {

class ExpressionBuilder {
public:
    /// `whole`: the text, for messages.
    ExpressionBuilder(std::string_view whole, IndexExpression& into)
        : whole_(whole), into_(into), header_(*into.header_)
    {
    }

    const DbfHeader& header() const { return header_; }
    /// 3018.
    [[noreturn]] void fail(const std::string& why) const;
    /// Each of these makes a part and gives its number; 3018 when the types do not fit.
    int add(ExpressionPart made);
    int make(ExpressionOperator op, ExpressionType type, std::uint32_t width, int a = -1,
             int b = -1, int c = -1);
    int joined(int left, int right, bool plus);
    int field(std::size_t n);
    int call(ExpressionOperator op, const std::array<int, 3>& given);

    ExpressionPart& part(int n) { return into_.parts_[static_cast<std::size_t>(n)]; }
    void need(int n, ExpressionType type);
    bool numeric(int n);
    bool timely(int n);
    void needNumber(int n);
    /// The last part is the root: gives every text its place.
    void finish();

private:
    void needDay(int n);
    ExpressionType typeOf(const DbfField& of);
    std::uint32_t constant(int n);
    bool isConstant(int n);
    int checked(int n);
    std::uint32_t cut(int text, int number);
    int textOf(ExpressionOperator op, int a, std::uint32_t width, int b = -1);
    int substring(int a, int b, int c);
    void caseTables();

    std::string_view whole_;
    IndexExpression& into_;
    const DbfHeader& header_;
};

}  // namespace velnor::xbase
