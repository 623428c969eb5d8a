#include "access/formats/xbase/index_forms.h"

#include <algorithm>

#include "access/engine_error.h"
#include "platform/paths.h"

namespace velnor::xbase {

IndexKind kindOfFile(std::string_view name)
{
    const std::string extension = paths::foldName(paths::extension(name));
    return extension == "MDX"   ? IndexKind::Mdx
           : extension == "NDX" ? IndexKind::Ndx
           : extension == "IDX" ? IndexKind::Idx
                                : IndexKind::Cdx;
}

bool isFox(IndexKind kind)
{
    return kind == IndexKind::Cdx || kind == IndexKind::Idx;
}

[[noreturn]] void misfit()
{
    throw EngineError(EngineErrorNumber::InvalidIndex,
                      "The length or type of its keys does not fit its expression.");
}

KeyForm foxFormOf(const IndexTag& tag, const IndexExpression& expression)
{
    KeyForm form = foxKeyForm(expression);
    form.nullByte = tag.nullByte;
    const std::uint32_t length = tag.keyLength - std::min(tag.keyLength, tag.nullByte ? 1u : 0u);
    if (form.coding == KeyCoding::Integer && length == 8)
        form.coding = KeyCoding::Double;
    else if (form.coding != KeyCoding::Text && form.length != length)
        misfit();
    form.length = tag.keyLength;
    return form;
}

std::optional<KeyForm> dbaseFormOf(IndexKind kind, const IndexTag& tag)
{
    KeyForm form;
    form.length = tag.keyLength;
    form.turned = tag.descending;
    form.leavesOutDeleted = tag.primary;
    const char letter = tag.keyLetter;
    if (letter == 'C' && tag.keyLength > 0 && tag.keyLength <= 240)
        form.coding = KeyCoding::Text;
    else if (kind == IndexKind::Ndx && tag.keyLength == 8)
        form.coding = KeyCoding::Double;
    else if ((letter == 'N' || letter == 'F') && tag.keyLength == 12)
        form.coding = KeyCoding::Decimal;
    else if (letter == 'D' && tag.keyLength == 8)
        form.coding = KeyCoding::LateDay;
    else if ((letter == 'I' || letter == '+') && tag.keyLength == 4)
        form.coding = KeyCoding::Integer;
    else
        return std::nullopt;
    return form;
}

void needFit(IndexKind kind, KeyForm& form, const IndexExpression& expression)
{
    const ExpressionType type = expression.type();
    const bool number = type == ExpressionType::Number || type == ExpressionType::Integer ||
                        type == ExpressionType::Money;
    const bool day = type == ExpressionType::Date;
    if (kind == IndexKind::Ndx && form.coding == KeyCoding::Double && day)
        form.coding = KeyCoding::LateDay;
    const bool fits = form.coding == KeyCoding::Text      ? type == ExpressionType::Text
                      : form.coding == KeyCoding::LateDay ? day
                      : form.coding == KeyCoding::Integer ? type == ExpressionType::Integer
                                                          : number;
    if (!fits)
        misfit();
}

}  // namespace velnor::xbase
