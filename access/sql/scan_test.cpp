#include "access/sql/scan_test.h"

#include <algorithm>

#include "access/sql/text_order.h"

namespace velnor::sql {
namespace {

bool byValue(const Value& a, const Value& b)
{
    return comparePlain(a.view(), b.view()) < 0;
}

}  // namespace

bool ScanTest::passesNone() const
{
    if (op_ == TestOp::IsNull || op_ == TestOp::NotNull)
        return false;
    return std::all_of(values_.begin(), values_.end(), [](const Value& v) { return v.isNull(); });
}

void ScanTest::sortList()
{
    std::sort(values_.begin(), values_.end(), byValue);
}

bool ScanTest::passesPlain(ValueView plain) const
{
    if (plain.isNull())
        return op_ == TestOp::IsNull;
    switch (op_) {
    case TestOp::IsNull:
        return false;
    case TestOp::NotNull:
        return true;
    case TestOp::OneOf: {
        const auto at = std::lower_bound(
            values_.begin(), values_.end(), plain,
            [](const Value& v, ValueView wanted) { return comparePlain(v.view(), wanted) < 0; });
        return at != values_.end() && comparePlain(at->view(), plain) == 0;
    }
    default:
        break;
    }
    const ValueView wanted = value();
    if (op_ == TestOp::Equal && plain.kind() == ValueKind::Text && wanted.kind() == ValueKind::Text)
        return equalText(plain.asText(), wanted.asText());
    const int order = comparePlain(plain, wanted);
    switch (op_) {
    case TestOp::Equal:
        return order == 0;
    case TestOp::Different:
        return order != 0;
    case TestOp::Less:
        return order < 0;
    case TestOp::LessEqual:
        return order <= 0;
    case TestOp::Greater:
        return order > 0;
    default:
        return order >= 0;
    }
}

}  // namespace velnor::sql
