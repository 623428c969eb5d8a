#include "windows/entry_fields.h"

#include <algorithm>

#include "access/layout.h"

namespace velnor {

namespace {
constexpr int kCharacter = 120;  // as in the browser's columns
constexpr int kWidest = 2500;
constexpr int kNarrow = 600;
constexpr int kDouble = 800;
constexpr int kMemoHeight = 1000;
}  // namespace

EntryBox entryBox(int type, int size)
{
    switch (static_cast<FieldType>(type)) {
    case FieldType::Binary:
    case FieldType::LongBinary:
    case FieldType::VarBinary:
        return {EntryKind::None};
    case FieldType::Boolean:
        return {EntryKind::Check};
    case FieldType::Text:
    case FieldType::Char:
        return {EntryKind::Line, std::min(size * kCharacter, kWidest), 0, size};
    case FieldType::Integer:
    case FieldType::Long:
    case FieldType::Numeric:
        return {EntryKind::Line, kNarrow};
    case FieldType::Double:
        return {EntryKind::Line, kDouble};
    case FieldType::Memo:
        return {EntryKind::Memo, kWidest, kMemoHeight};
    default:
        return {};
    }
}

}  // namespace velnor
