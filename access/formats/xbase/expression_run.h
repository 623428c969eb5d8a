// access/formats/xbase/expression_run.h - one evaluation of an index expression on a record.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "access/formats/xbase/expression_part.h"
#include "access/formats/xbase/index_expression.h"

namespace velnor::xbase {

/// One evaluation: the record and where texts go.
struct ExpressionRun {
    const DbfHeader& header;
    const std::vector<ExpressionPart>& parts;
    std::uint8_t* texts;
    const std::uint8_t* upper;
    const std::uint8_t* lower;
    const std::uint8_t* record;
    std::uint32_t recordNumber;

    ExpressionValue value(int n) const { return value(parts[static_cast<std::size_t>(n)]); }
    ExpressionValue value(const ExpressionPart& part) const;
    ExpressionValue field(const ExpressionPart& part) const;
    ExpressionValue joined(const ExpressionPart& part) const;
    ExpressionValue arithmetic(const ExpressionPart& part) const;
    ExpressionValue compared(const ExpressionPart& part) const;
    ExpressionValue changed(const ExpressionPart& part) const;
    ExpressionValue piece(const ExpressionPart& part) const;
    ExpressionValue numberText(const ExpressionPart& part) const;
    ExpressionValue padded(const ExpressionPart& part) const;
    ExpressionValue dayText(const ExpressionPart& part) const;
    ExpressionValue calendar(const ExpressionPart& part) const;
    ExpressionValue descended(const ExpressionPart& part) const;
    ExpressionValue empty(const ExpressionPart& part) const;
    std::uint8_t* placeOf(const ExpressionPart& part) const { return texts + part.place; }
};

inline ExpressionValue text(const std::uint8_t* bytes, std::size_t length)
{
    ExpressionValue made;
    made.type = ExpressionType::Text;
    made.text = bytes;
    made.length = static_cast<std::uint32_t>(length);
    return made;
}
inline ExpressionValue number(double n, ExpressionType type = ExpressionType::Number)
{
    ExpressionValue made;
    made.type = type;
    made.number = n;
    return made;
}
inline ExpressionValue truth(bool t)
{
    ExpressionValue made;
    made.type = ExpressionType::Logical;
    made.truth = t;
    return made;
}

inline double numberOf(const ExpressionValue& v)
{
    if (v.type == ExpressionType::Integer)
        return static_cast<double>(v.whole);
    return v.type == ExpressionType::Money ? static_cast<double>(v.whole) / 10000 : v.number;
}

inline std::uint32_t lengthTrimmed(const ExpressionValue& v)
{
    std::uint32_t length = v.length;
    while (length && v.text[length - 1] == ' ')
        --length;
    return length;
}

/// A count of characters out of a number, within bounds.
inline std::uint32_t countOf(double n, std::uint32_t most)
{
    return n >= 1 ? static_cast<std::uint32_t>(std::min<double>(n, most)) : 0;
}

/// VAL and CTOD.
double valOf(const ExpressionValue& v);
double dayOfText(const ExpressionValue& v);

}  // namespace velnor::xbase
