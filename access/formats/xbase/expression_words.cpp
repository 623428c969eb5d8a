#include "access/formats/xbase/expression_words.h"

#include "platform/paths.h"

namespace velnor::xbase {
namespace {

using Op = ExpressionOperator;

constexpr FunctionRow kFunctions[] = {
    {"UPPER", Op::Upper, 1, 1},      {"LOWER", Op::Lower, 1, 1},
    {"LTRIM", Op::TrimLeft, 1, 1},   {"RTRIM", Op::TrimRight, 1, 1},
    {"TRIM", Op::TrimRight, 1, 1},   {"ALLTRIM", Op::TrimBoth, 1, 1},
    {"LEFT", Op::Left, 2, 2},        {"RIGHT", Op::Right, 2, 2},
    {"SUBSTR", Op::Substring, 2, 3}, {"STR", Op::NumberText, 1, 3},
    {"VAL", Op::NumberOfText, 1, 1}, {"DTOS", Op::DayText, 1, 1},
    {"DTOC", Op::DayShown, 1, 2},    {"CTOD", Op::DayOfText, 1, 1},
    {"DELETED", Op::Deleted, 0, 0},  {"RECNO", Op::RecordNumber, 0, 0},
    {"EMPTY", Op::Empty, 1, 1},      {"ISBLANK", Op::Empty, 1, 1},
    {"IIF", Op::Choose, 3, 3},       {"IF", Op::Choose, 3, 3},
    {"PADL", Op::PadLeft, 2, 3},     {"PADR", Op::PadRight, 2, 3},
    {"SPACE", Op::Space, 1, 1},      {"YEAR", Op::Year, 1, 1},
    {"MONTH", Op::Month, 1, 1},      {"DAY", Op::Day, 1, 1},
    {"CHR", Op::Character, 1, 1},    {"ABS", Op::Absolute, 1, 1},
    {"INT", Op::Whole, 1, 1},        {"DESCEND", Op::Descend, 1, 1},
};

}  // namespace

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || (c & 0x80);
}
bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ')
        text.remove_prefix(1);
    while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ')
        text.remove_suffix(1);
    return text;
}

std::string_view unquoted(std::string_view text)
{
    if (text.size() > 2 && text.front() == text.back() && (text[0] == ':' || text[0] == '"'))
        return text.substr(1, text.size() - 2);
    return text;
}

const FunctionRow* functionOf(std::string_view name)
{
    const std::string folded = paths::foldName(name);
    for (const FunctionRow& row : kFunctions)
        if (row.name == folded)
            return &row;
    for (const FunctionRow& row : kFunctions)
        if (folded.size() >= 4 && row.name.starts_with(folded))
            return &row;
    return nullptr;
}

}  // namespace velnor::xbase
