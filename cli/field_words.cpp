#include "cli/field_words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

#include "cli/arguments.h"
#include "platform/paths.h"

namespace velnor::cli {
namespace {

constexpr std::array kTypes{
    std::pair{FieldType::Boolean, "Boolean"},
    std::pair{FieldType::Byte, "Byte"},
    std::pair{FieldType::Integer, "Integer"},
    std::pair{FieldType::Long, "Long"},
    std::pair{FieldType::Currency, "Currency"},
    std::pair{FieldType::Single, "Single"},
    std::pair{FieldType::Double, "Double"},
    std::pair{FieldType::Date, "Date"},
    std::pair{FieldType::Binary, "Binary"},
    std::pair{FieldType::Text, "Text"},
    std::pair{FieldType::LongBinary, "LongBinary"},
    std::pair{FieldType::Memo, "Memo"},
    std::pair{FieldType::Guid, "GUID"},
    std::pair{FieldType::BigInt, "BigInt"},
    std::pair{FieldType::VarBinary, "Binary"},
    std::pair{FieldType::Char, "Char"},
    std::pair{FieldType::Numeric, "Numeric"},
    std::pair{FieldType::Decimal, "Decimal"},
    std::pair{FieldType::Float, "Float"},
    std::pair{FieldType::Time, "Time"},
    std::pair{FieldType::TimeStamp, "TimeStamp"},
};

std::vector<std::string> split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t at = text.find(separator);
        parts.emplace_back(text.substr(0, at));
        if (at == std::string_view::npos)
            return parts;
        text.remove_prefix(at + 1);
    }
}

}  // namespace

std::string fieldTypeWord(FieldType type)
{
    for (const auto& [code, name] : kTypes)
        if (code == type)
            return name;
    return {};
}

FieldDef parseFieldWord(std::string_view word)
{
    const std::vector<std::string> parts = split(word, ':');
    if (parts.size() < 2 || parts[0].empty())
        throw UsageError("--field takes NAME:TYPE[:SIZE], not \"" + std::string(word) + "\"");
    FieldDef field;
    field.name = parts[0];
    const auto type = std::find_if(kTypes.begin(), kTypes.end(), [&](const auto& t) {
        return paths::sameName(t.second, parts[1]);
    });
    if (type == kTypes.end())
        throw UsageError("no field type \"" + parts[1] + "\"");
    field.type = type->first;
    for (std::size_t i = 2; i < parts.size(); ++i) {
        if (paths::sameName(parts[i], "required")) {
            field.required = true;
        } else if (paths::sameName(parts[i], "auto")) {
            field.autonumber = true;
        } else {
            const char* end = parts[i].data() + parts[i].size();
            const auto read = std::from_chars(parts[i].data(), end, field.size);
            if (read.ec != std::errc() || read.ptr != end || field.size < 1)
                throw UsageError("no field size \"" + parts[i] + "\"");
        }
    }
    if (field.type == FieldType::Decimal || field.type == FieldType::Numeric)
        field.precision = 18;
    return field;
}

IndexDef parseIndexWord(std::string_view word)
{
    const std::vector<std::string> parts = split(word, ':');
    if (parts.size() < 2 || parts.size() > 3 || parts[0].empty() || parts[1].empty())
        throw UsageError("--index takes NAME:FIELD[,FIELD][:unique|primary], not \"" +
                         std::string(word) + "\"");
    IndexDef index;
    index.name = parts[0];
    for (const std::string& name : split(parts[1], ',')) {
        IndexFieldDef field{name, false};
        if (name.size() > 5 &&
            paths::sameName(std::string_view(name).substr(name.size() - 5), " desc"))
            field = {name.substr(0, name.size() - 5), true};
        index.fields.push_back(field);
    }
    if (parts.size() == 3) {
        index.primary = paths::sameName(parts[2], "primary");
        index.unique = index.primary || paths::sameName(parts[2], "unique");
        index.required = index.primary;
        if (!index.unique)
            throw UsageError("an index is unique or primary, not \"" + parts[2] + "\"");
    }
    return index;
}

}  // namespace velnor::cli
