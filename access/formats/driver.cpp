#include "access/formats/driver.h"

#include <algorithm>

#include "platform/paths.h"

namespace velnor {
namespace {

[[noreturn]] void notSupported(const char* what)
{
    throw EngineError(EngineErrorNumber::NotSupported,
                      std::string("This kind of file has no such operation: ") + what + ".");
}

}  // namespace

std::optional<std::string_view> connectOption(std::string_view options, std::string_view key)
{
    while (!options.empty()) {
        const std::string_view part = options.substr(0, options.find(';'));
        const std::size_t equals = part.find('=');
        if (equals != part.npos && paths::sameName(part.substr(0, equals), key))
            return part.substr(equals + 1);
        options.remove_prefix(std::min(part.size() + 1, options.size()));
    }
    return std::nullopt;
}

ValueKind valueKindOf(FieldType type)
{
    switch (type) {
    case FieldType::None:
        return ValueKind::Null;
    case FieldType::Boolean:
        return ValueKind::Boolean;
    case FieldType::Byte:
    case FieldType::Integer:
    case FieldType::Long:
    case FieldType::BigInt:
        return ValueKind::Integer;
    case FieldType::Currency:
        return ValueKind::Currency;
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::Float:
        return ValueKind::Real;
    case FieldType::Date:
    case FieldType::Time:
    case FieldType::TimeStamp:
        return ValueKind::Date;
    case FieldType::Numeric:
    case FieldType::Decimal:
        return ValueKind::Decimal;
    case FieldType::Text:
    case FieldType::Memo:
    case FieldType::Char:
    case FieldType::Guid:
        return ValueKind::Text;
    case FieldType::Binary:
    case FieldType::VarBinary:
    case FieldType::LongBinary:
        return ValueKind::Bytes;
    }
    return ValueKind::Null;
}

bool RowCursor::moveToOrdinal(std::int64_t n)
{
    if (n < 0 || !first())
        return false;
    while (n-- > 0)
        if (!next())
            return false;
    return true;
}

std::int64_t RowCursor::ordinal()
{
    const RowId here = row();
    std::int64_t n = 0;
    for (bool there = first(); there && row() != here; there = next())
        ++n;
    return n;
}

void RowCursor::fields(std::span<ValueView> out)
{
    for (int n = 0; ValueView& v : out)
        v = field(n++);
}

bool RowCursor::seek(Comparison, std::span<const ValueView>)
{
    throw EngineError(EngineErrorNumber::NoCurrentIndex, "Seek needs an index.");
}

void Store::createTable(const TableLayout&) { notSupported("create a table"); }
void Store::dropTable(std::string_view) { notSupported("delete a table"); }
void Store::addField(std::string_view, const FieldDef&) { notSupported("add a field"); }
void Store::dropField(std::string_view, std::string_view) { notSupported("delete a field"); }
void Store::addIndex(std::string_view, const IndexDef&) { notSupported("add an index"); }
void Store::dropIndex(std::string_view, std::string_view) { notSupported("delete an index"); }

bool Store::acceptsPassword(std::string_view) { return true; }
void Store::changePassword(std::string_view) { notSupported("set a password"); }

void Driver::create(FileSystem&, const CreateRequest&) const { notSupported("create a file"); }
void Driver::compact(FileSystem&, const OpenRequest&, const CreateRequest&) const
{
    notSupported("compact");
}
void Driver::repair(FileSystem&, const OpenRequest&, const ProblemSink&) const { notSupported("repair"); }

}  // namespace velnor
